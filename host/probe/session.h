// What a protocol makes of the bytes that a client of serve sends.
#ifndef ICESCRIPT_HOST_PROBE_SESSION_H_
#define ICESCRIPT_HOST_PROBE_SESSION_H_

#include <string>
#include <string_view>

namespace icehost {

// Plays bytes on the pins of a port. Each client finds the pins as the one before left them.
class Session {
 public:
  virtual ~Session() = default;

  // Begins with another client: forgets what is left of the bytes before.
  virtual void Begin() {}
  // Appends the answers to `answers`. Returns false if the client has quit or has sent what the
  // protocol does not have, and ignores the bytes after that. Collects all samples of the port.
  virtual bool Feed(std::string_view bytes, std::string& answers) = 0;
  // What was wrong with the last bytes; empty if nothing was.
  virtual std::string Fault() const { return ""; }
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_SESSION_H_
