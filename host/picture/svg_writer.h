// The pins as a picture: a timing diagram in SVG.
#ifndef ICESCRIPT_HOST_PICTURE_SVG_WRITER_H_
#define ICESCRIPT_HOST_PICTURE_SVG_WRITER_H_

#include <ostream>
#include <string>
#include <vector>

#include "host/events/events.h"
#include "host/events/output.h"
#include "host/picture/svg_run.h"
#include "host/pins/recording_port.h"

namespace icehost {

// Collects a run and draws it, for a page of a document. Only the first steps of a long run are
// kept, as many as an SvgScale may draw, and a note says so.
class SvgWriter : public Output, public StepRecorder, public EventListener {
 public:
  explicit SvgWriter(std::ostream& stream) : stream_(stream) {}
  void Record(const PinStep& step) override;

  void OnScript(const std::string& path) override;
  void OnCall(const CallEvent& call) override;
  void End(const PageHead& head) override;

 private:
  SvgSource SourceOf(const CallEvent& call) const;
  void KeepOperation(const CallEvent& call);
  void KeepRead(const CallEvent& call);

  std::ostream& stream_;
  SvgRun run_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PICTURE_SVG_WRITER_H_
