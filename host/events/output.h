// What a file that icehost writes has in common with the others.
#ifndef ICESCRIPT_HOST_EVENTS_OUTPUT_H_
#define ICESCRIPT_HOST_EVENTS_OUTPUT_H_

#include <string>
#include <utility>
#include <vector>

namespace icehost {

// What a page shows first.
struct PageHead {
  std::string title;
  std::string result;
  bool good;
  std::vector<std::pair<std::string, std::string>> entries;  // shown in their order
  long planned = 0;                                          // operations; 0: not known
};

// A writer derives from this and from the listeners it needs: EventListener, ServeListener,
// StepRecorder.
class Output {
 public:
  virtual ~Output() = default;
  // The file is empty from here on.
  virtual void Begin() {}
  // Nothing follows.
  virtual void End(const PageHead& /*head*/) {}
  // Returns a warning for each thing that was played and is not in the file, and each only once.
  virtual std::vector<std::string> TakeLosses() { return {}; }
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_OUTPUT_H_
