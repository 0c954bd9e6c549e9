// The parts of an IDCODE, after IEEE 1149.1.
#ifndef ICESCRIPT_HOST_CHAIN_IDCODE_H_
#define ICESCRIPT_HOST_CHAIN_IDCODE_H_

#include <cstdint>
#include <string>

namespace icehost {

constexpr int kIdcodeBits = 32;
// The uppermost four bits, the version, may differ from chip to chip of one design.
constexpr std::uint32_t kIdcodeWithoutVersion = 0x0FFFFFFF;

// The manufacturer's number in JEP106: a code in a bank, both counted from 1.
struct Manufacturer {
  unsigned bank;  // 1 to 16
  unsigned code;  // 1 to 126; 0 and 127 are nobody's
};
Manufacturer ManufacturerOf(std::uint32_t idcode);

// Why a register that begins with 1 is no IDCODE; empty where it may be one.
std::string WhyNoIdcode(std::uint32_t idcode);

// Such as "version 1, part 0xce51, manufacturer 0x23b (bank 5, code 0x3b: NAME)".
std::string DescribeIdcode(std::uint32_t idcode, const std::string& manufacturer);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHAIN_IDCODE_H_
