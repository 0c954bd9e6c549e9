#include "host/svf/form.h"

#include "base/text.h"
#include "host/system/text.h"

namespace icehost {
namespace {

constexpr std::size_t kLongestName = 200;

}  // namespace

std::string SvfForm::Keyword() const {
  std::string name(statement_.keyword.text);
  for (char& ch : name) ch = icescript::UpperCase(ch);
  return name;
}

std::string SvfNameInComment(std::string name) {
  if (name.size() > kLongestName) name = "..." + name.substr(name.size() - kLongestName);
  name = Printable(name);
  for (std::size_t at = 0; at < name.size(); ++at) {
    if (icescript::EqualsUpper(std::string_view(name).substr(at, 6), "EXPECT")) name[at] = '?';
  }
  return name;
}

}  // namespace icehost
