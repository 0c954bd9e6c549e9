#ifndef ICESCRIPT_HOST_SYSTEM_ENDPOINT_H_
#define ICESCRIPT_HOST_SYSTEM_ENDPOINT_H_

#include <string>
#include <string_view>

namespace icehost {

// An address to connect to or to listen on: a TCP host and port, or the path of a UNIX socket.
struct Endpoint {
  std::string host;
  std::string port;  // empty for a UNIX socket
  std::string path;

  bool IsUnix() const { return port.empty(); }
  // Returns the endpoint as users write it: "HOST:PORT" (IPv6 in brackets) or "unix:PATH".
  std::string Name() const;
};

// Parses a text as Name returns it. Throws std::invalid_argument, which says what is expected.
Endpoint ParseEndpoint(std::string_view text);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_ENDPOINT_H_
