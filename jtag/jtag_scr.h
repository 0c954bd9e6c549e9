// A JTAG script as a list of operations.
#ifndef ICESCRIPT_JTAG_JTAG_SCR_H_
#define ICESCRIPT_JTAG_JTAG_SCR_H_

#include <cstdint>

#include "base/ini_file.h"
#include "entry/icescript.h"

namespace icescript {

// JtagOperatorData::operatorType.
constexpr std::int32_t JTAG_OP_SCAN = 0;
constexpr std::int32_t JTAG_OP_RESET = 1;
constexpr std::int32_t JTAG_OP_CDI_2WIRE = 2;
constexpr std::int32_t JTAG_OP_CDI_JTAG5 = 3;

// One operation, a list node. Resets and wire settings use operatorType alone. In the arrays byte 0
// is the first byte listed in the script and the least significant. The 2-wire interface adds 8 to
// the lengths when the scan is run.
struct JtagOperatorData {
  std::int32_t irBitLength;  // as parsed at most 8 * JTAG_IR_MAX_BYTES; may be negative
  std::uint8_t irData[JTAG_IR_MAX_BYTES];
  std::int32_t drBitLength;  // as parsed at most 8 * JTAG_DR_MAX_BYTES; may be negative
  std::uint8_t drData[JTAG_DR_MAX_BYTES];
  std::int32_t readFlag;      // 1 read, 0 write
  std::int32_t operatorType;  // JTAG_OP_
  JtagOperatorData* next;     // null at the tail
};

// Reads a JTAG script when it is constructed: each section of the file becomes one operation. Told
// to the callback: a file that cannot be read, which leaves the list empty, and a section without
// IR or DR, which ends the list before it. Told on standard output: a section that is not
// understood, which is left out. Owns the list. Exceptions of the callback and of the standard
// library pass through; nothing leaks.
class JtagScr {
 public:
  // `path` may be null, which sets errorMessage; `callback` must not.
  JtagScr(char* path, PrintCallback callback);
  ~JtagScr();
  JtagScr(const JtagScr&) = delete;
  JtagScr& operator=(const JtagScr&) = delete;

  // Appends the script's operations to the list. 0, or -1 when anything was wrong.
  int ParseScr(char* path);

  // Each makes a new record, which the caller owns, or null where the section's text does not
  // describe one.
  JtagOperatorData* ParsingControl(CIniFile& ini, int sectionIndex);
  JtagOperatorData* ParseJtagOperatorData(CString ir, CString dr);
  JtagOperatorData* ParseJtagOperatorData(int cdi);
  JtagOperatorData* ParseJtagOperatorData(bool reset);

  // As CIniFile::SplitString.
  CString* SplitString(CString text, char separator, int& count);

  // First record, or null; owned by this object.
  JtagOperatorData* GetFirstJtagOperatorData() { return firstOperator; }
  JtagOperatorData* GetNextJtagOperatorData(JtagOperatorData* p) const {
    return p != nullptr ? p->next : nullptr;
  }
  int GetJtagOperatorDataCount() const { return operatorCount; }

 private:
  explicit JtagScr(PrintCallback callback) : printCallback(callback) {}
  void Append(JtagOperatorData* record);

  JtagOperatorData* firstOperator = nullptr;
  JtagOperatorData* lastOperator = nullptr;
  std::int32_t operatorCount = 0;
  PrintCallback printCallback;

 public:
  // Set when there was no path to read; null otherwise, whatever else was wrong.
  const char* errorMessage = nullptr;
};

}  // namespace icescript

#endif  // ICESCRIPT_JTAG_JTAG_SCR_H_
