// What happens at a served target as lines for people.
#ifndef ICESCRIPT_HOST_PINS_SERVE_TRACE_H_
#define ICESCRIPT_HOST_PINS_SERVE_TRACE_H_

#include <ostream>
#include <string>

#include "host/events/output.h"
#include "host/pins/serve_listener.h"

namespace icehost {

// One line an event, behind the number of the step where it begins:
// "1042 DR 32 bits 0x00000000 -> 0x1ce51001", what went in before what came out.
class ServeTrace : public Output, public ServeListener {
 public:
  // `stream` must outlive the trace.
  explicit ServeTrace(std::ostream& stream) : stream_(stream) {}
  void OnScan(const TapScan& scan) override;
  void OnTapReset(bool by_trst, StepRange steps) override;
  void OnIdle(long cycles, StepRange steps) override;
  void OnResetPins(int levels, StepRange steps) override;
  void OnClient(const ServedClient& client, std::size_t step) override;
  void OnClientLeft(const ServedClient& client, std::size_t step) override;
  void OnEnd(const std::string& error) override;

 private:
  std::ostream& stream_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PINS_SERVE_TRACE_H_
