#include "host/system/endpoint.h"

#include <fmt/format.h>

#include <stdexcept>

namespace icehost {
namespace {

constexpr std::string_view kUnixPrefix = "unix:";
constexpr int kHighestPort = 65535;

}  // namespace

std::string Endpoint::Name() const {
  if (IsUnix()) return fmt::format("{}{}", kUnixPrefix, path);
  const bool brackets = host.find(':') != std::string::npos;
  return fmt::format(brackets ? "[{}]:{}" : "{}:{}", host, port);
}

Endpoint ParseEndpoint(std::string_view text) {
  if (text.substr(0, kUnixPrefix.size()) == kUnixPrefix) {
    const std::string path(text.substr(kUnixPrefix.size()));
    if (path.empty()) throw std::invalid_argument("expected a path after unix:");
    return {"", "", path};
  }
  const std::size_t colon = text.rfind(':');
  if (colon == std::string_view::npos || colon == 0 || colon + 1 == text.size()) {
    throw std::invalid_argument(fmt::format("expected HOST:PORT or unix:PATH, not \"{}\"", text));
  }
  const std::string port(text.substr(colon + 1));
  const bool digits = port.find_first_not_of("0123456789") == std::string::npos;
  if (!digits || port.size() > 5 || std::stoi(port) > kHighestPort) {
    throw std::invalid_argument(
        fmt::format("\"{}\" is not a port from 0 to {}", port, kHighestPort));
  }
  std::string_view host = text.substr(0, colon);
  if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
    host = host.substr(1, host.size() - 2);
  }
  return {std::string(host), port, ""};
}

}  // namespace icehost
