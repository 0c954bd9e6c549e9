// Collects a run and draws it, for a page of a document.
#ifndef ICESCRIPT_HOST_PICTURE_SVG_WRITER_H_
#define ICESCRIPT_HOST_PICTURE_SVG_WRITER_H_

#include <ostream>
#include <string>
#include <vector>

#include "host/events/events.h"
#include "host/events/output.h"
#include "host/picture/svg_drawing.h"
#include "host/pins/recording_port.h"

namespace icehost {

// Keeps the first steps of a long run, as many as a picture shows, and the calls in them.
class SvgWriter : public Output, public StepRecorder, public EventListener {
 public:
  explicit SvgWriter(std::ostream& stream) : stream_(stream) {}
  void Record(const PinStep& step) override;

  void OnScript(const std::string& path) override;
  void OnCall(const CallEvent& call) override;
  void End(const PageHead& head) override;

 private:
  void KeepOperation(SvgSegment operation);
  void KeepRead(SvgRead read);

  std::ostream& stream_;
  SvgRun run_;
  std::string script_;  // the path of the one under way
  bool script_begins_ = false;
  std::vector<Field> sent_;  // the arguments of the scan under way
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PICTURE_SVG_WRITER_H_
