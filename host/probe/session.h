// The interface of a protocol of serve, which plays what a client sends.
#ifndef ICESCRIPT_HOST_PROBE_SESSION_H_
#define ICESCRIPT_HOST_PROBE_SESSION_H_

#include <string>
#include <string_view>

namespace icehost {

// Plays bytes on the pins of a port. Each client finds the pins as the previous one left them.
class Session {
 public:
  virtual ~Session() = default;

  // Begins a new client: drops the bytes of the previous one that were not played.
  virtual void Begin() {}
  // Plays `bytes` and appends the answers to `answers`. Returns false if the client has quit or has
  // sent something invalid, and ignores the bytes after that. Collects all samples of the port.
  virtual bool Feed(std::string_view bytes, std::string& answers) = 0;
  // Returns what was wrong with the last bytes, or an empty text.
  virtual std::string Fault() const { return ""; }
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_SESSION_H_
