// What SIR, SDR and the headers and trailers shift.
#ifndef ICESCRIPT_HOST_SVF_SCAN_VALUES_H_
#define ICESCRIPT_HOST_SVF_SCAN_VALUES_H_

#include <cstddef>
#include <optional>

#include "entry/icescript.h"
#include "host/svf/statements.h"
#include "host/target/bits.h"

namespace icehost {

// Of a register of a script.
constexpr std::size_t kMostSvfBits = std::size_t{8} * JTAG_DR_MAX_BYTES;

// All of one length, the first bit to be shifted first.
struct SvfShift {
  Bits tdi;
  Bits tdo;
  Bits mask;  // a bit that is 1 is compared

  bool Compares() const;
  // Behind the bits that are there.
  void Append(const SvfShift& more);
};

// The register of one keyword, which remembers the TDI and the MASK of its last statement for the
// next one of the same length.
class SvfRegister {
 public:
  // The statement's LENGTH [TDI (..)] [TDO (..)] [MASK (..)] [SMASK (..)]. None where that is
  // wrong, or longer than a script's register, which is reported.
  std::optional<SvfShift> Take(const SvfStatement& statement, Problems& problems);

 private:
  enum Parameter : std::size_t { kTdi, kTdo, kMask, kSmask, kParameters };
  using Values = std::optional<Bits>[kParameters];

  std::size_t length_ = 0;
  Bits tdi_;
  Bits mask_;

  static bool ReadValues(const SvfStatement& statement, std::size_t length, Values& values,
                         Problems& problems);
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_SCAN_VALUES_H_
