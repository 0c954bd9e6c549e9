#include "host/probe/openocd_probe.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <sstream>
#include <string_view>

#include "entry/icescript.h"
#include "host/system/errors.h"
#include "host/system/printable.h"

namespace icehost {
namespace {

constexpr char kEndOfText = '\x1a';
// Longer than any answer to the commands below.
constexpr std::size_t kLongestAnswer = 1 << 16;
constexpr int kLongestIr = 64;

std::vector<std::string> Words(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

// The whole word as a number.
std::optional<unsigned> Number(std::string_view word, int base) {
  unsigned value = 0;
  const char* const end = word.data() + word.size();
  const auto [stopped, error] = std::from_chars(word.data(), end, value, base);
  if (stopped != end || error != std::errc()) return std::nullopt;
  return value;
}

}  // namespace

OpenocdProbe::OpenocdProbe(Socket socket, std::string tap)
    : socket_(std::move(socket)), tap_(std::move(tap)) {
  try {
    ChooseTap();
    ir_length_ = DeclaredIrLength();
  } catch (const Unsupported& error) {
    throw IoError(error.what());  // without a TAP there is nothing to run on
  }
}

// One command. The answer begins with its number, by which an answer too many is known, and with
// whether it is an error: its text comes back like any other result.
std::string OpenocdProbe::Ask(const std::string& command) {
  const std::string number = fmt::format("{} ", ++commands_);
  socket_.Send(
      fmt::format("concat {}[catch {{{}}} result] $result{}", number, command, kEndOfText));
  const std::string answer = ReceiveAnswer(command);
  const std::size_t head = number.size() + 2;
  const std::string numbered = (answer + " ").substr(0, head);
  std::string result = answer.size() > head ? answer.substr(head) : "";
  if (numbered == number + "0 ") return result;
  if (numbered == number + "1 ") {
    throw Unsupported(fmt::format("OpenOCD: {:.80}: {}", command, result));
  }
  throw IoError(fmt::format("{}: this does not answer command {}\"{}\": \"{:.80}\"", socket_.Name(),
                            number, command, Printable(answer)));
}

std::string OpenocdProbe::ReceiveAnswer(const std::string& command) {
  std::size_t end = 0;
  while ((end = received_.find(kEndOfText)) == std::string::npos) {
    const std::string bytes = socket_.Receive(kLongestAnswer);
    if (bytes.empty()) throw IoError(socket_.Name() + ": OpenOCD closed the connection");
    received_ += bytes;
    if (received_.size() > kLongestAnswer) {
      throw IoError(fmt::format("{}: the answer to \"{}\" has no end", socket_.Name(), command));
    }
  }
  std::string answer = received_.substr(0, end);
  received_.erase(0, end + 1);
  return answer;
}

void OpenocdProbe::ChooseTap() {
  const std::vector<std::string> taps = Words(Ask("jtag names"));
  if (taps.empty()) throw IoError("OpenOCD has no TAP");
  if (tap_.empty() && taps.size() == 1) tap_ = taps.front();
  if (tap_.empty())
    throw IoError(fmt::format("OpenOCD has several TAPs, name one: {}", fmt::join(taps, ", ")));
  if (std::find(taps.begin(), taps.end(), tap_) == taps.end()) {
    throw IoError(
        fmt::format("OpenOCD has no TAP \"{}\", it has: {}", tap_, fmt::join(taps, ", ")));
  }
}

// From the table of the chain: a row is "N NAME ENABLED IDCODE EXPECTED IRLEN IRCAP IRMASK".
int OpenocdProbe::DeclaredIrLength() {
  std::istringstream table(Ask("capture {scan_chain}"));
  for (std::string row; std::getline(table, row);) {
    const std::vector<std::string> columns = Words(row);
    if (columns.size() < 8 || columns[1] != tap_) continue;
    if (const auto length = Number(columns[5], 10)) return static_cast<int>(*length);
  }
  throw IoError("OpenOCD does not say the IR length of " + tap_);
}

int OpenocdProbe::Config(int code, int value) {
  if (code == LINK_CONFIG_GET_CDI) return CDI_ANSWER_JTAG5;
  if (code == LINK_CONFIG_CDI_MODE && value == CDI_MODE_JTAG5) return 0;
  throw Unsupported("OpenOCD cannot select the 2-wire interface");
}

int OpenocdProbe::Reset(int /*kind*/) {
  Ask("adapter assert srst");
  Ask("adapter deassert srst");
  return 0;
}

int OpenocdProbe::Insert(int ir_bits, const std::uint8_t* ir, int dr_bits, const std::uint8_t* dr) {
  if (ir_bits > 0 && ir_bits != ir_length_) {
    throw Unsupported(fmt::format("the script's IR has {} bits, but OpenOCD's {} has {}", ir_bits,
                                  tap_, ir_length_));
  }
  if (ir_bits > kLongestIr) throw Unsupported("OpenOCD takes an IR of up to 64 bits");
  ir_ = BitsOfBytes(ir, 0, ir_bits);
  dr_ = BitsOfBytes(dr, 0, std::min(dr_bits, 8 * JTAG_DR_MAX_BYTES));
  return 0;
}

int OpenocdProbe::Execute(std::uint8_t* capture) {
  std::vector<std::string> commands;
  if (!ir_.empty()) commands.push_back(fmt::format("irscan {} {}", tap_, NumberOfBits(ir_)));
  if (!dr_.empty()) commands.push_back(DrscanCommand(tap_, dr_));
  if (commands.empty()) return 0;
  const std::string answer = Ask(fmt::format("{}", fmt::join(commands, "; ")));
  if (dr_.empty()) return 0;
  StoreBits(ParseDrscanAnswer(answer, dr_.size()), 8 * JTAG_DR_MAX_BYTES, capture + kDrCaptureByte);
  return 0;
}

// The answer to a command that does nothing shows that none came twice and that OpenOCD is there.
void OpenocdProbe::Flush() {
  Ask("");
}

int OpenocdProbe::Gpio(int /*out_value*/, std::uint32_t& /*data*/, int /*oe_mask*/, int /*flags*/) {
  throw Unsupported("OpenOCD cannot drive single pins: GPIO scripts do not run on it");
}

std::string DrscanCommand(const std::string& tap, const Bits& bits) {
  std::string command = "drscan " + tap;
  for (std::size_t at = 0; at < bits.size(); at += 8) {
    const std::size_t end = std::min(at + 8, bits.size());
    const Bits field(bits.begin() + static_cast<std::ptrdiff_t>(at),
                     bits.begin() + static_cast<std::ptrdiff_t>(end));
    command += fmt::format(" {} {}", field.size(), NumberOfBits(field));
  }
  return command;
}

Bits ParseDrscanAnswer(const std::string& answer, std::size_t length) {
  const std::vector<std::string> fields = Words(answer);
  Bits bits;
  for (const std::string& field : fields) {
    const std::optional<unsigned> value = Number(field, 16);
    const std::size_t wanted = std::min<std::size_t>(8, length - bits.size());
    if (!value.has_value() || wanted == 0 || *value >> wanted != 0) break;
    const Bits byte = BitsOfNumber(*value, static_cast<int>(wanted));
    bits.insert(bits.end(), byte.begin(), byte.end());
  }
  if (bits.size() != length || fields.size() != (length + 7) / 8) {
    throw IoError(fmt::format("OpenOCD's answer to a DR scan is none: \"{}\"", Printable(answer)));
  }
  return bits;
}

}  // namespace icehost
