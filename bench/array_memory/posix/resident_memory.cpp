// Memory of the process, from the status that Linux keeps of it.
#include "bench/array_memory/resident_memory.h"

#include <fstream>
#include <stdexcept>
#include <string>

namespace korvex::bench {

std::size_t residentBytes() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        std::size_t kibibytes = 0;
        if (word == "VmRSS:" && status >> kibibytes) return kibibytes * 1024;
    }
    throw std::runtime_error("the memory of the process is not to be had");
}

}  // namespace korvex::bench
