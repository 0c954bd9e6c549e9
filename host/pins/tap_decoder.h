#ifndef ICESCRIPT_HOST_PINS_TAP_DECODER_H_
#define ICESCRIPT_HOST_PINS_TAP_DECODER_H_

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "entry/icescript.h"
#include "host/events/events.h"
#include "host/pins/recording_port.h"
#include "host/target/bits.h"
#include "host/target/tap.h"

namespace icehost {

// The most bits of a scan that are kept. This limits the memory for a scan that does not end.
constexpr std::size_t kMostScanBits = 1U << 20U;

// One pass through a column of the TAP's states, from Capture to Update, with or without Pause.
struct TapScan {
  bool ir;                   // the IR column; otherwise the DR column
  Bits in;                   // TDI at each rising TCK edge in Shift, the first bit first
  Bits out;                  // TDO before each of these edges
  bool updated;              // false if a TAP reset or TapDecoder::End has ended the scan early
  StepRange steps;           // from the edge into Capture to the edge into Update, if they exist
  std::size_t left_out = 0;  // the number of bits that are not kept
  bool reset = false;        // a TAP reset has ended the scan early
  bool continued = false;    // continues a scan that TapDecoder::End has ended
};

class TapListener {
 public:
  virtual ~TapListener() = default;
  virtual void OnScan(const TapScan& scan) = 0;
  // The TAP has entered Test-Logic-Reset, by TRST or by TMS, from another or an unknown state.
  virtual void OnTapReset(bool by_trst, StepRange steps) = 0;
  // The TAP has stayed in Run-Test/Idle for `cycles` rising TCK edges. Called when it leaves this
  // state, or when a reset line changes.
  virtual void OnIdle(long cycles, StepRange steps) = 0;
  // NRST or TRST has changed. `levels` are the new levels of both (GPIO_PIN_ bits). Before the
  // first step, both are high.
  virtual void OnResetPins(int levels, StepRange steps) = 0;
  // At a rising TCK edge with TRST high, the TAP has moved from `before.tap`, a known state, to
  // `to`, which may be the same state. Called before OnScan, OnTapReset and OnIdle of this edge.
  virtual void OnTapEdge(const PinStep& /*before*/, TapState /*to*/) {}
};

// Decodes the actions of a TAP from the steps of its pins. Reports each action when it ends.
class TapDecoder : public StepRecorder {
 public:
  // The listeners must outlive the decoder.
  explicit TapDecoder(std::vector<TapListener*> listeners) : listeners_(std::move(listeners)) {}

  void Record(const PinStep& step) override;
  // Ends and reports the current scan or idle cycles. Their continuation is reported separately.
  void End();
  std::size_t Scans() const { return scans_; }
  // Returns the last recorded step; before the first one, a step with all wires high.
  const PinStep& Last() const { return last_; }

 private:
  template <class... Parameters, class... Arguments>
  void Tell(void (TapListener::*what)(Parameters...), const Arguments&... arguments) {
    for (TapListener* const listener : listeners_) (listener->*what)(arguments...);
  }
  void OnEdge(const PinStep& step);
  void BeginScan(TapState state, bool continued);
  void Shift(int wires);
  void OnResetPins(int levels);
  void ResetByTms();
  void CutScan();
  void EndScan(bool updated, std::size_t end);
  void EndIdle(std::size_t end);

  std::vector<TapListener*> listeners_;
  std::size_t scans_ = 0;
  std::size_t step_ = 0;  // the number of the step to be recorded
  PinStep last_{GPIO_PIN_ALL, std::nullopt, false};
  std::optional<TapScan> scan_;  // the current scan
  long idle_cycles_ = 0;
  std::size_t idle_begin_ = 0;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PINS_TAP_DECODER_H_
