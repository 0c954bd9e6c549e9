// The pins as a Value Change Dump (IEEE 1364), for GTKWave, PulseView and sigrok-cli.
#ifndef ICESCRIPT_HOST_RECORD_VCD_WRITER_H_
#define ICESCRIPT_HOST_RECORD_VCD_WRITER_H_

#include <cstddef>
#include <optional>
#include <ostream>

#include "host/record/recording_port.h"

namespace icehost {

// Writes as the steps come: what is in the stream is a complete file at any time. One step is 1 us,
// nominal. The state of the TAP is a string variable, as GTKWave shows it; sigrok passes over it
// with a warning.
class VcdWriter : public StepRecorder {
 public:
  // `stream` must outlive the writer.
  explicit VcdWriter(std::ostream& stream);
  void Record(const PinStep& step) override;
  // Gives the last step its length.
  void End();

 private:
  std::ostream& stream_;
  std::size_t time_ = 0;
  std::optional<PinStep> last_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_RECORD_VCD_WRITER_H_
