// What happens at a served target as a page.
#ifndef ICESCRIPT_HOST_RECORD_SERVE_PAGE_H_
#define ICESCRIPT_HOST_RECORD_SERVE_PAGE_H_

#include <ostream>
#include <string>

#include "host/record/page_writer.h"
#include "host/record/serve_listener.h"

namespace icehost {

// A row for every scan, reset and stay in Run-Test/Idle, in the order in which they end; clients
// come and go between them.
class ServePage : public ServeListener, public StepRecorder {
 public:
  void OnScan(const TapScan& scan) override;
  void OnTapReset(bool by_trst, StepRange steps) override;
  void OnIdle(long cycles, StepRange steps) override;
  void OnResetPins(int levels, StepRange steps) override;
  void OnClient(const ServedClient& client, std::size_t step) override;
  void OnClientLeft(const ServedClient& client, std::size_t step) override;
  void OnEnd(const std::string& error) override;
  void Record(const PinStep& step) override { writer_.Record(step); }

  void Write(std::ostream& stream, const PageHead& head) const { writer_.Write(stream, head); }

 private:
  void Add(StepRange steps, std::string name, std::string sent, std::string received);

  PageWriter writer_;
  long number_ = 0;  // of the next row
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_RECORD_SERVE_PAGE_H_
