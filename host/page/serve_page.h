// What happens at a served target as a page.
#ifndef ICESCRIPT_HOST_PAGE_SERVE_PAGE_H_
#define ICESCRIPT_HOST_PAGE_SERVE_PAGE_H_

#include <ostream>
#include <string>

#include "host/events/output.h"
#include "host/page/page_writer.h"
#include "host/pins/serve_listener.h"

namespace icehost {

// A row for every scan, reset and stay in Run-Test/Idle, in the order in which they end; clients
// come and go between them.
class ServePage : public Output, public ServeListener, public StepRecorder {
 public:
  explicit ServePage(std::ostream& stream) : stream_(stream) {}
  void OnScan(const TapScan& scan) override;
  void OnTapReset(bool by_trst, StepRange steps) override;
  void OnIdle(long cycles, StepRange steps) override;
  void OnResetPins(int levels, StepRange steps) override;
  void OnClient(const ServedClient& client, std::size_t step) override;
  void OnClientLeft(const ServedClient& client, std::size_t step) override;
  void OnEnd(const std::string& error) override;
  void Record(const PinStep& step) override { writer_.Record(step); }
  void End(const PageHead& head) override { writer_.Write(stream_, head); }

 private:
  void Add(StepRange steps, std::string name, std::string sent, std::string received);

  std::ostream& stream_;
  PageWriter writer_;
  long number_ = 0;  // of the next row
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PAGE_SERVE_PAGE_H_
