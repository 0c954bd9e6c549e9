// The pins as a Value Change Dump (IEEE 1364), for GTKWave, PulseView and sigrok-cli.
#ifndef ICESCRIPT_HOST_RECORD_VCD_WRITER_H_
#define ICESCRIPT_HOST_RECORD_VCD_WRITER_H_

#include <cstddef>
#include <deque>
#include <optional>
#include <ostream>
#include <string>

#include "host/record/recording_port.h"

namespace icehost {

// Writes as the steps come: what is in the stream is a complete file at any time. One step is 1 us,
// nominal. The state of the TAP and the operation are string variables, as GTKWave shows them;
// sigrok passes over them with a warning.
class VcdWriter : public StepRecorder {
 public:
  // `stream` must outlive the writer.
  explicit VcdWriter(std::ostream& stream);
  // From step `step` on (counted from 0, not yet recorded) the run is in this operation. What a
  // name in this format cannot hold becomes "_".
  void BeginOperation(std::size_t step, const std::string& name);
  void Record(const PinStep& step) override;
  // Gives the last step its length.
  void End();

 private:
  std::ostream& stream_;
  std::size_t time_ = 0;
  std::optional<PinStep> last_;
  struct Operation {
    std::size_t begin;
    std::string name;
  };
  std::deque<Operation> operations_;  // whose first step is still to come
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_RECORD_VCD_WRITER_H_
