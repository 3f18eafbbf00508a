// `copyfile` through its entry against the storage layer's own copy of the same folder, in turns, medians of
// the time that passes and of the processor time of all threads.
//
//   bench_transfer_commands [FOLDER [ROUNDS] [CONTEST ...]]      default: /dev/shm, 7, all contests
//
// Contests, with the goal for the ratio of our time to the layer's:
//   tree       a folder of 50,000 files of 4 KiB in 500 folders: at most 1.03
//   empty      '*.txt' over 100,000 empty files in one folder: at most 1.5
//   bytes      the same over files of 100 bytes: at most 1.5
// "tree:command", "empty:layer" and the like run one side once, for a profiler to look at.
//
// Everything is made below FOLDER and removed again.
#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iomanip>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench/storage/data_sets.h"
#include "bench/support/interleaved.h"
#include "bench/support/results.h"
#include "platform/kx.h"
#include "platform/path_management.h"
#include "platform/storage_vfs.h"

extern "C" void copyFile(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);

namespace {

namespace fs = std::filesystem;
namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

constexpr int standardRounds = 7;
constexpr std::size_t matches = 100'000;

void copyByCommand(const fs::path& source, const fs::path& destination) {
    const matrix::ArrayOwner from = matrix::create(source.u16string());
    const matrix::ArrayOwner to = matrix::create(destination.u16string());
    kxArray* plhs[1] = {nullptr};
    const kxArray* prhs[3] = {from.get(), to.get(), nullptr};
    copyFile(0, plhs, 2, prhs);
}

vfs::Folder folderAt(const fs::path& path) {
    return {Velquist::PathManagement::GetIRIFromString(path.u16string()),
            Velquist::KorvexStorageSystem::GetStorageSystemReference()};
}

void copyByLayer(const fs::path& source, const fs::path& destination) {
    folderAt(source).copyFolder(folderAt(destination), provider::MergeFolder);
}

void makeFlatFolder(const fs::path& folder, std::size_t bytes) {
    fs::create_directories(folder);
    const std::string content(bytes, 'x');
    for (std::size_t i = 0; i < matches; ++i) {
        std::ofstream file(folder / ("file" + std::to_string(i) + ".txt"), std::ios::binary);
        if (!(file << content << std::flush)) throw std::runtime_error("cannot write to " + folder.string());
    }
}

struct Contest {
    std::string name;
    /// The same for people who do not know the short name.
    std::string description;
    double goal;
    std::function<void(const fs::path& source)> make;
    /// What is handed to the command as the source, below the folder that is copied.
    std::string pattern;
};

const std::vector<Contest>& contests() {
    static const std::vector<Contest> all{
        {"tree", "50,000 files of 4 KiB in a tree", 1.03,
         [](const fs::path& source) { korvex::bench::makeDataSet("small", source); }, ""},
        {"empty", "'*.txt', 100,000 empty files", 1.5,
         [](const fs::path& source) { makeFlatFolder(source, 0); }, "*.txt"},
        {"bytes", "'*.txt', 100,000 files of 100 bytes", 1.5,
         [](const fs::path& source) { makeFlatFolder(source, 100); }, "*.txt"}};
    return all;
}

const Contest& contestNamed(std::string_view name) {
    for (const Contest& contest : contests()) {
        if (contest.name == name) return contest;
    }
    throw std::invalid_argument("no contest is called " + std::string(name));
}

/// In seconds.
struct Cost {
    double passed;
    double processor;
};

Cost median(const std::vector<Cost>& costs) {
    std::vector<double> passed, processor;
    for (const Cost& cost : costs) {
        passed.push_back(cost.passed);
        processor.push_back(cost.processor);
    }
    return {korvex::bench::median(passed), korvex::bench::median(processor)};
}

std::ostream& operator<<(std::ostream& stream, const Cost& cost) {
    return stream << cost.passed << " s (processor " << cost.processor << " s)";
}

/// The source tree of a contest, and a copy of it that is made by either side.
class Ground {
public:
    Ground(const fs::path& parent, const Contest& contest)
        : contest_(contest), root_(parent / "korvex-bench-transfer") {
        fs::remove_all(root_);
        contest.make(root_ / "source");
    }
    ~Ground() {
        std::error_code ignored;
        fs::remove_all(root_, ignored);
    }
    Ground(const Ground&) = delete;
    Ground& operator=(const Ground&) = delete;

    Cost costOfCommand() const {
        const fs::path source = root_ / "source";
        return costOf(
            [&] { copyByCommand(contest_.pattern.empty() ? source : source / contest_.pattern, copy()); });
    }
    Cost costOfLayer() const {
        return costOf([&] { copyByLayer(root_ / "source", copy()); });
    }

private:
    fs::path copy() const { return root_ / "copy"; }

    template <class Work>
    Cost costOf(const Work& work) const {
        const std::clock_t begin = std::clock();
        const double seconds = korvex::bench::secondsFor(work);
        const double processor = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
        if (fs::remove_all(copy()) < matches / 2) throw std::runtime_error("the copy is not complete");
        return {seconds, processor};
    }

    const Contest& contest_;
    const fs::path root_;
};

bool hold(const fs::path& parent, const Contest& contest, int rounds) {
    const Ground ground(parent, contest);
    std::vector<Cost> commands;
    std::vector<Cost> layers;
    for (int round = -1; round < rounds; ++round) {
        const Cost command = ground.costOfCommand();
        const Cost layer = ground.costOfLayer();
        if (round < 0) continue;
        commands.push_back(command);
        layers.push_back(layer);
    }
    const Cost command = median(commands);
    const Cost layer = median(layers);
    const double ratio = command.passed / layer.passed;
    korvex::bench::record(korvex::bench::Contest{"copyfile", contest.description, "the storage layer",
                                                 command.passed, layer.passed, contest.goal});
    std::cout << std::left << std::setw(6) << contest.name << std::right << std::fixed << std::setprecision(3)
              << " command " << command << ", layer " << layer << ", ratio " << ratio << " (processor "
              << command.processor / layer.processor << "; goal: at most " << contest.goal << ")"
              << std::endl;
    return ratio <= contest.goal;
}

void runOneSide(const fs::path& parent, const Contest& contest, std::string_view side) {
    const Ground ground(parent, contest);
    std::cout << contest.name << ' ' << side << ' '
              << (side == "layer" ? ground.costOfLayer() : ground.costOfCommand()) << std::endl;
}

}  // namespace

int main(int argc, char* argv[]) {
    const fs::path parent = argc > 1 ? argv[1] : "/dev/shm";
    std::vector<std::string> names(argv + std::min(argc, 2), argv + argc);
    const int rounds = korvex::bench::takeRounds(names, standardRounds);
    if (names.empty()) {
        for (const Contest& contest : contests())
            names.push_back(contest.name);
    }
    bool isGoalReached = true;
    for (const std::string& name : names) {
        const std::size_t colon = name.find(':');
        const Contest& contest = contestNamed(name.substr(0, colon));
        if (colon == std::string::npos) {
            isGoalReached = hold(parent, contest, rounds) && isGoalReached;
        } else {
            runOneSide(parent, contest, name.substr(colon + 1));
        }
    }
    return isGoalReached ? EXIT_SUCCESS : EXIT_FAILURE;
}
