#ifndef ICESCRIPT_HOST_EVENTS_OUTPUT_H_
#define ICESCRIPT_HOST_EVENTS_OUTPUT_H_

#include <string>
#include <utility>
#include <vector>

namespace icehost {

struct PageHead {
  std::string title;
  std::string result;
  bool good;
  std::vector<std::pair<std::string, std::string>> entries;  // shown in this order
  long planned = 0;  // the number of operations if nothing fails; 0 if unknown
};

// The base class of the outputs of run and serve. An output also derives from the listeners that it
// needs: EventListener, ServeListener or StepRecorder.
class Output {
 public:
  virtual ~Output() = default;
  // Called when the file is empty and may be written.
  virtual void Begin() {}
  // Called after all scripts or clients; only EventListener::OnRunEnd may follow.
  virtual void End(const PageHead& /*head*/) {}
  // Returns the new warnings about actions that were played but are missing from the file.
  virtual std::vector<std::string> TakeLosses() { return {}; }
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_OUTPUT_H_
