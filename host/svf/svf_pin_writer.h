// A run as a Serial Vector Format file, read off the pins.
#ifndef ICESCRIPT_HOST_SVF_SVF_PIN_WRITER_H_
#define ICESCRIPT_HOST_SVF_SVF_PIN_WRITER_H_

#include <cstddef>
#include <deque>
#include <optional>
#include <string>

#include "host/events/events.h"
#include "host/pins/recording_port.h"
#include "host/pins/tap_decoder.h"
#include "host/svf/svf_file.h"

namespace icehost {

// Writes what happens to the TAP, whichever script makes it happen. A scan of a GPIO script is
// compared by the bits of which the script itself read TDO while the target drove it.
class SvfPinWriter : public SvfOutput,
                     public EventListener,
                     public StepRecorder,
                     private TapListener {
 public:
  explicit SvfPinWriter(std::ostream& stream) : SvfOutput(stream) {}

  void BeginOperation(const std::string& name, const CallSource& source) override;
  void Record(const PinStep& step) override;
  void End(const PageHead& head) override;

  void OnScript(const std::string& path) override { paths_.push_back(path); }
  void OnCall(const CallEvent& call) override;
  void OnScriptEnd(bool ran) override;

 private:
  struct Operation {
    long number;  // from 1
    CallSource source;
    const std::string* path;
  };
  // A comment that waits for its place.
  struct Note {
    std::size_t step;  // before which it stands
    CallSource source;
    const std::string* path;
    SvfLoss loss;
    std::string text;
  };
  // Held back until the TAP goes on from Update, which tells the state that it ends in.
  struct Held {
    SvfScan scan;
    Operation begin;
    int last_line;  // of a GPIO script
    bool paused;
  };

  void OnScan(const TapScan& scan) override;
  void OnTapReset(bool by_trst, StepRange steps) override;
  void OnIdle(long cycles, StepRange steps) override;
  void OnResetPins(int levels, StepRange steps) override;

  void Advance();
  void OnEdge(const PinStep& before, const PinStep& step);
  void OnNewState(TapState from, TapState to);
  void Locate(const Operation& operation, int last_line);
  void BeginStatement();
  void LoseScan(const TapScan& scan);
  void WriteScan(const char* end);
  void AddNote(const CallEvent& call, SvfLoss loss, std::string text);
  void Write(const Note& note);
  Bits MaskOf(const TapScan& scan) const;
  void OnInterface(const CallEvent& call);
  void OnPinCall(const CallEvent& call, const GpioCall& pins);
  void NoteTdoRead();

  TapDecoder decoder_{{this}};
  std::size_t step_ = 0;  // the next to be recorded
  PinStep last_{GPIO_PIN_ALL, std::nullopt, false};
  int reset_levels_ = GPIO_PIN_NRST | GPIO_PIN_TRST;
  std::deque<std::string> paths_;  // of all scripts so far
  std::deque<Note> notes_;         // whose step is still to come
  Operation current_{0, {}, nullptr};
  long located_ = 0;  // the operation that the last comment on a place is of
  int released_ = 0;  // pins
  bool two_wire_ = false;

  // Since the last Capture:
  Operation begin_{0, {}, nullptr};
  bool paused_ = false;
  std::size_t shifted_ = 0;  // bits
  bool shifts_ = false;      // the last edge shifted one that the target drove
  Bits read_;                // whether the script read that bit
  std::optional<Held> held_;
  bool updated_ = false;         // a scan, and has not been in Run-Test/Idle since
  const char* end_dr_ = "IDLE";  // ENDDR in force
  const char* end_ir_ = "IDLE";
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_SVF_PIN_WRITER_H_
