#include "jtag/jtag_scr.h"

#include <cstdio>
#include <memory>
#include <string_view>
#include <utility>

#include "base/field_cursor.h"
#include "base/number.h"
#include "base/text.h"

namespace icescript {
namespace {

// StoreBytes works for both arrays of a record because they have the same size.
static_assert(JTAG_IR_MAX_BYTES == JTAG_DR_MAX_BYTES);
constexpr int kMaxBytes = JTAG_DR_MAX_BYTES;

// Returns the next field without the spaces around it.
std::string_view NextField(FieldCursor& fields) {
  return TrimRight(TrimLeft(fields.Next(), ' '), ' ');
}

// Returns the low 8 bits of a hexadecimal number, which may begin with "0x" or "0X".
std::uint8_t ParseByte(std::string_view text) {
  if (text.size() >= 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    text.remove_prefix(2);
  }
  return static_cast<std::uint8_t>(ParseNumber(text, 16));
}

// Stores the listed bytes, but at most `bitLength` of them: the limit is deliberately the number of
// bits, not of bytes. Returns false if these bytes or `bitLength` bits do not fit into the array.
bool StoreBytes(FieldCursor fields, int bitLength, std::uint8_t* data) {
  if (bitLength > 8 * kMaxBytes) return false;
  for (int stored = 0; stored < bitLength && fields.HasNext(); ++stored) {
    if (stored == kMaxBytes) return false;
    data[stored] = ParseByte(NextField(fields));
  }
  return true;
}

}  // namespace

// The delegated constructor completes the object before parsing starts, so that the destructor
// frees the list if the callback or an allocation throws.
JtagScr::JtagScr(char* path, PrintCallback callback) : JtagScr(callback) {
  ParseScr(path);
}

JtagScr::~JtagScr() {
  while (firstOperator != nullptr) {
    JtagOperatorData* const next = firstOperator->next;
    delete firstOperator;
    firstOperator = next;
  }
}

int JtagScr::ParseScr(char* path) {
  if (path == nullptr) {
    errorMessage = "No scr file specified.\n";
    return -1;
  }
  CIniFile ini(path);
  if (!ini.ReadFile()) {
    printCallback(ini.error_msg);
    return -1;
  }
  int status = 0;
  const int sections = ini.GetNumKeys();
  const int control = ini.FindKey("CONTROL");  // at most one, because names are unique
  for (int i = 0; i < sections; ++i) {
    JtagOperatorData* record = nullptr;
    if (i == control) {
      record = ParsingControl(ini, i);
    } else {
      CString ir = ini.GetValue(i, "IR");
      CString dr = ir != "" ? ini.GetValue(i, "DR") : CString();
      if (dr == "") {
        // If the value exists but is empty, no lookup has failed here. The message is then from
        // an earlier lookup, or empty.
        printCallback(ini.error_msg);
        return -1;
      }
      record = ParseJtagOperatorData(std::move(ir), std::move(dr));
    }
    if (record != nullptr) {
      Append(record);
    } else {
      // Flushing keeps the line in order with the host's own output if standard output is a file.
      std::printf("%s syntax error\n", ini.GetKeyName(i).Text().c_str());
      std::fflush(stdout);
      status = -1;
    }
  }
  return status;
}

void JtagScr::Append(JtagOperatorData* record) {
  (firstOperator == nullptr ? firstOperator : lastOperator->next) = record;
  lastOperator = record;
  ++operatorCount;
}

JtagOperatorData* JtagScr::ParsingControl(CIniFile& ini, int sectionIndex) {
  if (ini.GetValue(sectionIndex, "RESET") != "") return ParseJtagOperatorData(true);
  const CString cdi = ini.GetValue(sectionIndex, "CDI");
  return cdi != "" ? ParseJtagOperatorData(ParseNumber(cdi.Text(), 10)) : nullptr;
}

JtagOperatorData* JtagScr::ParseJtagOperatorData(CString ir, CString dr) {
  // IR is a length and bytes. DR is a flag, a length and bytes. Each needs at least two fields.
  FieldCursor irFields(ir.Text(), ',');
  FieldCursor drFields(dr.Text(), ',');
  const std::string_view irLength = NextField(irFields);
  const std::string_view flag = NextField(drFields);
  if (!irFields.HasNext() || !drFields.HasNext()) return nullptr;

  auto record = std::make_unique<JtagOperatorData>();
  record->readFlag = !flag.empty() && (flag[0] == 'R' || flag[0] == 'r') ? 1 : 0;
  record->irBitLength = ParseNumber(irLength, 10);
  record->drBitLength = ParseNumber(NextField(drFields), 10);
  if (!StoreBytes(irFields, record->irBitLength, record->irData) ||
      !StoreBytes(drFields, record->drBitLength, record->drData)) {
    return nullptr;
  }
  return record.release();
}

JtagOperatorData* JtagScr::ParseJtagOperatorData(int cdi) {
  if (cdi != 2 && cdi != 5) return nullptr;
  auto* const record = new JtagOperatorData{};
  record->operatorType = cdi == 2 ? JTAG_OP_CDI_2WIRE : JTAG_OP_CDI_JTAG5;
  return record;
}

JtagOperatorData* JtagScr::ParseJtagOperatorData(bool /*reset*/) {
  auto* const record = new JtagOperatorData{};
  record->operatorType = JTAG_OP_RESET;
  return record;
}

CString* JtagScr::SplitString(CString text, char separator, int& count) {
  return CIniFile::SplitString(std::move(text), separator, count);
}

}  // namespace icescript
