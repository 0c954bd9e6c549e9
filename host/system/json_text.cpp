#include "host/system/json_text.h"

#include <nlohmann/json.hpp>

namespace icehost {

std::string JsonText(std::string_view text) {
  using Json = nlohmann::json;
  std::string line = Json(text).dump(-1, ' ', true, Json::error_handler_t::replace);
  // The only control character that it leaves as it stands.
  for (std::size_t at = 0; (at = line.find('\x7f', at)) != std::string::npos;) {
    line.replace(at, 1, "\\u007f");
  }
  return line;
}

}  // namespace icehost
