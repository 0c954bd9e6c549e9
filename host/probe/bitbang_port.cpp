#include "host/probe/bitbang_port.h"

#include <fmt/format.h>

#include <algorithm>
#include <new>
#include <utility>

#include "host/system/errors.h"
#include "host/system/interrupt.h"
#include "host/target/tap.h"
#include "host/target/wires.h"

namespace icehost {
namespace {

constexpr std::size_t kSendAt = 4096;
// With more unread answers than this, both sides could block on full buffers forever.
constexpr std::size_t kAnswersUnderWay = 2048;
// How long the destructor waits for the remaining answers after a signal.
constexpr std::chrono::milliseconds kLastAnswers{100};

char PinByte(int levels) {
  return static_cast<char>('0' + ((levels & GPIO_PIN_TCK) != 0 ? 4 : 0) +
                           ((levels & GPIO_PIN_TMS) != 0 ? 2 : 0) +
                           ((levels & GPIO_PIN_TDI) != 0 ? 1 : 0));
}

char ResetByte(int levels) {
  return static_cast<char>('r' + ((levels & GPIO_PIN_TRST) == 0 ? 2 : 0) +
                           ((levels & GPIO_PIN_NRST) == 0 ? 1 : 0));
}

}  // namespace

BitbangPort::BitbangPort(Socket socket, Manner manner)
    : socket_(std::move(socket)), manner_(manner) {
  socket_.AdviseOnLoss("is another client connected?");
}

// Waits for answers only after a signal. After an error, the server has already had time to answer.
BitbangPort::~BitbangPort() {
  const auto patience = IsInterrupted() ? kLastAnswers : std::chrono::milliseconds(0);
  try {
    socket_.TakeLeave(unsent_ + 'Q', unanswered_, patience);
  } catch (const std::bad_alloc&) {
    // Without the quit byte, the server still notices the end of the connection.
  }
}

void BitbangPort::Write(int levels, int enables) {
  if (manner_ == Manner::kProbe && (enables & kDrivenPins) != kDrivenPins) {
    throw Unsupported("remote_bitbang has no output enables: only TDO can be released");
  }
  if ((levels & enables & GPIO_PIN_TDO) != 0) {
    throw Unsupported("remote_bitbang cannot drive TDO");
  }
  const bool trst_falls = (levels_ & ~levels & GPIO_PIN_TRST) != 0;
  levels_ = levels;
  if ((enables & kDrivenPins & ~kResetPins) != 0) PutChanged(PinByte(levels), pin_byte_);
  if ((enables & kResetPins) != 0) PutChanged(ResetByte(levels), reset_byte_);
  if (trst_falls && manner_ == Manner::kProbe) ClockTapReset();
}

// Resets the TAP with TMS, because several servers ignore the byte that asserts TRST.
void BitbangPort::ClockTapReset() {
  for (int i = 0; i < kTapResetEdges; ++i) {
    PutChanged(PinByte(GPIO_PIN_TMS), pin_byte_);
    PutChanged(PinByte(GPIO_PIN_TMS | GPIO_PIN_TCK), pin_byte_);
  }
  PutChanged(PinByte(levels_), pin_byte_);
}

int BitbangPort::Read() {
  SampleTdo();
  TakeAnswers();
  const bool tdo = samples_.back();
  samples_.pop_back();
  return (levels_ & kDrivenPins) | (tdo ? GPIO_PIN_TDO : 0);
}

void BitbangPort::SampleTdo() {
  ++unanswered_;
  Put('R');
  if (unanswered_ == kAnswersUnderWay) TakeAnswers();
}

Bits BitbangPort::CollectTdo() {
  TakeAnswers();
  return std::exchange(samples_, {});
}

void BitbangPort::Flush() {
  Read();
  CheckStep(socket_.Pending(Socket::kStragglers));
}

void BitbangPort::CheckAlive() {
  CheckStep(socket_.Pending());
  if (socket_.HasEnded()) socket_.FailClosed("the server");
}

void BitbangPort::PutChanged(char byte, char& last) {
  if (byte != last) Put(byte);
  last = byte;
}

void BitbangPort::Put(char byte) {
  unsent_ += byte;
  if (unsent_.size() == kSendAt) SendBuffered();
}

void BitbangPort::SendBuffered() {
  const std::string bytes = std::exchange(unsent_, {});
  const auto asked = static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), 'R'));
  CheckStep(socket_.Pending() + asked);
  socket_.Send(bytes);
}

void BitbangPort::TakeAnswers() {
  SendBuffered();
  while (unanswered_ > 0) {
    // The limit is one byte above the expected number, to detect surplus answers.
    const std::string answers = socket_.Receive(unanswered_ + 1);
    if (answers.empty()) socket_.FailClosed("the server");
    CheckStep(answers.size());
    for (const char answer : answers) {
      if (answer != '0' && answer != '1') {
        throw IoError(fmt::format("{}: expected a TDO level, got the byte {}", socket_.Name(),
                                  static_cast<unsigned char>(answer)));
      }
      samples_.push_back(answer == '1');
    }
    unanswered_ -= answers.size();
  }
}

void BitbangPort::CheckStep(std::size_t came) const {
  if (came > unanswered_) socket_.FailOutOfStep();
}

}  // namespace icehost
