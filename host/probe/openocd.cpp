#include "host/probe/openocd.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <sstream>

#include "entry/icescript.h"
#include "host/system/errors.h"
#include "host/system/text.h"

namespace icehost {
namespace {

constexpr char kEndOfText = '\x1a';
// The limit is larger than any answer to a command of icehost.
constexpr std::size_t kLongestAnswer = 1 << 16;
constexpr int kLongestIr = 64;

// A built-in command that fails returns a negative code. OpenOCD writes the reason only to its log.
bool IsOwnError(std::string_view code) {
  return !code.empty() && code.front() == '-' &&
         NumberIn(std::string(code.substr(1)), 10).has_value();
}

// Returns a drscan command that shifts `bits` in fields of 8 bits. The last field may be shorter.
std::string DrscanCommand(const std::string& tap, const Bits& bits) {
  std::string command = "drscan " + tap;
  std::size_t left = bits.size();
  for (const std::uint8_t byte : BytesOfBits(bits)) {
    const std::size_t field = std::min<std::size_t>(left, 8);
    command += fmt::format(" {} {}", field, byte);
    left -= field;
  }
  return command;
}

// Returns the `length` bits of an answer to drscan. Throws IoError if the answer is invalid.
Bits ParseDrscanAnswer(const std::string& answer, std::size_t length) {
  const std::vector<std::string> fields = WordsOf(answer);
  Bits bits;
  for (const std::string& field : fields) {
    const auto value = NumberIn(field, 16);
    const std::size_t wanted = std::min<std::size_t>(8, length - bits.size());
    if (!value.has_value() || wanted == 0 || *value >> wanted != 0) break;
    const Bits byte = BitsOfNumber(*value, static_cast<int>(wanted));
    bits.insert(bits.end(), byte.begin(), byte.end());
  }
  if (bits.size() != length || fields.size() != (length + 7) / 8) {
    throw IoError(
        fmt::format("OpenOCD's answer to a DR scan is not valid: \"{}\"", Printable(answer)));
  }
  return bits;
}

}  // namespace

// The answer begins with the command's number and a code. The number reveals surplus answers. A
// code other than 0 means that the command has failed. Then the rest of the answer is the reason.
std::string OpenocdRpc::Ask(const std::string& command) {
  ThrowIfEarly({});
  const std::string number = fmt::format("{} ", ++commands_);
  socket_.Send(
      fmt::format("concat {}[catch {{{}}} result] $result{}", number, command, kEndOfText));
  const std::string answer = ReceiveAnswer(command);
  if (answer.compare(0, number.size(), number) == 0) {
    const std::size_t end = std::min(answer.find(' ', number.size()), answer.size());
    const std::string code = answer.substr(number.size(), end - number.size());
    std::string result = answer.substr(std::min(end + 1, answer.size()));
    if (code == "0") return result;
    if (IsOwnError(code)) result = fmt::format("error {}; see OpenOCD's log", code);
    if (code == "1" || IsOwnError(code)) {
      throw Unsupported(fmt::format("OpenOCD: {:.80}: {}", command, result));
    }
  }
  throw IoError(fmt::format("{}: expected the answer to command {}\"{}\", got \"{:.80}\"",
                            socket_.Name(), number, command, Printable(answer)));
}

void OpenocdRpc::ExpectNoMore() {
  ThrowIfEarly(Socket::kStragglers);
}

// Command numbers are predictable, so an answer that arrives too early could look like a valid one.
void OpenocdRpc::ThrowIfEarly(std::chrono::milliseconds patience) {
  if (received_.empty() && socket_.Pending(patience) == 0) return;
  socket_.FailOutOfStep();
}

std::string OpenocdRpc::ReceiveAnswer(const std::string& command) {
  std::size_t end = 0;
  while ((end = received_.find(kEndOfText)) == std::string::npos) {
    const std::string bytes = socket_.Receive(kLongestAnswer);
    if (bytes.empty()) socket_.FailClosed("OpenOCD");
    received_ += bytes;
    if (received_.size() > kLongestAnswer) {
      throw IoError(fmt::format("{}: the answer to \"{}\" does not end", socket_.Name(), command));
    }
  }
  std::string answer = received_.substr(0, end);
  received_.erase(0, end + 1);
  return answer;
}

OpenocdProbe::OpenocdProbe(Socket socket, std::string tap)
    : rpc_(std::move(socket)), tap_(std::move(tap)) {
  try {
    ChooseTap();
  } catch (const Unsupported& error) {
    throw IoError(error.what());  // no script can run without a TAP
  }
}

void OpenocdProbe::ChooseTap() {
  std::vector<std::string> names;
  for (const OpenocdTap& tap : ParseScanChain(rpc_.Ask(kAskScanChain))) {
    if (!tap.enabled) continue;  // a disabled TAP is not in the chain
    if (tap_.empty() || tap.name == tap_) ir_length_ = tap.ir_bits;
    names.push_back(tap.name);
  }
  if (names.empty()) throw IoError("OpenOCD has no TAP");
  if (tap_.empty() && names.size() > 1) {
    throw IoError(
        fmt::format("OpenOCD has several TAPs: name one in --probe ({})", fmt::join(names, ", ")));
  }
  if (tap_.empty()) tap_ = names.front();
  RefuseUnknownTap(names, tap_);
}

int OpenocdProbe::Config(int code, int value) {
  if (code == LINK_CONFIG_GET_CDI) return CDI_ANSWER_JTAG5;
  if (code == LINK_CONFIG_CDI_MODE && value == CDI_MODE_JTAG5) return 0;
  throw Unsupported("OpenOCD cannot select the 2-wire interface");
}

int OpenocdProbe::Reset(int /*kind*/) {
  try {
    rpc_.Ask("adapter assert srst");
    rpc_.Ask("adapter deassert srst");
  } catch (const Unsupported& error) {
    // By default, OpenOCD assumes that the adapter has no srst line.
    throw Unsupported(
        fmt::format("{} (its configuration needs a reset_config with srst)", error.what()));
  }
  return 0;
}

int OpenocdProbe::Insert(int ir_bits, const std::uint8_t* ir, int dr_bits, const std::uint8_t* dr) {
  if (ir_bits > 0 && ir_bits != ir_length_) {
    throw Unsupported(fmt::format("the script's IR has {} bits, but in OpenOCD the IR of {} has {}",
                                  ir_bits, tap_, ir_length_));
  }
  if (ir_bits > kLongestIr) throw Unsupported("OpenOCD accepts an IR of at most 64 bits");
  ir_ = BitsOfBytes(ir, 0, ir_bits);
  dr_ = BitsOfBytes(dr, 0, std::min(dr_bits, 8 * JTAG_DR_MAX_BYTES));
  return 0;
}

int OpenocdProbe::Execute(std::uint8_t* capture) {
  std::vector<std::string> commands;
  if (!ir_.empty()) commands.push_back(fmt::format("irscan {} {}", tap_, NumberOfBits(ir_)));
  if (!dr_.empty()) commands.push_back(DrscanCommand(tap_, dr_));
  if (commands.empty()) return 0;
  const std::string answer = rpc_.Ask(fmt::format("{}", fmt::join(commands, "; ")));
  if (dr_.empty()) return 0;
  StoreBits(ParseDrscanAnswer(answer, dr_.size()), 8 * JTAG_DR_MAX_BYTES, capture + kDrCaptureByte);
  return 0;
}

// The answer to an empty command shows that OpenOCD is still running.
void OpenocdProbe::Flush() {
  rpc_.Ask("");
  rpc_.ExpectNoMore();
}

int OpenocdProbe::Gpio(int /*out_value*/, std::uint32_t& /*data*/, int /*oe_mask*/, int /*flags*/) {
  throw Unsupported("OpenOCD cannot drive individual pins: GPIO scripts do not run on it");
}

// A row is "N NAME ENABLED IDCODE EXPECTED IRLEN IRCAP IRMASK". Each further EXPECTED value is
// on a line of its own.
std::vector<OpenocdTap> ParseScanChain(const std::string& answer) {
  std::vector<OpenocdTap> taps;
  std::istringstream table(answer);
  for (std::string row; std::getline(table, row);) {
    const std::vector<std::string> columns = WordsOf(row);
    if (columns.size() == 1 && columns[0].rfind("0x", 0) == 0 && !taps.empty()) {
      taps.back().expected.push_back(columns[0]);
    }
    if (columns.empty() || !NumberIn(columns[0], 10).has_value()) continue;
    const auto ir_bits = columns.size() < 8 ? std::nullopt : NumberIn(columns[5], 10);
    if (!ir_bits.has_value() || *ir_bits > INT_MAX) {
      throw IoError(fmt::format("OpenOCD's list of TAPs is not valid: \"{:.80}\"", row));
    }
    taps.push_back({columns[1], columns[2] == "Y", {columns[4]}, static_cast<int>(*ir_bits)});
  }
  return taps;
}

void RefuseUnknownTap(const std::vector<std::string>& taps, const std::string& tap) {
  if (std::find(taps.begin(), taps.end(), tap) != taps.end()) return;
  throw IoError(fmt::format("OpenOCD has no TAP \"{}\": expected {}", tap, fmt::join(taps, ", ")));
}

std::vector<std::string> WordsOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

std::optional<std::uint32_t> NumberIn(const std::string& word, int base) {
  std::uint32_t value = 0;
  const auto [stopped, error] =
      std::from_chars(word.data(), word.data() + word.size(), value, base);
  if (stopped != word.data() + word.size() || error != std::errc()) return std::nullopt;
  return value;
}

}  // namespace icehost
