// The scans of an SVF file as sections of a script.
#ifndef ICESCRIPT_HOST_SVF_SCAN_SEQUENCE_H_
#define ICESCRIPT_HOST_SVF_SCAN_SEQUENCE_H_

#include <optional>
#include <string>

#include "host/svf/scan_values.h"
#include "host/svf/script_writer.h"

namespace icehost {

// Pairs IR scans with DR scans, and knows which instruction is in force. What cannot be said is
// reported.
class ScanSequence {
 public:
  // Both must outlive this object.
  ScanSequence(ScriptWriter& script, Problems& problems) : script_(script), problems_(problems) {}

  // Scans with their headers and trailers.
  void Ir(Place place, const SvfShift& shift);
  void Dr(Place place, const SvfShift& shift);
  // The TAP is reset, and with TRST held there. Whether that is harmless turns out later.
  void Reset(Place place);
  void SetTrst(bool on) { trst_ = on; }
  void End();

  bool HasScanned() const { return scanned_; }
  // Whether a section loads the instruction of another one.
  bool LoadsAgain() const { return loads_again_; }

 private:
  struct IrScan {
    int line;
    SvfShift shift;
  };

  bool BeginScan(Place place, const SvfShift& shift);
  void WriteIr();

  ScriptWriter& script_;
  Problems& problems_;
  std::optional<IrScan> new_ir_;  // that stands in no section yet
  std::optional<IrScan> ir_;      // the last one that does
  bool scanned_ = false;
  bool instruction_reset_ = false;  // and none loaded since
  bool trst_ = false;               // on
  std::optional<Place> reset_;      // the first behind the last scan
  std::optional<Place> bare_;       // the first DR scan without an instruction
  bool loads_again_ = false;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_SCAN_SEQUENCE_H_
