#ifndef ICESCRIPT_FUZZ_CHECKING_HOST_H_
#define ICESCRIPT_FUZZ_CHECKING_HOST_H_

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "entry/icescript.h"

// A host that runs one script once, and aborts the process if the plug-in breaks a promise. The
// first byte of the answers is the number of the message at which the callback throws (0: none;
// 255: no callback). The result of each call is the next byte: 0x7E throws, 0x7F is INT_MAX, 0x80
// is INT_MIN, and any other byte is sign-extended. The byte of a pin read, or the bytes of a
// capture, follow the result. After the end of the answers every byte is 0.
class CheckingHost {
 public:
  explicit CheckingHost(std::string_view answers);
  void Run(char* path);

  int Config(int code, int value);
  int Reset(int kind);
  int Insert(int ir_bits, const unsigned char* ir, int dr_bits, const unsigned char* dr);
  int Execute(unsigned char* capture);
  int Gpio(int out_value, std::uint32_t* data, int oe_mask, int flags);
  void Message(const char* text);

 private:
  // The progress of a scan, whose calls are query, insert and execute in this order.
  enum class Scan { kNone, kQueried, kInserted };
  struct Thrown {
    const CheckingHost* by;
  };
  // An array passed to link_jtag_insert, and a copy of its bytes at that time.
  struct Register {
    const unsigned char* bytes;
    std::array<unsigned char, JTAG_DR_MAX_BYTES> copy;
  };

  std::uint8_t NextByte();
  int NextResult();
  [[noreturn]] void Throw();
  // Checks that another call may follow, and that the scan has made this progress.
  void Begin(Scan scan) const;
  int End(int result, bool failed);
  Register CheckRegister(int bits, const unsigned char* bytes) const;
  void CheckResult(int result, bool printed) const;

  std::string_view answers_;
  int throwing_message_;
  int calls_ = 0;
  int messages_ = 0;
  int messages_after_failure_ = 0;
  bool failed_ = false;
  bool thrown_ = false;
  bool two_wire_ = false;
  Scan scan_ = Scan::kNone;
  Register ir_{};
  Register dr_{};
  int gpio_flags_ = 0;  // flags of the last pin operation; 0 before the first
  std::map<const std::uint32_t*, std::uint32_t> gpio_data_;
  std::string last_message_;
};

#endif  // ICESCRIPT_FUZZ_CHECKING_HOST_H_
