// How much memory the process has occupied, from the status that Linux keeps of it.
#include "bench/listing/peak_memory.h"

#include <fstream>
#include <stdexcept>
#include <string>

namespace korvex::bench {

MemoryUse memoryUse() {
    constexpr std::size_t kibibyte = 1024;
    MemoryUse use{0, 0};
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        std::size_t kibibytes = 0;
        if (word == "VmRSS:" && status >> kibibytes) use.now = kibibytes * kibibyte;
        if (word == "VmHWM:" && status >> kibibytes) use.peak = kibibytes * kibibyte;
    }
    if (use.now == 0 || use.peak == 0) throw std::runtime_error("the memory of the process is not to be had");
    return use;
}

}  // namespace korvex::bench
