// What a picture shows of a run.
#ifndef ICESCRIPT_HOST_PICTURE_SVG_RUN_H_
#define ICESCRIPT_HOST_PICTURE_SVG_RUN_H_

#include <cstddef>
#include <string>
#include <vector>

#include "host/events/call_fields.h"
#include "host/events/events.h"
#include "host/pins/recording_port.h"

namespace icehost {

// As a CallSource, which is gone after its call.
struct SvgSource {
  std::size_t script = 0;  // counted from 0
  int line = 0;
  std::string section;  // empty: none
};

// A host call that moved the pins.
struct SvgOperation {
  enum class Kind { kPins, kReset, kScan };
  Kind kind;
  SvgSource source;
  StepRange steps;              // never empty
  std::vector<Field> sent;      // the arguments of a scan
  std::vector<Field> captured;  // its outputs
};

// Pins that were read, or what a scan captured where that is not as expected.
struct SvgRead {
  SvgSource source;
  std::size_t step;   // the one under way
  std::string value;  // of the pins, hexadecimal
  // "IR expected 0x01, captured 0x00 (mask 0x01); DR ..."; empty where all is well.
  std::string unmet;
  long times;  // reads in this step
};

struct SvgRun {
  std::vector<std::string> scripts;  // their paths
  std::vector<PinStep> steps;        // the first of them
  std::size_t total_steps = 0;
  std::vector<SvgOperation> operations;  // in the order of their steps
  std::vector<SvgRead> reads;            // likewise, one a step at most
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PICTURE_SVG_RUN_H_
