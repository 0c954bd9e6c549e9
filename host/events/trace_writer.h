// The events of a run as lines for people.
#ifndef ICESCRIPT_HOST_EVENTS_TRACE_WRITER_H_
#define ICESCRIPT_HOST_EVENTS_TRACE_WRITER_H_

#include <ostream>
#include <string>

#include "host/events/events.h"
#include "host/events/output.h"

namespace icehost {

// One line a host call: "id.ini:11 [READ_ID] link_reset(kind=TARGET) = 0". Messages are not
// repeated.
class TraceWriter : public Output, public EventListener {
 public:
  // `stream` must outlive the writer.
  explicit TraceWriter(std::ostream& stream) : stream_(stream) {}
  void OnScript(const std::string& path) override;
  void OnCall(const CallEvent& call) override;
  void OnScriptEnd(bool ran) override;

 private:
  std::ostream& stream_;
  std::string path_;
  std::string line_;  // kept for its room
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_TRACE_WRITER_H_
