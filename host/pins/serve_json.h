// What happens at a served target as JSON lines for programs.
#ifndef ICESCRIPT_HOST_PINS_SERVE_JSON_H_
#define ICESCRIPT_HOST_PINS_SERVE_JSON_H_

#include <ostream>
#include <string>

#include "host/events/output.h"
#include "host/pins/serve_listener.h"

namespace icehost {

// One object a line, told apart by its first key: "schema", "client", "scan", "reset", "idle",
// "pins", "error" or "end"; docs/json.md describes them. ASCII only.
class ServeJson : public Output, public ServeListener {
 public:
  // `stream` must outlive the writer.
  explicit ServeJson(std::ostream& stream) : stream_(stream) {}
  // The line that says what follows.
  void Begin() override;
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

#endif  // ICESCRIPT_HOST_PINS_SERVE_JSON_H_
