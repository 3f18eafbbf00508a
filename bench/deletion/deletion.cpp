// `delete('*')` over 100,000 files in one folder against `find . -maxdepth 1 -type f -delete`, in turns,
// medians.
//
//   bench_deletion FOLDER [ROUNDS]      default: 7 rounds
//
// Everything is made below FOLDER (a tmpfs, or a file system with a journal) and removed again. The command
// runs in this process, its peer as a process of its own. Contests: files for good as they come; source
// files, whose functions are cleared; the same with a package registered, for which each file is asked. Goal
// of the first: at most 1.3 times as long.
//
//   bench_deletion FOLDER 0             runs the command once, for a profiler to look at
#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iomanip>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/support/interleaved.h"
#include "bench/support/results.h"
#include "platform/kx.h"
#include "runtime/configuration/configuration_folder.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/packages/package_registry.h"

extern "C" void bnFullDeleteFcn(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);

namespace {

namespace fs = std::filesystem;
using korvex::bench::median;
using korvex::bench::secondsFor;

constexpr std::size_t files = 100'000;
constexpr double goal = 1.3;

void makeFiles(const fs::path& folder, const std::string& extension) {
    const std::string content(100, 'x');
    for (std::size_t file = 0; file < files; ++file)
        std::ofstream(folder / ("file" + std::to_string(file) + extension)) << content;
}

void requireEmpty(const fs::path& folder) {
    if (!fs::is_empty(folder)) throw std::runtime_error("files are left in " + folder.string());
}

/// `delete('*')` in the current folder.
void deleteByCommand() {
    const matrix::ArrayOwner name(kxCreateString("*"));
    kxArray* plhs[1] = {nullptr};
    const kxArray* prhs[2] = {name.get(), nullptr};
    bnFullDeleteFcn(0, plhs, 1, prhs);
}

void deleteByPeer(const fs::path& folder) {
    const std::string line = "cd '" + folder.string() + "' && find . -maxdepth 1 -type f -delete";
    if (std::system(line.c_str()) != 0) throw std::runtime_error(line + " failed");
}

korvex::bench::Medians inTurns(const fs::path& folder, const std::string& extension, int rounds) {
    std::vector<double> ours;
    std::vector<double> peer;
    for (int round = -1; round < rounds; ++round) {
        makeFiles(folder, extension);
        const double oursSeconds = secondsFor(deleteByCommand);
        requireEmpty(folder);
        makeFiles(folder, extension);
        const double peerSeconds = secondsFor([&] { deleteByPeer(folder); });
        requireEmpty(folder);
        const bool isWarmUp = round < 0;
        if (isWarmUp) continue;
        ours.push_back(oursSeconds);
        peer.push_back(peerSeconds);
    }
    return {median(ours), median(peer)};
}

double print(const std::string& name, const korvex::bench::Medians& seconds, double goalOfThis = 0) {
    korvex::bench::record(
        korvex::bench::Contest{"delete", name, "find -delete", seconds.ours, seconds.peer, goalOfThis});
    const double ratio = seconds.ours / seconds.peer;
    std::cout << std::left << std::setw(36) << name << std::right << std::fixed << std::setprecision(3)
              << " ours " << seconds.ours << " s, peer " << seconds.peer << " s, ours / peer "
              << std::setprecision(2) << ratio << ", a file "
              << seconds.ours / static_cast<double>(files) * 1e6 << " us" << std::endl;
    return ratio;
}

::rusage usage() {
    ::rusage used{};
    ::getrusage(RUSAGE_SELF, &used);
    return used;
}

/// Of processor time, for one file.
double microseconds(const ::timeval& after, const ::timeval& before) {
    const double seconds = static_cast<double>(after.tv_sec - before.tv_sec) +
                           static_cast<double>(after.tv_usec - before.tv_usec) * 1e-6;
    return seconds / static_cast<double>(files) * 1e6;
}

bool runContests(const fs::path& scratch, const fs::path& folder, int rounds) {
    const double ratio = print("files", inTurns(folder, ".txt", rounds), goal);
    print("source files", inTurns(folder, ".k", rounds));
    fs::create_directories(scratch / "package");
    korvex::runtime::packages::registerPackage((scratch / "package").u16string(), u"Package", false);
    print("files, with a package elsewhere", inTurns(folder, ".txt", rounds));
    std::cout << "goal, at most " << goal << " times: " << (ratio <= goal ? "met" : "missed") << '\n';
    return ratio <= goal;
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc < 2) {
        std::cerr << "usage: bench_deletion FOLDER [ROUNDS]\n";
        return EXIT_FAILURE;
    }
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 7;
    const fs::path scratch = fs::path(argv[1]) / "korvex-bench-deletion";
    const fs::path folder = scratch / "files";
    fs::remove_all(scratch);
    fs::create_directories(folder);
    korvex::runtime::configuration::setConfigurationFolder((scratch / "configuration").u16string());
    korvex::runtime::dispatcher::setCurrentFolderPath(folder.u16string());

    bool isGoalMet = true;
    if (rounds > 0) {
        isGoalMet = runContests(scratch, folder, rounds);
    } else {
        makeFiles(folder, ".txt");
        const ::rusage before = usage();
        deleteByCommand();
        const ::rusage after = usage();
        std::cout << "a file: " << microseconds(after.ru_utime, before.ru_utime) << " us in user mode, "
                  << microseconds(after.ru_stime, before.ru_stime) << " us in the system\n";
    }
    fs::remove_all(scratch);
    return isGoalMet ? EXIT_SUCCESS : EXIT_FAILURE;
}
