#include "host/probe/openocd_rpc.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <sstream>
#include <string_view>

#include "host/system/errors.h"
#include "host/system/printable.h"

namespace icehost {
namespace {

constexpr char kEndOfText = '\x1a';
// Longer than any answer to our commands.
constexpr std::size_t kLongestAnswer = 1 << 16;

std::optional<int> Decimal(std::string_view word) {
  int value = 0;
  const char* const end = word.data() + word.size();
  const auto [stopped, error] = std::from_chars(word.data(), end, value);
  if (stopped != end || error != std::errc() || value < 0) return std::nullopt;
  return value;
}

// A command of OpenOCD's own fails with a number below zero, and says why in its log alone.
bool IsOwnError(std::string_view code) {
  return !code.empty() && code.front() == '-' && Decimal(code.substr(1)).has_value();
}

}  // namespace

// The answer begins with the command's number, by which an answer too many is known, and with
// whether it is an error: its text comes back like any other result.
std::string OpenocdRpc::Ask(const std::string& command) {
  const std::string number = fmt::format("{} ", ++commands_);
  socket_.Send(
      fmt::format("concat {}[catch {{{}}} result] $result{}", number, command, kEndOfText));
  const std::string answer = ReceiveAnswer(command);
  if (answer.compare(0, number.size(), number) == 0) {
    const std::size_t end = std::min(answer.find(' ', number.size()), answer.size());
    const std::string code = answer.substr(number.size(), end - number.size());
    std::string result = answer.substr(std::min(end + 1, answer.size()));
    if (code == "0") return result;
    if (IsOwnError(code)) result = fmt::format("error {}, its log says why", code);
    if (code == "1" || IsOwnError(code)) {
      throw Unsupported(fmt::format("OpenOCD: {:.80}: {}", command, result));
    }
  }
  throw IoError(fmt::format("{}: this does not answer command {}\"{}\": \"{:.80}\"", socket_.Name(),
                            number, command, Printable(answer)));
}

std::string OpenocdRpc::ReceiveAnswer(const std::string& command) {
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

// A row is "N NAME ENABLED IDCODE EXPECTED IRLEN IRCAP IRMASK"; a further EXPECTED stands alone on
// a line below.
std::vector<OpenocdTap> ParseScanChain(const std::string& answer) {
  std::vector<OpenocdTap> taps;
  std::istringstream table(answer);
  for (std::string row; std::getline(table, row);) {
    const std::vector<std::string> columns = WordsOf(row);
    if (columns.size() == 1 && columns[0].rfind("0x", 0) == 0 && !taps.empty()) {
      taps.back().expected.push_back(columns[0]);
    }
    if (columns.size() < 8 || !Decimal(columns[0]).has_value()) continue;
    const std::optional<int> ir_bits = Decimal(columns[5]);
    if (!ir_bits.has_value()) continue;
    taps.push_back({columns[1], columns[2] == "Y", {columns[4]}, *ir_bits});
  }
  return taps;
}

void RefuseUnknownTap(const std::vector<std::string>& taps, const std::string& tap) {
  if (std::find(taps.begin(), taps.end(), tap) != taps.end()) return;
  throw IoError(fmt::format("OpenOCD has no TAP \"{}\", it has: {}", tap, fmt::join(taps, ", ")));
}

std::vector<std::string> WordsOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

}  // namespace icehost
