// Examines the inputs of a corpus one after the other, without a fuzzing engine: what was found once is
// looked for again by every compiler.
//
//   <name>_fuzzer FOLDER
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "fuzz/support/fuzz_input.h"

namespace {

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw std::runtime_error(file.string() + " cannot be read");
    return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc != 2) {
        std::cerr << "usage: " << argv[0] << " FOLDER\n";
        return EXIT_FAILURE;
    }
    std::size_t inputs = 0;
    for (const std::filesystem::directory_entry& entry : std::filesystem::directory_iterator(argv[1])) {
        // Told before, so that the last line names the input that ends the process.
        std::cout << entry.path().filename().string() << std::endl;
        korvex::fuzz::examine(contentOf(entry.path()));
        ++inputs;
    }
    korvex::fuzz::examine({});
    std::cout << inputs << " inputs" << std::endl;
    return inputs > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
