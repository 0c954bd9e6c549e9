#include "host/svf/svf_call_writer.h"

#include <algorithm>
#include <cstdint>

namespace icehost {
namespace {

// `count` bits of these bytes, least significant first; those that they lack are 0.
Bits BitsOf(const std::string& bytes, std::size_t count) {
  Bits bits = BitsOfBytes(reinterpret_cast<const std::uint8_t*>(bytes.data()), 0,
                          8 * static_cast<int>(bytes.size()));
  bits.resize(count);
  return bits;
}

Bits SentBits(const ScanRegister& one) {
  return BitsOf(one.in, static_cast<std::size_t>(std::max(one.bits, 0)));
}

}  // namespace

void SvfCallWriter::OnCall(const CallEvent& call) {
  const auto* const execute = call.As<ExecuteCall>();
  if (execute != nullptr && execute->scan->dr.out.has_value()) OnScan(call, *execute->scan);
  if (call.As<ResetCall>() != nullptr && call.result >= 0) {
    file_.Place(path_, call.source, 0);
    file_.Lose(SvfLoss::kResetLine, "NRST low, NRST high");
  }
}

// A call that fails for what it read has scanned all the same.
void SvfCallWriter::OnScan(const CallEvent& call, const Scan& scan) {
  const Bits ir = SentBits(scan.ir);
  const Bits dr = SentBits(scan.dr);
  file_.Place(path_, call.source, 0);
  if (!ir.empty()) file_.Scan({true, ir, {}, {}});
  if (!dr.empty()) {
    file_.Scan(
        {false, dr, BitsOf(*scan.dr.out, dr.size()), SvfMask(call.source, false, dr.size())});
  }
  CommentOnUnmet(call, file_);
}

void SvfCallWriter::OnScriptEnd(bool ran) {
  if (!ran) file_.Comment("The script failed.");
}

Bits SvfMask(const CallSource& source, bool ir, std::size_t bits) {
  const std::string* const own = ir ? source.ir_mask : source.dr_mask;
  if (own != nullptr) return BitsOf(*own, bits);
  if (!ir) return source.reads ? Bits(bits, true) : Bits();
  Bits mask(bits);
  std::fill_n(mask.begin(), std::min<std::size_t>(bits, 2), true);
  return mask;
}

}  // namespace icehost
