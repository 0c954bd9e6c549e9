// The bits of a register or of a scan, the first to be shifted first.
#ifndef ICESCRIPT_HOST_TARGET_BITS_H_
#define ICESCRIPT_HOST_TARGET_BITS_H_

#include <cstdint>
#include <vector>

namespace icehost {

using Bits = std::vector<bool>;

// The `length` lowest bits of a number; zeros above the 64th.
Bits BitsOfNumber(std::uint64_t number, int length);
// The lowest 64 bits as a number.
std::uint64_t NumberOfBits(const Bits& bits);

// Bits `first` to `end - 1` of bytes that are least significant first; none where end <= first.
Bits BitsOfBytes(const std::uint8_t* bytes, int first, int end);
// Sets the bits of zeroed bytes, no more than `limit` of them.
void StoreBits(const Bits& bits, int limit, std::uint8_t* bytes);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_TARGET_BITS_H_
