#include <algorithm>

#include "host/svf/svf_writer.h"

namespace icehost {
namespace {

// Returns the bits that a scan shifts into a register. Missing bytes count as 0.
Bits SentBits(const ScanRegister& one) {
  return BitsOfBytes(one.in, static_cast<std::size_t>(std::max(one.bits, 0)));
}

class SvfCallWriter : public SvfWriter {
 public:
  using SvfWriter::SvfWriter;

  void OnScript(const ScriptBegin& script) override { path_ = script.path; }
  void OnResetRequest() override;
  void OnCall(const CallEvent& call) override;
  void OnScriptEnd(const ScriptEnd& end) override;

 private:
  void OnScan(const CallEvent& call, const Scan& scan);

  std::string path_;
};

void SvfCallWriter::OnResetRequest() {
  Statement("STATE RESET");
  Statement("STATE IDLE");
}

void SvfCallWriter::OnCall(const CallEvent& call) {
  const auto* const execute = call.As<ExecuteCall>();
  if (execute != nullptr && execute->scan->dr.out.has_value()) OnScan(call, *execute->scan);
  if (call.As<ResetCall>() != nullptr && call.result >= 0) {
    CommentOnPlace(path_, call.source, 0);
    Lose(kNoNrst, "NRST low, NRST high");
  }
}

// Writes a scan even if its call failed because of the captured values.
void SvfCallWriter::OnScan(const CallEvent& call, const Scan& scan) {
  const Bits ir = SentBits(scan.ir);
  const Bits dr = SentBits(scan.dr);
  CommentOnPlace(path_, call.source, 0);
  const bool own = Place().ir_lengths.size() > 1;
  if (!ir.empty()) ScanStatement({true, ir, {}, {}, own});
  if (!dr.empty()) {
    ScanStatement({false, dr, BitsOfBytes(*scan.dr.out, dr.size()),
                   MaskOf(call.source, false, dr.size()), own});
  }
  CommentOnUnmet(call);
}

void SvfCallWriter::OnScriptEnd(const ScriptEnd& end) {
  if (!end.ran) Comment("The script failed.");
}

}  // namespace

std::unique_ptr<Output> MakeSvfCallWriter(std::ostream& stream) {
  return std::make_unique<SvfCallWriter>(stream);
}

}  // namespace icehost
