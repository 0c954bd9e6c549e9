#include "fuzz/checking_host.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kMaxCalls = 1000;  // further calls fail, so that a huge REPT ends
constexpr int kNoCallback = 255;
constexpr std::uint8_t kThrow = 0x7E;
constexpr std::size_t kMessageSize = 1024;
constexpr int kCapturedBytes = 3 + JTAG_DR_MAX_BYTES;

CheckingHost* running = nullptr;  // global because the callback gets no handle

void Check(bool kept, const char* promise) {
  if (kept) return;
  std::fprintf(stderr, "broken promise: %s\n", promise);
  std::abort();
}

CheckingHost& HostOf(LinkHandle handle) {
  Check(handle == running, "the handle is passed on unchanged");
  return *running;
}

int PassMessage(const char* text) {
  running->Message(text);
  return -1;  // the plug-in must ignore the result
}

}  // namespace

int link_config(LinkHandle handle, int code, int value) {
  return HostOf(handle).Config(code, value);
}

int link_reset(LinkHandle handle, int kind) {
  return HostOf(handle).Reset(kind);
}

int link_jtag_insert(LinkHandle handle, int ir_bits, unsigned char* ir, int dr_bits,
                     unsigned char* dr) {
  return HostOf(handle).Insert(ir_bits, ir, dr_bits, dr);
}

int link_jtag_execute(LinkHandle handle, unsigned char* capture) {
  return HostOf(handle).Execute(capture);
}

int link_gpio_operator(LinkHandle handle, int out_value, uint32_t* data, int oe_mask, int flags) {
  return HostOf(handle).Gpio(out_value, data, oe_mask, flags);
}

CheckingHost::CheckingHost(std::string_view answers) : answers_(answers) {
  throwing_message_ = NextByte();
}

void CheckingHost::Run(char* path) {
  running = this;
  const bool prints = throwing_message_ != kNoCallback;
  try {
    const int result = ImplementScr(this, path, prints ? PassMessage : nullptr);
    CheckResult(result, prints);
  } catch (const Thrown& thrown) {
    Check(thrown_ && thrown.by == this, "an exception arrives unchanged");
  }
}

void CheckingHost::CheckResult(int result, bool printed) const {
  Check(result == 0 || result == -1, "the result is 0 or -1");
  Check(!thrown_, "an exception is not swallowed");
  Check(!failed_ || result == -1, "the result after a failed call is -1");
  Check(failed_ || calls_ == 0 || result == 0, "-1 means that a call failed or nothing ran");
  Check(failed_ || scan_ == Scan::kNone, "no scan is left unfinished");
  Check(result != 0 || gpio_flags_ == 0 || (gpio_flags_ & GPIO_FLAG_END) != 0,
        "a GPIO script runs to its END");
  if (!printed) return;
  Check((result == 0) == (last_message_ == "Execute ORVEX ICE Script End.\n"),
        "the last message is the end banner if and only if the result is 0");
  Check(messages_after_failure_ == (failed_ && gpio_flags_ != 0 ? 1 : 0),
        "one message follows a failed call in a GPIO script, none in a JTAG script");
}

std::uint8_t CheckingHost::NextByte() {
  if (answers_.empty()) return 0;
  const char byte = answers_.front();
  answers_.remove_prefix(1);
  return static_cast<std::uint8_t>(byte);
}

int CheckingHost::NextResult() {
  if (++calls_ > kMaxCalls) return -1;
  const std::uint8_t byte = NextByte();
  if (byte == kThrow) Throw();
  if (byte == SCHAR_MAX) return INT_MAX;
  const auto result = static_cast<signed char>(byte);
  return result == SCHAR_MIN ? INT_MIN : result;
}

void CheckingHost::Throw() {
  thrown_ = true;
  throw Thrown{this};
}

void CheckingHost::Begin(Scan scan) const {
  Check(!failed_, "no call follows a failed call");
  Check(!thrown_, "no call follows an exception");
  Check((gpio_flags_ & GPIO_FLAG_END) == 0, "no call follows END");
  Check(scan_ == scan, "the calls of a scan are query, insert and execute");
}

