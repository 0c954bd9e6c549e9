// The values of options that have a form of their own. Each throws std::invalid_argument that says
// what is expected.
#ifndef ICESCRIPT_HOST_OPTIONS_OPTION_VALUES_H_
#define ICESCRIPT_HOST_OPTIONS_OPTION_VALUES_H_

#include <chrono>
#include <cstdint>
#include <string>

#include "host/options/commands.h"

namespace icehost {

// "sim", "remote-bitbang:HOST:PORT", "remote-bitbang:unix:PATH" or "openocd:HOST:PORT[:TAP]".
ProbeChoice ParseProbe(const std::string& text);
// "tcp:PORT" on the loopback address, "tcp:ADDRESS:PORT" or "unix:PATH".
Endpoint ParseServeEndpoint(const std::string& text);
// "jtag5", "2wire" or "cjtag2", as a CDI_ANSWER_.
int ParseWireMode(const std::string& text);
// More than 0 and up to a day.
std::chrono::milliseconds ParseSeconds(const std::string& text);
// As bytes.
std::size_t ParseMebibytes(const std::string& text);
// Hexadecimal, with or without "0x". Bit 0 of an IDCODE is 1 (IEEE 1149.1).
std::uint32_t ParseIdcode(const std::string& text);
// Hexadecimal, of 32 bits.
std::uint64_t ParseInstruction(const std::string& text);
// "IR:BITS[=HEX]", the instruction IR in hexadecimal: adds a register to the target.
void ParseRegister(const std::string& text, TargetOptions& target);
// To be called once the length of the IR is known, too: no instruction may be longer.
void RefuseUnfitInstruction(std::uint64_t instruction, int ir_length);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_OPTIONS_OPTION_VALUES_H_
