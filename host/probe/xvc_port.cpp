#include "host/probe/xvc_port.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "host/probe/openocd.h"
#include "host/probe/xvc.h"
#include "host/system/errors.h"
#include "host/system/text.h"
#include "host/target/wires.h"

namespace icehost {
namespace {

// The limit is larger than any valid answer to getinfo.
constexpr std::size_t kLongestInfo = 64;
// A shift command has a 4-byte bit count, so its two vectors never need more bytes than this.
constexpr std::uint32_t kMostInfo = 1U << 30U;
// Limits the buffers if the server allows longer shifts. No scan is this long.
constexpr std::size_t kMostBitsAtOnce = 1U << 16U;

// Returns the maximum size of TMS and TDI together, or nothing if the answer is invalid.
std::optional<std::uint32_t> VectorBytes(const std::string& info) {
  const std::size_t end = info.find('\n');
  if (end == std::string::npos || info.compare(0, kXvcInfo.size(), kXvcInfo) != 0) return {};
  const auto bytes = NumberIn(info.substr(kXvcInfo.size(), end - kXvcInfo.size()), 10);
  if (bytes < 2U || bytes > kMostInfo) return {};
  return bytes;
}

void AppendBytes(const Bits& bits, std::string& text) {
  const std::vector<std::uint8_t> bytes = BytesOfBits(bits);
  text.append(bytes.begin(), bytes.end());
}

}  // namespace

XvcPort::XvcPort(Socket socket) : socket_(std::move(socket)) {
  socket_.AdviseOnLoss("is another client connected?");
  info_ = AskInfo();
  const auto bytes = VectorBytes(info_);
  if (!bytes.has_value()) {
    throw IoError(fmt::format("{}: expected {}N with N from 2 to {}, got \"{}\"", socket_.Name(),
                              kXvcInfo, kMostInfo, Printable(info_.substr(0, info_.find('\n')))));
  }
  CheckStep(info_.size() - info_.find('\n') - 1);
  most_bits_ = std::min(std::size_t{*bytes} / 2 * 8, kMostBitsAtOnce);
}

std::string XvcPort::AskInfo() {
  CheckStep(socket_.Pending());
  socket_.Send(kXvcGetInfo);
  std::string info;
  while (info.find('\n') == std::string::npos && info.size() < kLongestInfo) {
    const std::string bytes = socket_.Receive(kLongestInfo - info.size());
    if (bytes.empty()) socket_.FailClosed("the server");
    info += bytes;
  }
  return info;
}

void XvcPort::Write(int levels, int /*enables*/) {
  if ((levels & kResetPins) != kResetPins) {
    throw Unsupported("XVC has no reset lines: NRST and TRST cannot be driven");
  }
  const bool rises = (~levels_ & levels & GPIO_PIN_TCK) != 0;
  levels_ = levels;
  if (!rises) return;
  tms_.push_back((levels & GPIO_PIN_TMS) != 0);
  tdi_.push_back((levels & GPIO_PIN_TDI) != 0);
  sampled_.push_back(std::exchange(sample_next_, false));
  if (tms_.size() == most_bits_) Shift();
}

int XvcPort::Read() {
  throw Unsupported("XVC cannot read single pins");
}

Bits XvcPort::CollectTdo() {
  Shift();
  return std::exchange(samples_, {});
}

void XvcPort::Flush() {
  Shift();
  if (AskInfo() != info_) socket_.FailOutOfStep();
  CheckStep(socket_.Pending(Socket::kStragglers));
}

void XvcPort::Shift() {
  if (tms_.empty()) return;
  CheckStep(socket_.Pending());
  std::string command(kXvcShift);
  AppendBytes(BitsOfNumber(tms_.size(), 8 * kXvcNumberBytes), command);
  AppendBytes(tms_, command);
  AppendBytes(tdi_, command);
  socket_.Send(command);
  const Bits tdo = BitsOfBytes(Receive((tms_.size() + 7) / 8), tms_.size());
  for (std::size_t i = 0; i < tdo.size(); ++i) {
    if (sampled_[i]) samples_.push_back(tdo[i]);
  }
  for (Bits* const sent : {&tms_, &tdi_, &sampled_}) sent->clear();
}

std::string XvcPort::Receive(std::size_t count) {
  std::string answer;
  while (answer.size() < count) {
    // The limit is one byte above the expected number, to detect surplus bytes.
    const std::string bytes = socket_.Receive(count - answer.size() + 1);
    if (bytes.empty()) socket_.FailClosed("the server");
    answer += bytes;
  }
  CheckStep(answer.size() - count);
  return answer;
}

void XvcPort::CheckStep(std::size_t came) const {
  if (came > 0) socket_.FailOutOfStep();
}

int XvcProbe::Gpio(int /*out_value*/, std::uint32_t& /*data*/, int /*oe_mask*/, int /*flags*/) {
  throw Unsupported("XVC cannot drive individual pins: GPIO scripts do not run on it");
}

}  // namespace icehost
