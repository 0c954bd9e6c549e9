// A host for fuzzing: it answers as the input says, and holds the plug-in to the interface header.
#ifndef ICESCRIPT_FUZZ_CHECKING_HOST_H_
#define ICESCRIPT_FUZZ_CHECKING_HOST_H_

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "entry/icescript.h"

// Runs one script once and ends the process where the plug-in breaks a promise.
//
// The answers: the first byte is the number of the message that throws (0: none; 255: there is no
// callback), each byte after it the result of one call, sign-extended; 0x7E throws instead. The
// data of a pin read follow its result, the captured bytes theirs. 0 where the answers end.
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
  // Where a scan stands: query, insert and execute come in this order and belong together.
  enum class Scan { kNone, kQueried, kInserted };
  // What the host throws.
  struct Thrown {
    const CheckingHost* by;
  };
  // One register of link_jtag_insert, and what it held then.
  struct Register {
    const unsigned char* bytes;
    std::array<unsigned char, JTAG_DR_MAX_BYTES> copy;
  };

  std::uint8_t NextByte();
  int NextResult();
  [[noreturn]] void Throw();
  // A call begins, with the scan at `scan`: none may follow the last one.
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
  int gpio_flags_ = 0;  // of the last operation; 0 before the first
  std::map<const std::uint32_t*, std::uint32_t> gpio_data_;
  std::string last_message_;
};

#endif  // ICESCRIPT_FUZZ_CHECKING_HOST_H_
