// The values of options: the forms that they have, and which of them do not go together. All
// functions throw std::invalid_argument that says what is expected or what is wrong.
#ifndef ICESCRIPT_HOST_OPTIONS_OPTION_VALUES_H_
#define ICESCRIPT_HOST_OPTIONS_OPTION_VALUES_H_

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "host/probe/sim_port.h"
#include "host/system/endpoint.h"

namespace icehost {

// "tcp:PORT" on the loopback address, "tcp:ADDRESS:PORT" or "unix:PATH".
Endpoint ParseServeEndpoint(const std::string& text);
// "jtag5", "2wire" or "cjtag2", as a CDI_ANSWER_.
int ParseWireMode(const std::string& text);
// More than 0 and up to a day.
std::chrono::milliseconds ParseSeconds(const std::string& text);
// A number of TCK cycles in a second, more than 0.
double ParseHertz(const std::string& text);
// A number of rounds; 0: without end.
long ParseRounds(const std::string& text);
// A number of mebibytes, as bytes.
std::size_t ParseMebibytes(const std::string& text);
// Hexadecimal, with or without "0x". Bit 0 of an IDCODE is 1 (IEEE 1149.1).
std::uint32_t ParseIdcode(const std::string& text);
// Hexadecimal, of 32 bits.
std::uint64_t ParseInstruction(const std::string& text);
// "IR:BITS[=HEX]", the instruction IR in hexadecimal: adds a register to the target.
void ParseRegister(const std::string& text, TargetOptions& target);

// "L,L,...": the IR lengths of a chain, each from 2 to 256.
std::vector<int> ParseChain(const std::string& text);
// The number of a TAP, from 1, as its index.
std::size_t ParseTap(const std::string& text);

// Throws where the instruction is longer than the IR.
void RefuseUnfitInstruction(std::uint64_t instruction, int ir_length);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_OPTIONS_OPTION_VALUES_H_
