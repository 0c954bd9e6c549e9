// Knows the script that is being run.
#ifndef ICESCRIPT_HOST_EVENTS_CALL_GUIDE_H_
#define ICESCRIPT_HOST_EVENTS_CALL_GUIDE_H_

#include <cstdint>
#include <vector>

#include "host/events/events.h"

namespace icehost {

// Tells where each call comes from, and judges what it read.
class CallGuide {
 public:
  virtual ~CallGuide() = default;

  // The next operation of a JTAG script begins.
  virtual CallSource NextOperation() = 0;
  // A pin operation begins, whose own data word this is.
  virtual CallSource NextPinOperation(const std::uint32_t& data) = 0;

  // What the operation read, against what the script expects: appends the comparisons, and answers
  // whether the call succeeds all the same. A length of 0: the probe does not tell the captured IR.
  virtual bool CompareScan(const std::uint8_t* ir, int ir_bits, const std::uint8_t* dr, int dr_bits,
                           std::vector<Comparison>& comparisons) = 0;
  virtual bool ComparePins(std::uint32_t levels, std::vector<Comparison>& comparisons) = 0;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_EVENTS_CALL_GUIDE_H_
