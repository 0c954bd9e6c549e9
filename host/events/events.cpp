#include "host/events/events.h"

#include <fmt/format.h>

namespace icehost {

ValueCounts operator+(const ValueCounts& one, const ValueCounts& other) {
  return {one.met + other.met, one.unmet + other.unmet, one.unread + other.unread};
}

std::string PlacedText(const Notice& notice) {
  const auto [line, column] = notice.place;
  if (line == 0) return notice.text;
  std::string text = fmt::format("{}:{}:", notice.name, line);
  if (column != 0) text += fmt::format("{}:", column);
  if (notice.severity == Severity::kWarning) text += " warning:";
  return text.append(" ").append(notice.text);
}

}  // namespace icehost
