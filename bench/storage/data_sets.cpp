// The trees that the storage benchmarks work on.
#include "bench/storage/data_sets.h"

#include <array>
#include <fstream>
#include <random>
#include <stdexcept>
#include <vector>

namespace korvex::bench {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t mebibyte = std::size_t{1} << 20;

std::vector<char> randomBytes(std::size_t count) {
    std::mt19937_64 source(count);
    std::vector<char> bytes(count);
    for (char& byte : bytes)
        byte = static_cast<char>(source());
    return bytes;
}

void makeSmall(const fs::path& folder) {
    const std::vector<char> content = randomBytes(4096);
    for (int upper = 0; upper < 20; ++upper) {
        for (int lower = 0; lower < 25; ++lower) {
            const fs::path inner =
                folder / ("upper" + std::to_string(upper)) / ("lower" + std::to_string(lower));
            fs::create_directories(inner);
            for (int file = 0; file < 100; ++file) {
                std::ofstream(inner / ("file" + std::to_string(file) + ".dat"), std::ios::binary)
                    .write(content.data(), static_cast<std::streamsize>(content.size()));
            }
        }
    }
}

void makeMixed(const fs::path& folder) {
    for (const char* part : {"/usr/include", "/usr/share/doc"}) {
        if (!fs::exists(part)) continue;
        fs::create_directories(folder);
        fs::copy(part, folder / fs::path(part).filename(),
                 fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    }
}

void makeFlat(const fs::path& folder) {
    fs::create_directories(folder);
    for (int file = 0; file < 100'000; ++file) {
        std::ofstream{folder / ("file" + std::to_string(file))};
    }
}

void makeBig(const fs::path& folder) {
    fs::create_directories(folder);
    const std::vector<char> content = randomBytes(64 * mebibyte);
    std::ofstream file(folder / "big.dat", std::ios::binary);
    for (int piece = 0; piece < 32; ++piece) {
        file.write(content.data(), static_cast<std::streamsize>(content.size()));
    }
}

void makeSparse(const fs::path& folder) {
    fs::create_directories(folder);
    const std::vector<char> content = randomBytes(mebibyte);
    std::ofstream file(folder / "sparse.dat", std::ios::binary);
    for (std::size_t piece = 0; piece < 16; ++piece) {
        file.seekp(static_cast<std::streamoff>(piece * 256 * mebibyte));
        file.write(content.data(), static_cast<std::streamsize>(content.size()));
    }
    file.close();
    fs::resize_file(folder / "sparse.dat", 4096 * mebibyte);
}

}  // namespace

void makeDataSet(const std::string& name, const fs::path& folder) {
    struct Maker {
        const char* name;
        void (*make)(const fs::path&);
    };
    constexpr std::array<Maker, 5> makers{{{"small", makeSmall},
                                           {"mixed", makeMixed},
                                           {"flat", makeFlat},
                                           {"big", makeBig},
                                           {"sparse", makeSparse}}};
    for (const Maker& maker : makers) {
        if (name == maker.name) return maker.make(folder);
    }
    throw std::invalid_argument("no data set is called " + name);
}

}  // namespace korvex::bench
