// What a fuzz harness defines, for the fuzzer and for replay.cpp.
#ifndef ICESCRIPT_FUZZ_HARNESS_H_
#define ICESCRIPT_FUZZ_HARNESS_H_

#include <cstddef>
#include <cstdint>

// Runs one input, and ends the process where something is wrong. Returns 0.
// NOLINTNEXTLINE(readability-identifier-naming): the fuzzer's name
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

#endif  // ICESCRIPT_FUZZ_HARNESS_H_
