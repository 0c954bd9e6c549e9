#ifndef ICESCRIPT_HOST_PROBE_SESSION_H_
#define ICESCRIPT_HOST_PROBE_SESSION_H_

#include <string>
#include <string_view>

namespace icehost {

// A protocol of serve. It plays the bytes of a client on the pins of a port. Each client finds the
// pins as the previous client left them.
class Session {
 public:
  virtual ~Session() = default;

  // Prepares for a new client: drops the bytes of the previous client that were not played.
  virtual void Begin() {}
  // Plays `bytes` and appends the answers to `answers`. Returns false if the client has quit or has
  // sent something invalid, and ignores the bytes after that. Collects all samples of the port.
  virtual bool Feed(std::string_view bytes, std::string& answers) = 0;
  // Returns why the last bytes were invalid, or an empty text.
  virtual std::string Fault() const { return ""; }
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_SESSION_H_
