#ifndef ICESCRIPT_FUZZ_HARNESS_H_
#define ICESCRIPT_FUZZ_HARNESS_H_

#include <cstddef>
#include <cstdint>

// Runs one input of a fuzz harness. Returns 0, or aborts the process if a check fails.
// NOLINTNEXTLINE(readability-identifier-naming): libFuzzer requires this name
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

#endif  // ICESCRIPT_FUZZ_HARNESS_H_
