// The function by which the fuzzing engine hands inputs over.
#include <cstddef>
#include <cstdint>

#include "fuzz/support/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    korvex::fuzz::examine({reinterpret_cast<const char*>(bytes), count});
    return 0;
}
