// `isfile` on a cell array of paths against a plain loop of `stat` over the same paths, prepared as bytes.
// Half of the files exist, spread over 1,000 folders.
//
//   bench_existence [FOLDER [PATHS [ROUNDS]]]      default: /dev/shm, 1000000, 9
//
// The scratch tree is made below FOLDER and removed again. Goal: at most 1.3 times the loop.
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "bench/support/interleaved.h"
#include "bench/support/results.h"
#include "platform/kx.h"

extern "C" void bnIsFileFcn(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);

namespace {

constexpr std::size_t folders = 1000;
constexpr double goal = 1.3;

/// The tree and the paths, half of which are there.
class ExistenceTree {
public:
    ExistenceTree(const std::filesystem::path& parent, std::size_t count)
        : root_(parent / "korvex-bench-existence") {
        std::filesystem::remove_all(root_);
        for (std::size_t folder = 0; folder < folders; ++folder) {
            std::filesystem::create_directories(root_ / folderName(folder));
        }
        for (std::size_t i = 0; i < count; ++i) {
            paths.push_back(
                (root_ / folderName(i % folders) / ("file" + std::to_string(i / folders))).string());
            const bool isThere = i / folders % 2 == 0;
            if (isThere) std::ofstream{paths.back()};
        }
    }
    ~ExistenceTree() { std::filesystem::remove_all(root_); }
    ExistenceTree(const ExistenceTree&) = delete;
    ExistenceTree& operator=(const ExistenceTree&) = delete;

    std::vector<std::string> paths;

private:
    static std::string folderName(std::size_t number) { return "folder" + std::to_string(number); }

    std::filesystem::path root_;
};

matrix::ArrayOwner cellOf(const std::vector<std::string>& paths) {
    matrix::ArrayOwner cell(kxCreateCellMatrix(paths.size(), 1));
    for (std::size_t i = 0; i < paths.size(); ++i) {
        kxSetCell(cell.get(), i, kxCreateString(paths[i].c_str()));
    }
    return cell;
}

std::size_t countByCommand(const kxArray* cell) {
    kxArray* plhs[1] = {nullptr};
    const kxArray* prhs[2] = {cell, nullptr};
    bnIsFileFcn(1, plhs, 1, prhs);
    const matrix::ArrayOwner answers(plhs[0]);
    const std::span<const kxLogical> elements = kxGetLogicals(static_cast<const kxArray*>(answers.get()));
    return static_cast<std::size_t>(std::count(elements.begin(), elements.end(), true));
}

std::size_t countByStat(const std::vector<std::string>& paths) {
    std::vector<bool> answers(paths.size());
    std::size_t found = 0;
    for (std::size_t i = 0; i < paths.size(); ++i) {
        struct stat status;
        answers[i] = ::stat(paths[i].c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
        found += answers[i];
    }
    return found;
}

}  // namespace

int main(int argc, char* argv[]) {
    const std::filesystem::path parent = argc > 1 ? argv[1] : "/dev/shm";
    const std::size_t count = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1'000'000;
    const int rounds = argc > 3 ? std::atoi(argv[3]) : 9;

    const ExistenceTree tree(parent, count);
    const matrix::ArrayOwner cell = cellOf(tree.paths);
    const std::size_t expected = countByStat(tree.paths);
    if (countByCommand(cell.get()) != expected) {
        std::cerr << "isfile and stat disagree\n";
        return EXIT_FAILURE;
    }
    const korvex::bench::Medians seconds = korvex::bench::interleaved(
        rounds, [&] { countByCommand(cell.get()); }, [&] { countByStat(tree.paths); });
    korvex::bench::record(korvex::bench::Contest{"isfile", std::to_string(count) + " paths in a cell",
                                                 "stat in a loop", seconds.ours, seconds.peer, goal});
    std::cout << "paths " << count << ", there " << expected << ", rounds " << rounds << "\nisfile    "
              << seconds.ours << " s\nstat loop " << seconds.peer << " s\nratio     "
              << seconds.ours / seconds.peer << " (goal: at most " << goal << ")\n";
    return seconds.ours <= goal * seconds.peer ? EXIT_SUCCESS : EXIT_FAILURE;
}
