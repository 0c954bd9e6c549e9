// The bits of a register or of a scan, the first to be shifted first.
#ifndef ICESCRIPT_HOST_TARGET_BITS_H_
#define ICESCRIPT_HOST_TARGET_BITS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace icehost {

using Bits = std::vector<bool>;

// The `length` lowest bits of a number; zeros above the 64th.
Bits BitsOfNumber(std::uint64_t number, int length);
// The lowest 64 bits as a number.
std::uint64_t NumberOfBits(const Bits& bits);

// Bits `first` to `end - 1` of bytes that are least significant first; none where end <= first.
Bits BitsOfBytes(const std::uint8_t* bytes, int first, int end);
// The first `count` bits of such bytes; zeros beyond them.
Bits BitsOfBytes(const std::string& bytes, std::size_t count);
// Sets the bits of zeroed bytes, no more than `limit` of them.
void StoreBits(const Bits& bits, int limit, std::uint8_t* bytes);

// The bytes of a register, least significant first, as text: "0x" and two digits for each byte, the
// most significant first.
std::string ByteText(const std::uint8_t* bytes, std::size_t count);
std::string ByteText(std::string_view bytes);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_TARGET_BITS_H_
