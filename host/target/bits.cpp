#include "host/target/bits.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace icehost {

Bits BitsOfNumber(std::uint64_t number, int length) {
  Bits bits(static_cast<std::size_t>(length));
  for (std::size_t i = 0; i < bits.size() && i < 64; ++i) bits[i] = (number >> i & 1) != 0;
  return bits;
}

std::uint64_t NumberOfBits(const Bits& bits) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < bits.size() && i < 64; ++i) number |= std::uint64_t{bits[i]} << i;
  return number;
}

Bits Slice(const Bits& bits, std::size_t first, std::size_t end) {
  const auto at = [&bits](std::size_t i) { return bits.begin() + static_cast<std::ptrdiff_t>(i); };
  return {at(first), at(end)};
}

Bits BitsOfBytes(const std::uint8_t* bytes, int first, int end) {
  Bits bits;
  for (int i = first; i < end; ++i) bits.push_back((bytes[i / 8] >> i % 8 & 1) != 0);
  return bits;
}

Bits BitsOfBytes(const std::string& bytes, std::size_t count) {
  Bits bits = BitsOfBytes(reinterpret_cast<const std::uint8_t*>(bytes.data()), 0,
                          8 * static_cast<int>(bytes.size()));
  bits.resize(count);
  return bits;
}

void StoreBits(const Bits& bits, int limit, std::uint8_t* bytes) {
  const int count = std::min(static_cast<int>(bits.size()), limit);
  for (int i = 0; i < count; ++i) {
    const int bit = bits[static_cast<std::size_t>(i)] ? 1 << i % 8 : 0;
    bytes[i / 8] = static_cast<std::uint8_t>(bytes[i / 8] | bit);
  }
}

std::vector<std::uint8_t> BytesOfBits(const Bits& bits) {
  std::vector<std::uint8_t> bytes((bits.size() + 7) / 8);
  StoreBits(bits, static_cast<int>(bits.size()), bytes.data());
  return bytes;
}

std::string ByteText(const std::uint8_t* bytes, std::size_t count) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text = "0x";
  text.reserve(text.size() + 2 * count);
  for (std::size_t i = count; i-- > 0;) {
    text += kDigits[bytes[i] >> 4U];
    text += kDigits[bytes[i] & 0xFU];
  }
  return text;
}

std::string ByteText(std::string_view bytes) {
  return ByteText(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

std::string BitText(const Bits& bits) {
  const std::vector<std::uint8_t> bytes = BytesOfBits(bits);
  return ByteText(bytes.data(), bytes.size());
}

std::string ByteList(const Bits& bits) {
  std::vector<std::uint8_t> bytes = BytesOfBits(bits);
  if (bytes.empty()) bytes.push_back(0);
  return ByteList(std::string(bytes.begin(), bytes.end()));
}

std::string ByteList(std::string_view bytes) {
  std::string list;
  for (const char byte : bytes) {
    list += fmt::format("{}0x{:02x}", list.empty() ? "" : ",", static_cast<unsigned char>(byte));
  }
  return list;
}

}  // namespace icehost
