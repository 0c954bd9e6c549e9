#include "host/chain/manufacturers.h"

#include <algorithm>
#include <fstream>
#include <optional>
#include <string_view>

namespace icehost {
namespace {

using Banks = std::vector<std::vector<std::string>>;

constexpr char kInstalled[] = "/usr/bin/decode-dimms";
// Ten times that of i2c-tools 4.3.
constexpr std::size_t kLongestTable = 1 << 20;
constexpr std::size_t kCodesOfBank = 126;

std::string ReadTable(std::istream& stream) {
  std::string text(kLongestTable, '\0');
  stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(stream.gcount()));
  return text;
}

// The names in the quotes of one bank, whose brackets are outside; nothing where it is none.
std::optional<std::vector<std::string>> ParseBank(std::string_view text) {
  std::vector<std::string> names;
  while (!text.empty()) {
    const std::size_t quote = text.find('"');
    const std::string_view between = text.substr(0, quote);
    if (between.find_first_not_of(", \t\r\n") != std::string_view::npos) return std::nullopt;
    if (quote == std::string_view::npos) break;
    const std::size_t end = text.find('"', quote + 1);
    if (end == std::string_view::npos) return std::nullopt;
    names.emplace_back(text.substr(quote + 1, end - quote - 1));
    text.remove_prefix(end + 1);
  }
  return names;
}

// Each bank but the last is full: a name too many or too few would give all that follow to others.
bool AreWhole(const Banks& banks) {
  if (banks.empty()) return false;
  return std::all_of(banks.begin(), banks.end() - 1,
                     [](const auto& bank) { return bank.size() == kCodesOfBank; }) &&
         banks.back().size() <= kCodesOfBank;
}

Banks ParseBanks(std::string_view text) {
  constexpr std::string_view kBegin = "\n@vendors = (";
  const std::size_t begin = text.find(kBegin);
  const std::size_t end = text.find(");", std::min(begin, text.size()));
  if (end == std::string_view::npos) return {};
  text = text.substr(begin + kBegin.size(), end - begin - kBegin.size());
  Banks banks;
  for (std::size_t open = 0; (open = text.find('[')) != std::string_view::npos;) {
    const std::size_t close = text.find(']', open);
    if (close == std::string_view::npos) return {};
    auto bank = ParseBank(text.substr(open + 1, close - open - 1));
    if (!bank.has_value()) return {};
    banks.push_back(*std::move(bank));
    text.remove_prefix(close + 1);
  }
  return banks;
}

}  // namespace

Manufacturers::Manufacturers(std::istream& table) {
  Banks banks = ParseBanks(ReadTable(table));
  if (AreWhole(banks)) banks_ = std::move(banks);
}

Manufacturers Manufacturers::Installed() {
  std::ifstream table(kInstalled);
  return Manufacturers(table);
}

std::string Manufacturers::NameOf(Manufacturer manufacturer) const {
  const std::size_t bank = manufacturer.bank - 1;
  const std::size_t code = manufacturer.code - 1;  // of 0: beyond every bank
  return bank < banks_.size() && code < banks_[bank].size() ? banks_[bank][code] : "";
}

}  // namespace icehost
