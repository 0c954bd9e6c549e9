// The outputs made of pins, and what happens at a served target.
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
  std::size_t number = 0;  // from 1, in the order in which they came
  std::string peer;        // its endpoint; empty where it has none
  std::size_t bytes = 0;   // that it sent
  std::size_t scans = 0;   // that ended while it was there
};

// Steps are those of the pins, counted from 0.
class ServeListener : public TapListener {
 public:
  // Before step `step` a client comes, or goes.
  virtual void OnClient(const ServedClient& client, std::size_t step) = 0;
  virtual void OnClientLeft(const ServedClient& client, std::size_t step) = 0;
  // Nothing follows. `error` says why, and is empty where a signal has ended the serving.
  virtual void OnEnd(const std::string& error) = 0;
};

// Lines for people, and JSON lines for programs: scans, resets, idle cycles and clients. Both are
// ServeListeners.
std::unique_ptr<Output> MakeServeTrace(std::ostream& stream);
std::unique_ptr<Output> MakeServeJson(std::ostream& stream);

// A Value Change Dump (IEEE 1364) of the pins, for GTKWave, PulseView and sigrok-cli. Its
// operations are those of a run, or the clients of a served target.
std::unique_ptr<Output> MakeVcd(std::ostream& stream);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PINS_PIN_WRITERS_H_
