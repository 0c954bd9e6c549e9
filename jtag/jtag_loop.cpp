#include "jtag/jtag_loop.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "base/print_line.h"

namespace icescript {
namespace {

// Twice the guaranteed size, so that a host that captures the longest DR (36 bytes from byte 3 on)
// stays within the buffer.
constexpr int kCaptureStorage = 64;
static_assert(kCaptureStorage >= JTAG_CAPTURE_BYTES && kCaptureStorage >= 3 + JTAG_DR_MAX_BYTES);

// The properties of a scan that depend on the current wire interface.
struct Interface {
  const char* name;
  int dump_offset;     // index of the script's first byte in the arrays
  int capture_offset;  // index of the first DR byte in the capture buffer
};

Interface InterfaceOf(int answer) {
  switch (answer) {
    case CDI_ANSWER_2WIRE:
      return {"zeva-j2", 1, 3};
    case CDI_ANSWER_CJTAG2:
      return {"cjtag2", 0, 2};
    default:
      return {"jtag5", 0, 2};
  }
}

// For a negative length, returns 0 or less, which means that the register has no bytes.
int ByteCount(int bits) {
  return (bits + 7) / 8;
}

// Moves bytes 0 to 31 up by one to make room for the extra byte of the 2-wire interface, which is
// for registers of at most 32 bytes. Byte 32 is overwritten, and bytes 33 to 35 do not move.
void InsertByte(std::uint8_t* data, std::uint8_t byte) {
  std::memmove(data + 1, data, 32);
  data[0] = byte;
}

void RewriteFor2Wire(JtagOperatorData& scan) {
  InsertByte(scan.irData, 0x00);
  InsertByte(scan.drData, scan.readFlag != 0 ? 0x01 : 0x00);
  scan.irBitLength += 8;
  scan.drBitLength += 8;
}

void PrintByte(PrintCallback print, std::uint8_t byte) {
  const char text[] = {HexDigit(byte >> 4U), HexDigit(byte & 0xFU), '\0'};
  print(text);
}

// The part of an array that contains one register.
struct Bytes {
  const std::uint8_t* array;
  int size;   // number of bytes in the array
  int first;  // index of the register's least significant byte
  int count;  // number of bytes in the register; zero or less means none
};

// Prints one register, most significant byte first, without bytes beyond the end of the array.
void PrintDump(PrintCallback print, std::string_view reg, int bits, std::string_view direction,
               const Bytes& bytes) {
  PrintLine line;
  (line << reg).Aligned(bits) << direction;
  print(line.Text());
  const int last = std::min(bytes.first + bytes.count, bytes.size) - 1;
  for (int i = last; i >= bytes.first; --i) PrintByte(print, bytes.array[i]);
  print("\n");
}

bool RunScan(LinkHandle handle, PrintCallback print, int number, JtagOperatorData& scan) {
  const int ir_bytes = ByteCount(scan.irBitLength);
  const int dr_bytes = ByteCount(scan.drBitLength);
  std::uint8_t capture[kCaptureStorage] = {};
  const int answer = link_config(handle, LINK_CONFIG_GET_CDI, 0);
  const Interface wires = InterfaceOf(answer);
  if (answer == CDI_ANSWER_2WIRE) RewriteFor2Wire(scan);

  if (link_jtag_insert(handle, scan.irBitLength, scan.irData, scan.drBitLength, scan.drData) != 0 ||
      link_jtag_execute(handle, capture) != 0) {
    return false;
  }

  PrintLine line;
  line << "Operator No." << number << " success: IR size " << scan.irBitLength << " bits, "
       << (scan.readFlag != 0 ? "Read" : "Write") << " DR size " << scan.drBitLength
       << " bits with " << wires.name << ":\n";
  print(line.Text());
  PrintDump(print, "\tIR ", scan.irBitLength, " bits in  value 0x",
            {scan.irData, JTAG_IR_MAX_BYTES, wires.dump_offset, ir_bytes});
  PrintDump(print, "\tDR ", scan.drBitLength, " bits in  value 0x",
            {scan.drData, JTAG_DR_MAX_BYTES, wires.dump_offset, dr_bytes});
  // An unknown answer is also named "jtag5", but then only reads print the captured value.
  if (answer == CDI_ANSWER_JTAG5 || scan.readFlag != 0) {
    PrintDump(print, "\tDR ", scan.drBitLength, " bits out value 0x",
              {capture, kCaptureStorage, wires.capture_offset, dr_bytes});
  }
  return true;
}

bool Succeed(PrintCallback print, int number, const char* what) {
  PrintLine line;
  line << "Operator No." << number << " success: " << what << "\n";
  print(line.Text());
  return true;
}

bool RunOperator(LinkHandle handle, PrintCallback print, int number, JtagOperatorData& record) {
  switch (record.operatorType) {
    case JTAG_OP_CDI_2WIRE:  // unlike with 5 wires, a positive result is a success
      return link_config(handle, LINK_CONFIG_CDI_MODE, CDI_MODE_2WIRE) >= 0 &&
             Succeed(print, number, "Set CDI to SWD(2-wires)");
    case JTAG_OP_CDI_JTAG5:
      return link_config(handle, LINK_CONFIG_CDI_MODE, CDI_MODE_JTAG5) == 0 &&
             Succeed(print, number, "Set CDI JTAG(5-wires)");
    case JTAG_OP_RESET:
      return link_reset(handle, LINK_RESET_TARGET) >= 0 &&
             Succeed(print, number, "Reset the target.");
    default:
      return RunScan(handle, print, number, record);
  }
}

}  // namespace

bool RunJtagOperators(LinkHandle handle, PrintCallback print, JtagOperatorData* first) {
  int number = 0;
  for (JtagOperatorData* record = first; record != nullptr; record = record->next) {
    if (!RunOperator(handle, print, number, *record)) return false;
    ++number;
  }
  return true;
}

}  // namespace icescript
