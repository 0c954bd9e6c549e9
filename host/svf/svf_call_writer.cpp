#include "host/svf/svf_call_writer.h"

#include <algorithm>
#include <charconv>
#include <cstring>

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

// `count` bits of what a field holds as text; those that it lacks are 0.
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

}  // namespace

void SvfCallWriter::OnCall(const CallEvent& call) {
  if (Is(call, "link_jtag_insert")) OnInsert(call);
  if (Is(call, "link_jtag_execute")) OnExecute(call);
  if (Is(call, "link_reset") && call.result >= 0) {
    file_.Place(path_, call.source, 0);
    file_.Lose(SvfLoss::kResetLine, "NRST low, NRST high");
  }
}

void SvfCallWriter::OnInsert(const CallEvent& call) {
  ir_ = Argument(call, "ir_bits", "ir");
  dr_ = Argument(call, "dr_bits", "dr");
}

// A call that fails for what it read has scanned all the same.
void SvfCallWriter::OnExecute(const CallEvent& call) {
  const Field* const out = Find(call.outputs, "dr_out");
  if (out == nullptr) return;
  file_.Place(path_, call.source, 0);
  if (!ir_.empty()) file_.Scan({true, ir_, {}, {}});
  if (!dr_.empty()) {
    file_.Scan({false, dr_, BitsOf(*out, dr_.size()), SvfMask(call.source, false, dr_.size())});
  }
  CommentOnUnmet(call, file_);
}

void SvfCallWriter::OnScriptEnd(bool ran) {
  if (!ran) file_.Comment("The script failed.");
}

Bits SvfMask(const CallSource& source, bool ir, std::size_t bits) {
  const std::string* const own = ir ? source.ir_mask : source.dr_mask;
  if (own != nullptr) {
    Bits mask = BitsOfBytes(reinterpret_cast<const std::uint8_t*>(own->data()), 0,
                            8 * static_cast<int>(own->size()));
    mask.resize(bits);
    return mask;
  }
  if (!ir) return source.reads ? Bits(bits, true) : Bits();
  Bits mask(bits);
  std::fill_n(mask.begin(), std::min<std::size_t>(bits, 2), true);
  return mask;
}

}  // namespace icehost
