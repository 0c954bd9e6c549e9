// Writes the pins as a Value Change Dump.
#include <algorithm>
#include <cctype>
#include <cstddef>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include "host/events/output.h"
#include "host/pins/pin_writers.h"
#include "host/pins/recording_port.h"
#include "host/target/wires.h"

namespace icehost {
namespace {

constexpr char kFirstId = '!';  // the id of the first pin; the other pins have the next characters
constexpr char kTapId = 't';
constexpr char kOperationId = 'o';

std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char ch) { return static_cast<char>(std::tolower(ch)); });
  return text;
}

// Writes each step immediately, so that the file is always complete. A step counts as 1 us. GTKWave
// shows the string variables for the TAP state and the operation. sigrok skips them with a warning.
class VcdWriter : public Output, public StepRecorder {
 public:
  // `stream` must outlive the writer.
  explicit VcdWriter(std::ostream& stream);
  // Replaces each character that is not allowed in a name with "_".
  void BeginOperation(const std::string& name, const CallSource& source) override;
  void Record(const PinStep& step) override;
  // Writes the time at which the last step ends.
  void End(const PageHead& head) override;

 private:
  std::ostream& stream_;
  std::size_t time_ = 0;
  std::optional<PinStep> last_;
  std::string operation_;  // the operation that begins with the next step, or empty
};

VcdWriter::VcdWriter(std::ostream& stream) : stream_(stream) {
  stream_ << "$version icehost $end\n$timescale 1 us $end\n$scope module probe $end\n";
  for (int pin = 0; pin < kPinCount; ++pin) {
    stream_ << "$var wire 1 " << static_cast<char>(kFirstId + pin) << ' '
            << LowerCase(kPinNames[pin]) << " $end\n";
  }
  stream_ << "$var string 1 " << kTapId << " tap $end\n$var string 1 " << kOperationId
          << " operation $end\n$upscope $end\n$enddefinitions $end\n";
}

void VcdWriter::BeginOperation(const std::string& name, const CallSource& /*source*/) {
  operation_ = name;
  for (char& ch : operation_) {
    // GTKWave would interpret a backslash as the start of an escape sequence.
    if (std::isgraph(static_cast<unsigned char>(ch)) == 0 || ch == '\\') ch = '_';
  }
}

void VcdWriter::Record(const PinStep& step) {
  stream_ << '#' << time_ << '\n';
  if (!operation_.empty()) stream_ << 's' << operation_ << ' ' << kOperationId << '\n';
  operation_.clear();
  ++time_;
  const int changed = last_.has_value() ? step.wires ^ last_->wires : GPIO_PIN_ALL;
  for (int pin = 0; pin < kPinCount; ++pin) {
    if ((changed >> pin & 1) == 0) continue;
    stream_ << (step.wires >> pin & 1) << static_cast<char>(kFirstId + pin) << '\n';
  }
  if (!last_.has_value() || step.tap != last_->tap) {
    stream_ << 's' << (step.tap.has_value() ? TapStateName(*step.tap) : "?") << ' ' << kTapId
            << '\n';
  }
  last_ = step;
}

void VcdWriter::End(const PageHead& /*head*/) {
  stream_ << '#' << time_ << '\n';
}

}  // namespace

std::unique_ptr<Output> MakeVcd(std::ostream& stream) {
  return std::make_unique<VcdWriter>(stream);
}

}  // namespace icehost
