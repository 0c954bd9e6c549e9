#include "host/check/check_control.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/number.h"
#include "base/text.h"
#include "host/check/remarks.h"
#include "host/check/scan_fields.h"

namespace icehost {
namespace {

// Without the zeros that change nothing.
std::string_view Digits(std::string_view number) {
  return number.substr(std::min(number.find_first_not_of('0'), number.size()));
}

}  // namespace

void CheckReset(const ScriptLine& reset, Problems& problems) {
  const std::string_view value = Trimmed(ValueOf(reset));
  bool denied = Digits(value).empty();
  for (const std::string_view no : {"N", "NO", "OFF", "FALSE"}) {
    denied = denied || icescript::EqualsUpper(value, no);
  }
  if (denied) {
    problems.Warn(reset.Start(), "this resets the target: RESET does so whatever its value is");
  }
}

void CheckCdi(const ScriptLine& cdi, Problems& problems) {
  const std::string_view value = ValueOf(cdi);
  const int taken = icescript::ParseNumber(value, 10);
  if (Digits(Trimmed(value)) == fmt::to_string(taken)) return;
  problems.Warn(cdi.Of(value), fmt::format("CDI is 5 or 2: \"{}\" is taken as {}{}", value, taken,
                                           InParentheses(SlipIn(value))));
}

}  // namespace icehost
