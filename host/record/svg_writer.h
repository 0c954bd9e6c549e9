// The pins as a picture: a timing diagram in SVG.
#ifndef ICESCRIPT_HOST_RECORD_SVG_WRITER_H_
#define ICESCRIPT_HOST_RECORD_SVG_WRITER_H_

#include <ostream>
#include <string>
#include <vector>

#include "host/record/events.h"
#include "host/record/recording_port.h"
#include "host/record/svg_run.h"

namespace icehost {

// Collects a run and draws it, for a page of a document. Only the first steps of a long run are
// kept, as many as an SvgScale may draw, and a note says so.
class SvgWriter : public StepRecorder, public EventListener {
 public:
  void Record(const PinStep& step) override;

  void OnScript(const std::string& path) override;
  void OnCall(const CallEvent& call) override;
  void OnMessage(const char* text) override;
  void OnError(const std::string& text, int line) override;
  void OnScriptEnd(bool ran) override;

  void Write(std::ostream& stream) const;

 private:
  SvgSource SourceOf(const CallEvent& call) const;
  void KeepOperation(const CallEvent& call);
  void KeepRead(const CallEvent& call);

  SvgRun run_;
  std::vector<Field> sent_;  // the arguments of the scan under way
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_RECORD_SVG_WRITER_H_
