#include "host/probe/openocd_probe.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>

#include "entry/icescript.h"
#include "host/system/errors.h"
#include "host/system/printable.h"

namespace icehost {
namespace {

constexpr int kLongestIr = 64;

// The whole word as a number.
std::optional<unsigned> Hexadecimal(std::string_view word) {
  unsigned value = 0;
  const char* const end = word.data() + word.size();
  const auto [stopped, error] = std::from_chars(word.data(), end, value, 16);
  if (stopped != end || error != std::errc()) return std::nullopt;
  return value;
}

}  // namespace

OpenocdProbe::OpenocdProbe(Socket socket, std::string tap)
    : rpc_(std::move(socket)), tap_(std::move(tap)) {
  try {
    ChooseTap();
    ir_length_ = DeclaredIrLength();
  } catch (const Unsupported& error) {
    throw IoError(error.what());  // without a TAP there is nothing to run on
  }
}

void OpenocdProbe::ChooseTap() {
  const std::vector<std::string> taps = WordsOf(rpc_.Ask("jtag names"));
  if (taps.empty()) throw IoError("OpenOCD has no TAP");
  if (tap_.empty() && taps.size() == 1) tap_ = taps.front();
  if (tap_.empty())
    throw IoError(fmt::format("OpenOCD has several TAPs, name one: {}", fmt::join(taps, ", ")));
  RefuseUnknownTap(taps, tap_);
}

int OpenocdProbe::DeclaredIrLength() {
  for (const OpenocdTap& tap : ParseScanChain(rpc_.Ask(kAskScanChain))) {
    if (tap.name == tap_) return tap.ir_bits;
  }
  throw IoError("OpenOCD does not say the IR length of " + tap_);
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
    // OpenOCD's default is that there is no such line.
    throw Unsupported(
        fmt::format("{} (its configuration needs a reset_config with srst)", error.what()));
  }
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
  const std::string answer = rpc_.Ask(fmt::format("{}", fmt::join(commands, "; ")));
  if (dr_.empty()) return 0;
  StoreBits(ParseDrscanAnswer(answer, dr_.size()), 8 * JTAG_DR_MAX_BYTES, capture + kDrCaptureByte);
  return 0;
}

// The answer to a command that does nothing shows that none came twice and that OpenOCD is there.
void OpenocdProbe::Flush() {
  rpc_.Ask("");
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
  const std::vector<std::string> fields = WordsOf(answer);
  Bits bits;
  for (const std::string& field : fields) {
    const std::optional<unsigned> value = Hexadecimal(field);
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
