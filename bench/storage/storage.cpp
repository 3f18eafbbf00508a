// Operations of the local storage against their peers of the system, in turns, medians, ratios.
//
//   bench_storage FOLDER [ROUNDS] [DATA SET ...]      default: 7, small mixed flat big sparse
//
// Everything is made below FOLDER (a tmpfs, or a file system with a journal) and removed again. Peers run as
// processes of their own; ours runs in this one. A ratio is peer's time / our time: above 1 is faster.
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iomanip>
#include <iostream>
#include <string>
#include <vector>

#include "bench/storage/data_sets.h"
#include "bench/support/interleaved.h"
#include "bench/support/results.h"
#include "platform/path_management.h"
#include "platform/storage_vfs.h"
#include "runtime/storage/providers/local/tree_listing.h"

namespace {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
using korvex::bench::median;
using korvex::bench::secondsFor;

constexpr int standardRounds = 7;

vfs::Folder folderAt(const fs::path& path) {
    return {Velquist::PathManagement::GetIRIFromString(path.u16string()),
            Velquist::KorvexStorageSystem::GetStorageSystemReference()};
}

vfs::File fileAt(const fs::path& path) {
    return {Velquist::PathManagement::GetIRIFromString(path.u16string()),
            Velquist::KorvexStorageSystem::GetStorageSystemReference()};
}

void run(const std::string& command) {
    if (std::system(command.c_str()) != 0) throw std::runtime_error(command + " failed");
}

/// One comparison: what is timed, and what puts everything back to the start without being timed.
struct Contest {
    std::string name;
    const char* peerName;
    std::function<void()> ours;
    std::function<void()> peer;
    std::function<void()> prepare;
    std::function<void()> cleanUp;
};

void hold(int rounds, const Contest& contest) {
    std::vector<double> ours;
    std::vector<double> peer;
    for (int round = -1; round < rounds; ++round) {
        for (const bool isOurs : {true, false}) {
            contest.prepare();
            const double seconds = secondsFor(isOurs ? contest.ours : contest.peer);
            contest.cleanUp();
            if (round >= 0) (isOurs ? ours : peer).push_back(seconds);
        }
    }
    korvex::bench::record(
        korvex::bench::Contest{"storage", contest.name, contest.peerName, median(ours), median(peer)});
    const std::string name = contest.name + ", peer " + contest.peerName;
    std::cout << std::left << std::setw(38) << name << std::right << std::fixed << std::setprecision(3)
              << " ours " << median(ours) << " s, peer " << median(peer) << " s, ratio "
              << std::setprecision(2) << median(peer) / median(ours) << std::endl;
}

void nothing() {}

void contestsOfTrees(int rounds, const std::string& set, const fs::path& source, const fs::path& copy) {
    const auto remove = [copy] { run("rm -rf '" + copy.string() + "'"); };
    const auto ours = [=] { folderAt(source).copyFolder(folderAt(copy), provider::ReplaceWritable); };
    const std::string from = "'" + source.string() + "'";
    const std::string to = "'" + copy.string() + "'";
    const auto makeCopy = [=] { run("cp -r " + from + " " + to); };
    hold(rounds, {set + ": copy", "cp -r", ours, makeCopy, nothing, remove});
    hold(rounds,
         {set + ": copy", "std::filesystem::copy", ours,
          [=] { fs::copy(source, copy, fs::copy_options::recursive | fs::copy_options::copy_symlinks); },
          nothing, remove});
    hold(rounds, {set + ": remove", "rm -rf", [=] { folderAt(copy).removeFolder(vfs::RemoveWithContents); },
                  remove, makeCopy, nothing});
    hold(rounds, {set + ": list", "find -printf",
                  [=] {
                      std::size_t entries = 0;
                      korvex::runtime::storage::listLocalTree(
                          folderAt(source).getLocation(),
                          [&](const auto&, auto&& found) { entries += found.size(); });
                      if (entries == 0) throw std::runtime_error("nothing listed");
                  },
                  [=] { run("find " + from + " -printf '%p %s %T@ %y\\n' > /dev/null"); }, nothing, nothing});
}

void contestsOfFiles(int rounds, const std::string& set, const fs::path& source, const fs::path& copy) {
    const auto remove = [copy] { fs::remove(copy); };
    hold(rounds,
         {set + ": copy", "cp", [=] { fileAt(source).copyFile(fileAt(copy), provider::ReplaceWritable); },
          [=] { run("cp '" + source.string() + "' '" + copy.string() + "'"); }, nothing, remove});
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc < 2) {
        std::cerr << "usage: bench_storage FOLDER [ROUNDS] [DATA SET ...]\n";
        return EXIT_FAILURE;
    }
    std::vector<std::string> sets(argv + 2, argv + argc);
    const int rounds = korvex::bench::takeRounds(sets, standardRounds);
    if (sets.empty()) sets = {"small", "mixed", "flat", "big", "sparse"};
    const fs::path scratch = fs::path(argv[1]) / "korvex-bench-storage";
    fs::remove_all(scratch);
    for (const std::string& set : sets) {
        fs::create_directories(scratch);
        korvex::bench::makeDataSet(set, scratch / set);
        const bool isOneFile = set == "big" || set == "sparse";
        if (isOneFile) {
            contestsOfFiles(rounds, set, scratch / set / (set + ".dat"), scratch / "copy.dat");
        } else {
            contestsOfTrees(rounds, set, scratch / set, scratch / "copy");
        }
        fs::remove_all(scratch);
    }
    return EXIT_SUCCESS;
}
