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

// Returns the `length` lowest bits of a number; zeros above the 64th.
Bits BitsOfNumber(std::uint64_t number, int length);
// Returns the lowest 64 bits as a number.
std::uint64_t NumberOfBits(const Bits& bits);

// Returns bits `first` to `end - 1`.
Bits Slice(const Bits& bits, std::size_t first, std::size_t end);

// Returns bits `first` to `end - 1` of bytes, least significant first; none if end <= first.
Bits BitsOfBytes(const std::uint8_t* bytes, int first, int end);
// Returns the first `count` bits of such bytes; zeros beyond them.
Bits BitsOfBytes(const std::string& bytes, std::size_t count);
// Stores at most `limit` bits in bytes that are zero before.
void StoreBits(const Bits& bits, int limit, std::uint8_t* bytes);

// Returns all bits in bytes, the last of them filled with zeros.
std::vector<std::uint8_t> BytesOfBits(const Bits& bits);

// Returns bytes that are least significant first as one number: "0x" and two digits for each.
std::string ByteText(const std::uint8_t* bytes, std::size_t count);
std::string ByteText(std::string_view bytes);
// Returns bits as such a number, the last of them first.
std::string BitText(const Bits& bits);
// Returns the bytes of a register as a script lists them, such as "0x01,0x02"; "0x00" for no bits.
std::string ByteList(const Bits& bits);
std::string ByteList(std::string_view bytes);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_TARGET_BITS_H_
