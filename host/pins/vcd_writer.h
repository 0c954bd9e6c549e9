// The pins as a Value Change Dump (IEEE 1364), for GTKWave, PulseView and sigrok-cli.
#ifndef ICESCRIPT_HOST_PINS_VCD_WRITER_H_
#define ICESCRIPT_HOST_PINS_VCD_WRITER_H_

#include <cstddef>
#include <optional>
#include <ostream>
#include <string>

#include "host/events/output.h"
#include "host/pins/recording_port.h"

namespace icehost {

// Writes as the steps come: what is in the stream is a complete file at any time. One step is 1 us,
// nominal. The state of the TAP and the operation are string variables, as GTKWave shows them;
// sigrok passes over them with a warning.
class VcdWriter : public Output, public StepRecorder {
 public:
  // `stream` must outlive the writer.
  explicit VcdWriter(std::ostream& stream);
  // What a name in this format cannot hold becomes "_".
  void BeginOperation(const std::string& name, const CallSource& source) override;
  void Record(const PinStep& step) override;
  // Gives the last step its length.
  void End(const PageHead& head) override;

 private:
  std::ostream& stream_;
  std::size_t time_ = 0;
  std::optional<PinStep> last_;
  std::string operation_;  // that begins with the next step; empty: none does
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PINS_VCD_WRITER_H_
