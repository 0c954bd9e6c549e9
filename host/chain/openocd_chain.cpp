#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <sstream>
#include <vector>

#include "host/chain/chain_reader.h"
#include "host/system/errors.h"

namespace icehost {
namespace {

// OpenOCD reports each TAP at debug level 2, and too many other things at level 3.
constexpr char kExamine[] =
    "set icehost_level [lindex [debug_level] end]; debug_level 2; "
    "set icehost_failed [catch {capture {jtag arp_init}} icehost_said]; "
    "debug_level $icehost_level; concat $icehost_failed $icehost_said";
constexpr int kLeastIrBits = 2;
constexpr char kNoneExpected[] = "0x00000000";
constexpr std::size_t kLongestLine = 200;
constexpr std::size_t kMostLines = 20;

struct Answer {
  std::uint32_t idcode;
  std::string manufacturer;
};

// OpenOCD's messages while it examines a chain.
struct Examination {
  std::map<std::string, std::optional<Answer>> answers;  // by TAP name; no value means no IDCODE
  std::vector<std::string> complaints;
};

// Returns NAME from "... (mfg: 0x23b (NAME), part: ...", or an empty text for "<invalid>".
std::string ManufacturerIn(const std::string& line) {
  const std::size_t begin = line.find(" (", line.find("(mfg: 0x") + 1);
  const std::size_t end = line.find("), part: ");
  if (begin == std::string::npos || end == std::string::npos || end < begin + 2) return "";
  const std::string name = line.substr(begin + 2, end - begin - 2);
  return name.empty() || name.front() == '<' ? "" : name;
}

// Reads "JTAG tap: NAME tap/device found: 0x... (mfg: ...". Returns false for any other line.
bool TakeFound(const std::string& line, const std::vector<std::string>& words,
               Examination& examination) {
  if (words.size() < 6 || words[0] != "JTAG" || words[3] != "tap/device") return false;
  if (words[5].substr(0, 2) != "0x") return false;
  const auto idcode = NumberIn(words[5].substr(2), 16);
  if (!idcode.has_value()) return false;
  examination.answers[words[2]] = {*idcode, ManufacturerIn(line)};
  return true;
}

// Reads "TAP NAME does not have valid IDCODE (idcode=0x...)", printed for a TAP in BYPASS.
bool TakeWithout(const std::vector<std::string>& words, Examination& examination) {
  if (words.size() < 7 || words[0] != "TAP" || words[6] != "IDCODE") return false;
  examination.answers.emplace(words[1], std::nullopt);
  return true;
}

Examination Examine(const std::string& said) {
  Examination examination;
  std::istringstream lines(said);
  for (std::string line; std::getline(lines, line);) {
    const std::vector<std::string> words = WordsOf(line);
    if (words.empty() || TakeFound(line, words, examination) || TakeWithout(words, examination)) {
      continue;
    }
    if (examination.complaints.size() == kMostLines) continue;
    examination.complaints.push_back(
        fmt::format("OpenOCD: {}", fmt::join(words, " ")).substr(0, kLongestLine));
  }
  return examination;
}

ChainTap TapOf(const OpenocdTap& row, const Examination& examination) {
  ChainTap tap;
  tap.name = row.name;
  tap.ir_bits = row.ir_bits;
  if (row.expected.front() != kNoneExpected) {
    tap.expected = fmt::format("{}", fmt::join(row.expected, " or "));
  }
  const auto found = examination.answers.find(row.name);
  tap.answered = found != examination.answers.end();
  if (!tap.answered || !found->second.has_value()) return tap;
  tap.idcode = found->second->idcode;
  tap.manufacturer = found->second->manufacturer;
  return tap;
}

// Returns whether an IDCODE is expected. OpenOCD writes "*" in place of a version that it ignores.
bool IsExpected(std::uint32_t idcode, const std::vector<std::string>& expected) {
  const std::string read = fmt::format("0x{:08x}", idcode);
  return std::any_of(expected.begin(), expected.end(), [&read](const std::string& one) {
    const std::size_t same = one.substr(0, 3) == "0x*" ? 3 : 0;
    return one.substr(same) == read.substr(same);
  });
}

// Adds the faults of one TAP, including those that OpenOCD may accept.
void JudgeTap(const ChainTap& tap, const std::vector<std::string>& expected,
              const std::string& title, std::vector<std::string>& faults) {
  if (*tap.ir_bits < kLeastIrBits) faults.push_back(title + ": an IR must have at least 2 bits");
  if (!tap.answered) {
    faults.push_back(title + ": OpenOCD read nothing");
  } else if (!tap.idcode.has_value() && !tap.expected.empty()) {
    faults.push_back(fmt::format("{}: no IDCODE, expected {}", title, tap.expected));
  } else if (tap.idcode.has_value() && !tap.expected.empty() &&
             !IsExpected(*tap.idcode, expected)) {
    faults.push_back(
        fmt::format("{}: read 0x{:08x}, expected {}", title, *tap.idcode, tap.expected));
  }
}

}  // namespace

Chain OpenocdChain(const std::string& said, const std::string& table) {
  Examination examination = Examine(said);
  Chain chain;
  chain.faults = examination.complaints;
  for (const OpenocdTap& row : ParseScanChain(table)) {
    if (!row.enabled) {
      chain.notes.push_back(row.name + " is declared but disabled, so it is not in the chain");
      continue;
    }
    chain.taps.push_back(TapOf(row, examination));
    examination.answers.erase(row.name);
    JudgeTap(chain.taps.back(), row.expected, TapTitle(chain, chain.taps.size() - 1), chain.faults);
  }
  for (const auto& [name, answer] : examination.answers) {
    chain.faults.push_back(name + ": OpenOCD found this TAP, but does not list it");
  }
  JudgeIdcodes(chain);
  if (chain.taps.empty() && chain.faults.empty()) chain.faults.emplace_back("OpenOCD has no TAP");
  return chain;
}

Chain ReadOpenocdChain(OpenocdRpc& rpc) {
  const std::string said = rpc.Ask(kExamine);
  if (said.substr(0, 1) != "0") {
    throw IoError("OpenOCD cannot examine its chain: " +
                  said.substr(std::min<std::size_t>(2, said.size())));
  }
  const std::string table = rpc.Ask(kAskScanChain);
  rpc.ExpectNoMore();
  return OpenocdChain(said.substr(1), table);
}

}  // namespace icehost
