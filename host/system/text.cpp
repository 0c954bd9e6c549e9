#include "host/system/text.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>

namespace icehost {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// Unicode's control (Cc) and format (Cf) characters, and line and paragraph separators, sorted.
constexpr Range kUnprintable[] = {
    {0x00, 0x08},       {0x0A, 0x1F},       {0x7F, 0x9F},       {0xAD, 0xAD},
    {0x600, 0x605},     {0x61C, 0x61C},     {0x6DD, 0x6DD},     {0x70F, 0x70F},
    {0x890, 0x891},     {0x8E2, 0x8E2},     {0x180E, 0x180E},   {0x200B, 0x200F},
    {0x2028, 0x202E},   {0x2060, 0x206F},   {0xFEFF, 0xFEFF},   {0xFFF9, 0xFFFB},
    {0x110BD, 0x110BD}, {0x110CD, 0x110CD}, {0x13430, 0x1343F}, {0x1BCA0, 0x1BCA3},
    {0x1D173, 0x1D17A}, {0xE0001, 0xE007F},
};

bool IsPrintable(char32_t code) {
  const auto* const range =
      std::lower_bound(std::begin(kUnprintable), std::end(kUnprintable), code,
                       [](const Range& one, char32_t wanted) { return one.last < wanted; });
  return range == std::end(kUnprintable) || code < range->first;
}

// Returns the size of the UTF-8 character that begins with this byte, or 0 if no character does.
std::size_t SizeOf(unsigned char first) {
  if (first < 0x80) return 1;
  if (first < 0xC2) return 0;  // 0xC0 and 0xC1 begin only overlong forms
  if (first < 0xE0) return 2;
  if (first < 0xF0) return 3;
  return first < 0xF5 ? 4 : 0;
}

// Decodes the first `size` bytes as one character. Returns false if they are not valid UTF-8.
bool Decode(std::string_view text, std::size_t size, char32_t& code) {
  if (size == 0 || text.size() < size) return false;
  const auto first = static_cast<unsigned char>(text[0]);
  code = size == 1 ? first : first & (0x7FU >> size);
  for (const char ch : text.substr(1, size - 1)) {
    if ((ch & 0xC0) != 0x80) return false;
    code = code << 6 | (static_cast<unsigned char>(ch) & 0x3FU);
  }
  const char32_t least[] = {0, 0x80, 0x800, 0x10000};
  return code >= least[size - 1] && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
}

// Returns whether a text needs no escapes in ASCII JSON, which is true of most texts.
bool IsPlainJson(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char ch) { return ch >= ' ' && ch < '\x7f' && ch != '"' && ch != '\\'; });
}

struct Replacement {
  std::string_view text;
  std::string_view with;
};

// ">" is replaced because XML forbids "]]>". XML also forbids U+FFFE and U+FFFF.
constexpr Replacement kReplacements[] = {
    {"&", "&amp;"},   {"<", "&lt;"},         {">", "&gt;"},
    {"\"", "&quot;"}, {"\xEF\xBF\xBE", "?"}, {"\xEF\xBF\xBF", "?"},
};

}  // namespace

std::string Printable(std::string_view text) {
  std::string printable;
  while (!text.empty()) {
    std::size_t size = SizeOf(static_cast<unsigned char>(text[0]));
    char32_t code = 0;
    if (!Decode(text, size, code)) {
      printable += '?';
      size = 1;
    } else if (IsPrintable(code)) {
      printable += text.substr(0, size);
    } else {
      printable += ' ';
    }
    text.remove_prefix(size);
  }
  return printable;
}

std::string PrintableLines(std::string_view text) {
  std::string shown;
  for (std::size_t end = 0; (end = text.find('\n')) != std::string_view::npos;) {
    shown += Printable(text.substr(0, end)) + '\n';
    text.remove_prefix(end + 1);
  }
  return shown + Printable(text);
}

std::string JsonText(std::string_view text) {
  if (IsPlainJson(text)) return std::string("\"").append(text).append("\"");
  using Json = nlohmann::json;
  std::string line = Json(text).dump(-1, ' ', true, Json::error_handler_t::replace);
  // DEL is the only control character that dump does not escape.
  for (std::size_t at = 0; (at = line.find('\x7f', at)) != std::string::npos;) {
    line.replace(at, 1, "\\u007f");
  }
  return line;
}

std::string XmlText(std::string_view text) {
  const std::string printable = Printable(text);
  std::string escaped;
  for (std::string_view rest = printable; !rest.empty();) {
    const auto* const found = std::find_if(
        std::begin(kReplacements), std::end(kReplacements), [rest](const Replacement& replacement) {
          return rest.substr(0, replacement.text.size()) == replacement.text;
        });
    const bool replaced = found != std::end(kReplacements);
    escaped += replaced ? found->with : rest.substr(0, 1);
    rest.remove_prefix(replaced ? found->text.size() : 1);
  }
  return escaped;
}

}  // namespace icehost
