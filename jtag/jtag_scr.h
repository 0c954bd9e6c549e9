// The list of operations of a JTAG script.
#ifndef ICESCRIPT_JTAG_JTAG_SCR_H_
#define ICESCRIPT_JTAG_JTAG_SCR_H_

#include <cstdint>

#include "base/ini_file.h"
#include "entry/icescript.h"

namespace icescript {

// Values of JtagOperatorData::operatorType.
constexpr std::int32_t JTAG_OP_SCAN = 0;
constexpr std::int32_t JTAG_OP_RESET = 1;
constexpr std::int32_t JTAG_OP_CDI_2WIRE = 2;
constexpr std::int32_t JTAG_OP_CDI_JTAG5 = 3;

// One operation: a node of the list. Only a scan uses the fields before operatorType. Byte 0 of an
// array is the first byte listed in the script, which is the least significant. When a scan runs
// over the 2-wire interface, its lengths grow by 8.
struct JtagOperatorData {
  std::int32_t irBitLength;  // at most 8 * JTAG_IR_MAX_BYTES after parsing; may be negative
  std::uint8_t irData[JTAG_IR_MAX_BYTES];
  std::int32_t drBitLength;  // at most 8 * JTAG_DR_MAX_BYTES after parsing; may be negative
  std::uint8_t drData[JTAG_DR_MAX_BYTES];
  std::int32_t readFlag;      // 1 read, 0 write
  std::int32_t operatorType;  // JTAG_OP_
  JtagOperatorData* next;     // null at the tail
};

// The constructor reads a JTAG script. Each section of the file becomes one operation. If ReadFile
// rejects the file, the list is empty. If a section lacks IR or DR, the list ends before it. The
// callback gets a message about these two problems. Any other wrong section is left out, and
// reported on standard output. The object owns the list. Exceptions from the callback and the
// standard library pass through without leaks.
class JtagScr {
 public:
  // A null `path` sets errorMessage. `callback` must not be null.
  JtagScr(char* path, PrintCallback callback);
  ~JtagScr();
  JtagScr(const JtagScr&) = delete;
  JtagScr& operator=(const JtagScr&) = delete;

  // Appends the operations of the script to the list. Returns 0, or -1 if anything is wrong.
  int ParseScr(char* path);

  // These return a new node, which the caller owns, or null if a value of the section is wrong.
  JtagOperatorData* ParsingControl(CIniFile& ini, int sectionIndex);  // for [CONTROL]
  JtagOperatorData* ParseJtagOperatorData(CString ir, CString dr);    // the values of IR and DR
  JtagOperatorData* ParseJtagOperatorData(int cdi);                   // the number of wires: 2 or 5
  JtagOperatorData* ParseJtagOperatorData(bool reset);                // ignores its argument

  // Does the same as CIniFile::SplitString.
  CString* SplitString(CString text, char separator, int& count);

  // Returns the first node, which this object owns, or null.
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
  // A message if the path was null; else null, even if something else is wrong.
  const char* errorMessage = nullptr;
};

}  // namespace icescript

#endif  // ICESCRIPT_JTAG_JTAG_SCR_H_
