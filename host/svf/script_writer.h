// The JTAG script that an import writes.
#ifndef ICESCRIPT_HOST_SVF_SCRIPT_WRITER_H_
#define ICESCRIPT_HOST_SVF_SCRIPT_WRITER_H_

#include <cstddef>
#include <optional>
#include <string>

#include "host/svf/statements.h"

namespace icehost {

// Pairs IR scans with DR scans, writes each pair as a section that is named after its line, and
// knows which instruction is in force. Reports what a script cannot express. Nothing in the script
// comes from the text of the file.
class ScriptWriter {
 public:
  // `problems` must outlive this object.
  explicit ScriptWriter(Problems& problems) : problems_(problems) {}

  // A scan with its headers and trailers.
  void Ir(Place place, const SvfShift& shift);
  void Dr(Place place, const SvfShift& shift);
  // The TAP is reset. Later statements show whether that is harmless.
  void Reset(Place place);
  void SetTrst(bool on) { trst_ = on; }
  // A comment of one line. It must not contain "expect", which would make it an expectation.
  void Comment(const std::string& text);
  void End();

  bool HasScanned() const { return scanned_; }
  // The size of the script so far, without its head.
  std::size_t Size() const { return text_.size(); }
  // The whole script; `name` is the name of the imported file.
  std::string Script(const std::string& name) const;

 private:
  struct IrScan {
    int line;
    SvfShift shift;
  };

  bool BeginScan(Place place, const SvfShift& shift);
  void WriteIr();
  // Shifts nothing through a register whose shift is empty.
  void Section(int line, const SvfShift& ir, const SvfShift& dr);
  void Expect(const char* value_key, const char* mask_key, const SvfShift& shift);

  Problems& problems_;
  std::string text_;
  int last_line_ = 0;             // the line of the last section
  long on_line_ = 0;              // sections of that line so far
  std::optional<IrScan> new_ir_;  // not in a section yet
  std::optional<IrScan> ir_;      // the last one in a section
  bool scanned_ = false;
  bool instruction_reset_ = false;  // and none loaded since
  bool trst_ = false;               // on
  std::optional<Place> reset_;      // the first after the last scan
  std::optional<Place> bare_;       // the first DR scan without an instruction
  bool loads_again_ = false;        // a section loads the instruction of another one
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_SCRIPT_WRITER_H_
