#include "host/system/xml_text.h"

#include <algorithm>
#include <iterator>

#include "host/system/printable.h"

namespace icehost {
namespace {

struct Replacement {
  std::string_view text;
  std::string_view with;
};

// U+FFFE and U+FFFF are UTF-8, and no characters of XML. "]]>" is forbidden, hence ">".
constexpr Replacement kReplacements[] = {
    {"&", "&amp;"}, {"<", "&lt;"}, {">", "&gt;"}, {"\xEF\xBF\xBE", "?"}, {"\xEF\xBF\xBF", "?"},
};

}  // namespace

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