int CheckingHost::End(int result, bool failed) {
  failed_ = failed;
  return result;
}

int CheckingHost::Config(int code, int value) {
  Begin(Scan::kNone);
  const bool setting = code == LINK_CONFIG_CDI_MODE;
  Check(setting ? value == CDI_MODE_JTAG5 || value == CDI_MODE_2WIRE
                : code == LINK_CONFIG_GET_CDI && value == 0,
        "link_config gets the codes of the header");
  const int result = NextResult();
  if (setting) return End(result, value == CDI_MODE_JTAG5 ? result != 0 : result < 0);
  two_wire_ = result == CDI_ANSWER_2WIRE;
  scan_ = Scan::kQueried;
  return result;
}

int CheckingHost::Reset(int kind) {
  Begin(Scan::kNone);
  Check(kind == LINK_RESET_TARGET, "link_reset gets LINK_RESET_TARGET");
  const int result = NextResult();
  return End(result, result < 0);
}

CheckingHost::Register CheckingHost::CheckRegister(int bits, const unsigned char* bytes) const {
  Check(bytes != nullptr, "the arrays of a scan are not null");
  Check(bits <= 8 * JTAG_DR_MAX_BYTES + (two_wire_ ? 8 : 0), "the lengths of a scan are bounded");
  Register reg{bytes, {}};
  std::copy_n(bytes, reg.copy.size(), reg.copy.begin());
  return reg;
}

int CheckingHost::Insert(int ir_bits, const unsigned char* ir, int dr_bits,
                         const unsigned char* dr) {
  Begin(Scan::kQueried);
  ir_ = CheckRegister(ir_bits, ir);
  dr_ = CheckRegister(dr_bits, dr);
  if (two_wire_) Check(ir[0] == 0 && dr[0] <= 1, "the extra byte is 0 or the read flag");
  scan_ = Scan::kInserted;
  const int result = NextResult();
  return End(result, result != 0);
}

int CheckingHost::Execute(unsigned char* capture) {
  Begin(Scan::kInserted);
  for (const Register& reg : {ir_, dr_}) {
    Check(std::equal(reg.copy.begin(), reg.copy.end(), reg.bytes),
          "the arrays of insert keep their bytes until execute");
  }
  Check(std::all_of(capture, capture + kCapturedBytes, [](int byte) { return byte == 0; }),
        "the capture buffer is zero");
  scan_ = Scan::kNone;
  const int result = NextResult();
  std::generate_n(capture, kCapturedBytes, [this] { return NextByte(); });
  return End(result, result != 0);
}

int CheckingHost::Gpio(int out_value, std::uint32_t* data, int oe_mask, int flags) {
  Begin(Scan::kNone);
  Check(out_value >= 0 && oe_mask >= 0, "the words of a pin operation are not negative");
  Check(gpio_flags_ != 0 || (flags == GPIO_FLAG_START && out_value == 0 && oe_mask == GPIO_PIN_ALL),
        "START comes first, with all pins enabled and low");
  Check(gpio_flags_ == 0 || (flags & GPIO_FLAG_START) == 0, "START comes once");
  Check(flags != 0 && flags < 2 * GPIO_FLAG_END, "each operation has flags from the header");
  Check(*data == gpio_data_[data], "the data word is 0 or the value stored last");
  gpio_flags_ = flags;
  const int result = NextResult();
  if ((flags & GPIO_FLAG_READ_IN) != 0) {
    // If the byte is 1, this host does not write the word.
    if (const std::uint32_t byte = NextByte(); byte != 1) *data = byte * 0x01010101U;
    gpio_data_[data] = *data;
  }
  return End(result, result < 0);
}

void CheckingHost::Message(const char* text) {
  Check(!thrown_, "no message follows an exception");
  Check(text != nullptr && strnlen(text, kMessageSize) < kMessageSize,
        "a message is terminated and at most 1023 bytes");
  last_message_ = text;
  if (failed_) ++messages_after_failure_;
  if (++messages_ == throwing_message_) Throw();
}
