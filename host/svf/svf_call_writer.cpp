#include <algorithm>
#include <charconv>
#include <cstring>

#include "host/svf/svf_writer.h"

namespace icehost {
namespace {

bool Is(const CallEvent& call, const char* function) {
  return std::strcmp(call.function, function) == 0;
}

const Field* Find(const std::vector<Field>& fields, const char* name) {
  const auto at = std::find_if(fields.begin(), fields.end(), [name](const Field& field) {
    return std::strcmp(field.name, name) == 0;
  });
  return at != fields.end() ? &*at : nullptr;
}

// Reads the first `count` bits of a field; those beyond its digits are 0.
Bits BitsOf(const Field& field, std::size_t count) {
  Bits bits(count);
  std::string_view digits = std::string_view(field.bytes).substr(2);
  for (std::size_t first = 0; first < count && !digits.empty(); first += 4) {
    unsigned value = 0;
    std::from_chars(&digits.back(), &digits.back() + 1, value, 16);
    digits.remove_suffix(1);
    for (std::size_t i = first; i < std::min(first + 4, count); ++i) {
      bits[i] = (value >> (i - first) & 1) != 0;
    }
  }
  return bits;
}

Bits Argument(const CallEvent& call, const char* length, const char* bytes) {
  const int bits = std::max(Find(call.arguments, length)->number, 0);
  return BitsOf(*Find(call.arguments, bytes), static_cast<std::size_t>(bits));
}

class SvfCallWriter : public SvfWriter {
 public:
  using SvfWriter::SvfWriter;

  void OnScript(const std::string& path) override { path_ = path; }
  void OnCall(const CallEvent& call) override;
  void OnScriptEnd(bool ran) override;

 private:
  void OnInsert(const CallEvent& call);
  void OnExecute(const CallEvent& call);

  std::string path_;
  // The values that the next scan shifts.
  Bits ir_;
  Bits dr_;
};

void SvfCallWriter::OnCall(const CallEvent& call) {
  if (Is(call, "link_jtag_insert")) OnInsert(call);
  if (Is(call, "link_jtag_execute")) OnExecute(call);
  if (Is(call, "link_reset") && call.result >= 0) {
    CommentOnPlace(path_, call.source, 0);
    Lose(kNoNrst, "NRST low, NRST high");
  }
}

void SvfCallWriter::OnInsert(const CallEvent& call) {
  ir_ = Argument(call, "ir_bits", "ir");
  dr_ = Argument(call, "dr_bits", "dr");
}

// A call that fails because of what it read has scanned nevertheless.
void SvfCallWriter::OnExecute(const CallEvent& call) {
  const Field* const out = Find(call.outputs, "dr_out");
  if (out == nullptr) return;
  CommentOnPlace(path_, call.source, 0);
  if (!ir_.empty()) Scan({true, ir_, {}, {}});
  if (!dr_.empty()) {
    Scan({false, dr_, BitsOf(*out, dr_.size()), MaskOf(call.source, false, dr_.size())});
  }
  CommentOnUnmet(call);
}

void SvfCallWriter::OnScriptEnd(bool ran) {
  if (!ran) Comment("The script failed.");
}

}  // namespace

std::unique_ptr<Output> MakeSvfCallWriter(std::ostream& stream) {
  return std::make_unique<SvfCallWriter>(stream);
}

}  // namespace icehost
