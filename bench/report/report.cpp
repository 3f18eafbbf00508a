// Writes README.md and ratios.svg from what the benchmarks have recorded.
//
//   bench_report FOLDER MACHINE [TITLE RESULTS]...
//
// MACHINE has a name and a value a line, with a tab between; each RESULTS is a file that the benchmarks made.
// FOLDER is there already.
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "bench/report/page.h"
#include "bench/report/picture.h"

namespace {

namespace fs = std::filesystem;
namespace report = korvex::bench::report;

constexpr const char* pictureName = "ratios.svg";

template <class Write>
void writeFile(const fs::path& path, const Write& write) {
    std::ofstream file(path);
    write(file);
    if (!file.flush()) throw std::runtime_error(path.string() + " cannot be written");
}

void writeReport(const fs::path& folder, const fs::path& machine, const std::vector<std::string>& words) {
    const report::Description description = report::readDescription(machine);
    std::vector<report::Place> places;
    for (std::size_t i = 0; i + 1 < words.size(); i += 2)
        places.push_back(report::readPlace(words[i], words[i + 1]));
    writeFile(folder / "README.md",
              [&](std::ostream& page) { report::writePage(page, description, places, pictureName); });
    writeFile(folder / pictureName, [&](std::ostream& picture) { report::writePicture(picture, places); });
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc < 3 || argc % 2 == 0) {
        std::cerr << "usage: bench_report FOLDER MACHINE [TITLE RESULTS]...\n";
        return EXIT_FAILURE;
    }
    try {
        writeReport(argv[1], argv[2], {argv + 3, argv + argc});
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::cerr << "bench_report: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
