// Outputs that record pins, and the events of serve.
#ifndef ICESCRIPT_HOST_PINS_PIN_WRITERS_H_
#define ICESCRIPT_HOST_PINS_PIN_WRITERS_H_

#include <cstddef>
#include <memory>
#include <ostream>
#include <string>

#include "host/events/output.h"
#include "host/pins/tap_decoder.h"

namespace icehost {

struct ServedClient {
  std::size_t number = 0;  // from 1, in the order of the connections
  std::string peer;        // the client's endpoint; empty if it has none
  std::size_t bytes = 0;   // the number that the client has sent
  std::size_t scans = 0;   // the number that ended while the client was connected
};

// Receives the events of serve. Steps are writes to the pins, counted from 0.
class ServeListener : public TapListener {
 public:
  // A client connects, or leaves, before step `step`.
  virtual void OnClient(const ServedClient& client, std::size_t step) = 0;
  virtual void OnClientLeft(const ServedClient& client, std::size_t step) = 0;
  // Serving has ended. `error` says why, and is empty if a signal ended it and nothing was lost.
  virtual void OnEnd(const std::string& error) = 0;
};

// Return outputs that write scans, resets, idle cycles and clients as readable lines, and as JSON
// lines for programs. `stream` must outlive them.
std::unique_ptr<Output> MakeServeTrace(std::ostream& stream);
std::unique_ptr<Output> MakeServeJson(std::ostream& stream);

// Returns an output that writes the pins, with the operations of a run or the clients of serve, as
// a Value Change Dump (IEEE 1364) for waveform viewers. `stream` must outlive it.
std::unique_ptr<Output> MakeVcd(std::ostream& stream);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PINS_PIN_WRITERS_H_
