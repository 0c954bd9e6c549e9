// Reads the values of options. The functions throw std::invalid_argument, which says what is wrong.
#ifndef ICESCRIPT_HOST_OPTIONS_OPTION_VALUES_H_
#define ICESCRIPT_HOST_OPTIONS_OPTION_VALUES_H_

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "host/probe/sim_port.h"
#include "host/system/endpoint.h"

namespace icehost {

// Reads "tcp:PORT" (on the loopback address), "tcp:ADDRESS:PORT" or "unix:PATH".
Endpoint ParseServeEndpoint(const std::string& text);
// Reads "jtag5", "2wire" or "cjtag2", and returns its CDI_ANSWER_ value.
int ParseWireMode(const std::string& text);
// Reads a number of seconds, more than 0 and up to 86400 (a day).
std::chrono::milliseconds ParseSeconds(const std::string& text);
// Reads a number of TCK cycles per second, more than 0.
double ParseHertz(const std::string& text);
// Reads a number of rounds; 0 means endless rounds.
long ParseRounds(const std::string& text);
// Reads a number of mebibytes, and returns it in bytes.
std::size_t ParseMebibytes(const std::string& text);
// Reads a hexadecimal number, with or without "0x", whose bit 0 must be 1 (IEEE 1149.1).
std::uint32_t ParseIdcode(const std::string& text);
// Reads a hexadecimal number of up to 32 bits.
std::uint64_t ParseInstruction(const std::string& text);
// Reads "IR:BITS[=HEX]", and adds this register to `target`. IR and HEX, the instruction and the
// reset value, are hexadecimal.
void ParseRegister(const std::string& text, TargetOptions& target);

// Reads "L,L,...", the IR lengths of a chain in bits, each from 2 to 256.
std::vector<int> ParseChain(const std::string& text);
// Reads the number of a TAP, counted from 1, and returns its index.
std::size_t ParseTap(const std::string& text);

// Throws if the instruction does not fit an IR of `ir_length` bits.
void RefuseUnfitInstruction(std::uint64_t instruction, int ir_length);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_OPTIONS_OPTION_VALUES_H_
