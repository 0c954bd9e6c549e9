#include "host/probe/xvc_session.h"

#include <fmt/format.h>

#include <cstdint>
#include <vector>

#include "entry/icescript.h"
#include "host/probe/xvc.h"
#include "host/system/text.h"
#include "host/target/wires.h"

namespace icehost {
namespace {

// The maximum size of TMS and of TDI in one shift, in bytes. It limits the buffers.
constexpr std::size_t kMostVectorBytes = 2048;
// The number of bytes of an unknown command that the error message shows.
constexpr std::size_t kShownBytes = 16;

Bits BitsFrom(std::string_view bytes, std::size_t count) {
  return BitsOfBytes(std::string(bytes), count);
}

}  // namespace

struct XvcSession::Command {
  std::string_view name;
  std::size_t head;  // the size of the name and of the number after it
  // Executes the command. Returns its size, or 0 if the command is incomplete or wrong.
  std::size_t (XvcSession::*play)(std::string_view bytes, std::string& answers);
};

void XvcSession::Begin() {
  unplayed_.clear();
  fault_.clear();
}

bool XvcSession::Feed(std::string_view bytes, std::string& answers) {
  unplayed_ += bytes;
  std::string_view rest = unplayed_;
  while (const std::size_t played = Play(rest, answers)) rest.remove_prefix(played);
  unplayed_ = std::string(rest);
  return fault_.empty();
}

std::size_t XvcSession::Play(std::string_view bytes, std::string& answers) {
  static constexpr Command kCommands[] = {
      {kXvcGetInfo, kXvcGetInfo.size(), &XvcSession::GetInfo},
      {kXvcSetTck, kXvcSetTck.size() + kXvcNumberBytes, &XvcSession::SetTck},
      {kXvcShift, kXvcShift.size() + kXvcNumberBytes, &XvcSession::Shift}};
  for (const Command& command : kCommands) {
    const std::string_view name = bytes.substr(0, command.name.size());
    if (name != command.name.substr(0, name.size())) continue;
    return bytes.size() < command.head ? 0 : (this->*command.play)(bytes, answers);
  }
  fault_ = fmt::format("unknown command \"{}\"", Printable(bytes.substr(0, kShownBytes)));
  return 0;
}

std::size_t XvcSession::GetInfo(std::string_view /*bytes*/, std::string& answers) {
  answers += fmt::format("{}{}\n", kXvcInfo, 2 * kMostVectorBytes);
  return kXvcGetInfo.size();
}

std::size_t XvcSession::SetTck(std::string_view bytes, std::string& answers) {
  answers += bytes.substr(kXvcSetTck.size(), kXvcNumberBytes);
  return kXvcSetTck.size() + kXvcNumberBytes;
}

std::size_t XvcSession::Shift(std::string_view bytes, std::string& answers) {
  const std::string_view number = bytes.substr(kXvcShift.size(), kXvcNumberBytes);
  const std::size_t bits = NumberOfBits(BitsFrom(number, 8 * number.size()));
  if (bits == 0 || bits > 8 * kMostVectorBytes) {
    fault_ = fmt::format("expected a shift of 1 to {1} bits, got {0}", bits, 8 * kMostVectorBytes);
    return 0;
  }
  const std::size_t head = kXvcShift.size() + number.size();
  const std::size_t vector = (bits + 7) / 8;
  if (bytes.size() < head + 2 * vector) return 0;
  Clock(BitsFrom(bytes.substr(head, vector), bits),
        BitsFrom(bytes.substr(head + vector, vector), bits));
  const std::vector<std::uint8_t> tdo = BytesOfBits(port_.CollectTdo());
  answers.append(tdo.begin(), tdo.end());
  return head + 2 * vector;
}

// Ends with a falling edge, because the target changes TDO and its registers on falling edges.
void XvcSession::Clock(const Bits& tms, const Bits& tdi) {
  constexpr int kEnabled = GPIO_PIN_TCK | GPIO_PIN_TMS | GPIO_PIN_TDI;
  int levels = 0;
  for (std::size_t i = 0; i < tms.size(); ++i) {
    levels = kResetPins | (tms[i] ? GPIO_PIN_TMS : 0) | (tdi[i] ? GPIO_PIN_TDI : 0);
    port_.Write(levels, kEnabled);
    port_.SampleTdo();
    port_.Write(levels | GPIO_PIN_TCK, kEnabled);
  }
  port_.Write(levels, kEnabled);
}

}  // namespace icehost
