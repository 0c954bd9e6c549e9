// The pins as a picture: a timing diagram in SVG.
#ifndef ICESCRIPT_HOST_RECORD_SVG_WRITER_H_
#define ICESCRIPT_HOST_RECORD_SVG_WRITER_H_

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "host/record/recording_port.h"

namespace icehost {

// The name of operations that are drawn as one when they follow each other: a step or none is too
// short for a name.
constexpr char kPinOperation[] = "pins";

// Collects a run and draws it: a row for the operations, one for the states of the TAP, one for
// each pin. Follows the reader's light or dark scheme. Only the first steps of a long run are kept,
// and a note says so.
class SvgWriter : public StepRecorder {
 public:
  // From step `step` on (counted from 0) the run is in this operation.
  void BeginOperation(std::size_t step, const std::string& name);
  void Record(const PinStep& step) override;

  void Write(std::ostream& stream) const;

 private:
  struct Segment {
    std::size_t begin;
    std::string name;
    std::string short_name;  // for a segment too narrow for the other
  };
  std::vector<Segment> TapSegments() const;
  void WriteSegments(std::ostream& stream, const std::vector<Segment>& segments, int y) const;
  void WritePin(std::ostream& stream, int pin, int y) const;

  std::vector<PinStep> steps_;
  std::size_t total_steps_ = 0;
  std::vector<Segment> operations_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_RECORD_SVG_WRITER_H_
