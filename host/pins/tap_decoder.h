// What happens to a TAP, read off the pins.
#ifndef ICESCRIPT_HOST_PINS_TAP_DECODER_H_
#define ICESCRIPT_HOST_PINS_TAP_DECODER_H_

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "entry/icescript.h"
#include "host/events/events.h"
#include "host/pins/recording_port.h"
#include "host/target/bits.h"
#include "host/target/tap.h"

namespace icehost {

// Bounds what is kept of a scan without end.
constexpr std::size_t kMostScanBits = 1U << 20U;

// One way through a column of the TAP's states, from Capture to Update, with or without Pause.
struct TapScan {
  bool ir;                   // the IR column, else the DR column
  Bits in;                   // TDI at each rising TCK edge in Shift, the first bit first
  Bits out;                  // TDO before each of these edges
  bool updated;              // false where a TAP reset, or the end, cut it short
  StepRange steps;           // from the edge that captures to the one that updates
  std::size_t left_out = 0;  // bits behind the first kMostScanBits, which are not kept
  bool reset = false;        // a TAP reset cut it short
};

// The bits of a scan as text, the last of them first: "0x", and two digits for each eight.
std::string BitText(const Bits& bits);

class TapListener {
 public:
  virtual ~TapListener() = default;
  virtual void OnScan(const TapScan& scan) = 0;
  // The TAP comes to Test-Logic-Reset from another state, or from an unknown one.
  virtual void OnTapReset(bool by_trst, StepRange steps) = 0;
  // How many rising TCK edges found the TAP in Run-Test/Idle and left it there, told once it goes
  // on or a reset line changes.
  virtual void OnIdle(long cycles, StepRange steps) = 0;
  // NRST or TRST changes: both levels as they are now, GPIO_PIN_ bits. High before the first step.
  virtual void OnResetPins(int levels, StepRange steps) = 0;
};

// Tells everything in the order in which it ends.
class TapDecoder : public StepRecorder {
 public:
  // The listeners must outlive the decoder.
  explicit TapDecoder(std::vector<TapListener*> listeners) : listeners_(std::move(listeners)) {}

  void Record(const PinStep& step) override;
  // No step follows: tells what is still under way.
  void End();
  // So far.
  std::size_t Scans() const { return scans_; }

 private:
  template <class... Parameters, class... Arguments>
  void Tell(void (TapListener::*what)(Parameters...), const Arguments&... arguments) {
    for (TapListener* const listener : listeners_) (listener->*what)(arguments...);
  }
  void OnEdge(TapState from, TapState to, int wires);
  void Shift(int wires);
  void OnResetPins(int levels);
  void ResetByTms();
  void CutScan();
  void EndScan(bool updated, std::size_t end);
  void EndIdle(std::size_t end);

  std::vector<TapListener*> listeners_;
  std::size_t scans_ = 0;
  std::size_t step_ = 0;  // the one that is recorded
  int wires_ = GPIO_PIN_ALL;
  std::optional<TapState> tap_;
  std::optional<TapScan> scan_;  // under way
  long idle_cycles_ = 0;
  std::size_t idle_begin_ = 0;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PINS_TAP_DECODER_H_
