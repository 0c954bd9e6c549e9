#include "host/options/option_values.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "host/target/chain_place.h"
#include "host/target/wires.h"

namespace icehost {
namespace {

constexpr int kLongestRegister = 4096;

bool TakePrefix(std::string& text, const std::string& prefix) {
  if (text.compare(0, prefix.size(), prefix) != 0) return false;
  text.erase(0, prefix.size());
  return true;
}

// Parses the whole text as a number from 0 to `most`, in base 10 or 16.
std::uint64_t Number(const std::string& text, int base, std::uint64_t most) {
  const bool starts_well = std::isxdigit(static_cast<unsigned char>(text[0])) != 0;
  std::size_t end = 0;
  std::uint64_t value = 0;
  try {
    if (starts_well) value = std::stoull(text, &end, base);
  } catch (const std::exception&) {
    // The text has no valid digit, or too many digits, and `end` is still 0.
  }
  if (end == 0 || end != text.size() || value > most) {
    throw std::invalid_argument(
        base == 16 ? fmt::format("\"{}\" is not a hexadecimal number up to {:#x}", text, most)
                   : fmt::format("\"{}\" is not a number from 0 to {}", text, most));
  }
  return value;
}

// Parses the whole text as a decimal number that is greater than 0 and at most `most`.
double Decimal(const std::string& text, double most, const char* expected) {
  std::istringstream stream(text);
  double value = 0;
  if (!(stream >> value) || !stream.eof() || !(value > 0 && value <= most)) {
    throw std::invalid_argument(expected);
  }
  return value;
}

// Converts hexadecimal digits, with or without 0x, to a register of `length` bits.
Bits HexBits(std::string digits, int length) {
  TakePrefix(digits, "0x");
  if (digits.empty() || digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
    throw std::invalid_argument(fmt::format("\"{}\" is not a hexadecimal number", digits));
  }
  Bits bits;
  for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit) {
    const Bits four = BitsOfNumber(Number(std::string(1, *digit), 16, 15), 4);
    bits.insert(bits.end(), four.begin(), four.end());
  }
  const auto length_bits = static_cast<std::ptrdiff_t>(length);
  bits.resize(std::max(bits.size(), static_cast<std::size_t>(length)));
  if (std::count(bits.begin() + length_bits, bits.end(), true) > 0) {
    throw std::invalid_argument(fmt::format("0x{} does not fit in {} bits", digits, length));
  }
  bits.resize(static_cast<std::size_t>(length));
  return bits;
}

}  // namespace

Endpoint ParseServeEndpoint(const std::string& text) {
  std::string rest = text;
  if (!TakePrefix(rest, "tcp:")) {
    if (text.compare(0, 5, "unix:") == 0) return ParseEndpoint(text);
    throw std::invalid_argument("expected tcp:PORT, tcp:ADDRESS:PORT or unix:PATH");
  }
  if (rest.empty()) throw std::invalid_argument("expected tcp:PORT, tcp:ADDRESS:PORT or unix:PATH");
  return ParseEndpoint(rest.find(':') == std::string::npos ? "127.0.0.1:" + rest : rest);
}

int ParseWireMode(const std::string& text) {
  const auto* const name = std::find(std::begin(kInterfaceNames), std::end(kInterfaceNames), text);
  if (name != std::end(kInterfaceNames)) {
    return static_cast<int>(name - std::begin(kInterfaceNames));
  }
  throw std::invalid_argument("expected jtag5, 2wire or cjtag2");
}

std::chrono::milliseconds ParseSeconds(const std::string& text) {
  const double seconds =
      Decimal(text, 86400, "expected a number of seconds above 0 and up to 86400");
  return std::chrono::milliseconds(std::max(static_cast<long>(seconds * 1000), 1L));
}

double ParseHertz(const std::string& text) {
  return Decimal(text, 1e12, "expected TCK cycles per second, such as 1000000 or 1e6");
}

long ParseRounds(const std::string& text) {
  constexpr std::uint64_t kMostRounds = 1000000000;
  return static_cast<long>(Number(text, 10, kMostRounds));
}

std::size_t ParseMebibytes(const std::string& text) {
  constexpr std::uint64_t kMost = 1U << 20U;
  return Number(text, 10, kMost) << 20U;
}

std::uint32_t ParseIdcode(const std::string& text) {
  const auto idcode = static_cast<std::uint32_t>(Number(text, 16, UINT32_MAX));
  if ((idcode & 1) == 0) throw std::invalid_argument("bit 0 of an IDCODE must be 1");
  return idcode;
}

std::uint64_t ParseInstruction(const std::string& text) {
  return Number(text, 16, UINT32_MAX);
}

void ParseRegister(const std::string& text, TargetOptions& target) {
  const std::size_t colon = text.find(':');
  const std::size_t equals = std::min(text.find('='), text.size());
  if (colon > equals) {
    throw std::invalid_argument("expected IR:BITS or IR:BITS=HEX");
  }
  const std::uint64_t instruction = ParseInstruction(text.substr(0, colon));
  const auto bits =
      static_cast<int>(Number(text.substr(colon + 1, equals - colon - 1), 10, kLongestRegister));
  if (bits == 0) throw std::invalid_argument("a register must have at least 1 bit");
  target.registers[instruction] =
      equals == text.size() ? BitsOfNumber(0, bits) : HexBits(text.substr(equals + 1), bits);
}

std::vector<int> ParseChain(const std::string& text) {
  constexpr int kLongestIr = 256;
  std::istringstream stream(text);
  std::vector<int> lengths;
  for (std::string length; std::getline(stream, length, ',');) {
    lengths.push_back(static_cast<int>(Number(length, 10, kLongestIr)));
    if (lengths.back() < 2) throw std::invalid_argument("an IR must have at least 2 bits");
  }
  if (lengths.empty() || text.back() == ',' || lengths.size() > kMostTaps) {
    throw std::invalid_argument("expected the IR lengths of up to 64 TAPs, such as 4,5,6");
  }
  return lengths;
}

std::size_t ParseTap(const std::string& text) {
  const std::uint64_t tap = Number(text, 10, kMostTaps);
  if (tap == 0) throw std::invalid_argument("TAP numbers start at 1");
  return tap - 1;
}

void RefuseUnfitInstruction(std::uint64_t instruction, int ir_length) {
  if (instruction >> static_cast<unsigned>(ir_length) == 0) return;
  throw std::invalid_argument(
      fmt::format("instruction {:#x} does not fit in an IR of {} bits", instruction, ir_length));
}

}  // namespace icehost
