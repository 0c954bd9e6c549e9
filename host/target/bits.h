// The bits of a register or scan, and their forms as numbers, bytes and text.
#ifndef ICESCRIPT_HOST_TARGET_BITS_H_
#define ICESCRIPT_HOST_TARGET_BITS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace icehost {

// Bits in the order in which they are shifted, the lowest first. Bit 0 of byte 0 is the first.
using Bits = std::vector<bool>;

// Returns the `length` lowest bits of a number; bits above the 64th are 0.
Bits BitsOfNumber(std::uint64_t number, int length);
// Returns the first 64 bits as a number, whose bit 0 is the first bit.
std::uint64_t NumberOfBits(const Bits& bits);

// Returns bits `first` to `end - 1`.
Bits Slice(const Bits& bits, std::size_t first, std::size_t end);

// Returns bits `first` to `end - 1` of `bytes`; none if end <= first.
Bits BitsOfBytes(const std::uint8_t* bytes, int first, int end);
// Returns the first `count` bits of `bytes`; bits beyond the bytes are 0.
Bits BitsOfBytes(const std::string& bytes, std::size_t count);
// Stores the first `limit` bits, or all if there are fewer, in `bytes`, which must contain zeros.
void StoreBits(const Bits& bits, int limit, std::uint8_t* bytes);

// Returns the bits as bytes; unused bits of the last byte are 0.
std::vector<std::uint8_t> BytesOfBits(const Bits& bits);

// Returns `bytes`, least significant first, as one number: "0x" and two digits for each byte.
std::string ByteText(const std::uint8_t* bytes, std::size_t count);
std::string ByteText(std::string_view bytes);
// Returns bits in the form of ByteText; the last bit is the most significant.
std::string BitText(const Bits& bits);
// Return bytes as a script lists them, such as "0x01,0x02". Empty Bits become "0x00".
std::string ByteList(const Bits& bits);
std::string ByteList(std::string_view bytes);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_TARGET_BITS_H_
