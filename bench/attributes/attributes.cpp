// `fileattrib` over whole trees against `chmod -R`, in turns, medians, ratios.
//
//   bench_attributes [FOLDER [ROUNDS]]      default: /dev/shm, 9
//
// Everything is made below FOLDER and removed again. The command runs in this process, its peer as a process
// of its own. Goal: `fileattrib('d', '+w', '', 's')` over 100,000 files takes at most 1.5 times as long as
// `chmod -R u+w d`, where every file changes and where none does.
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

extern "C" void fileAttrib(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);

namespace {

namespace fs = std::filesystem;
using korvex::bench::median;
using korvex::bench::secondsFor;

constexpr double goal = 1.5;
constexpr std::size_t files = 100'000;

/// Asks for the status, so that a failure is one here.
void changeTree(const fs::path& tree, const char* mode) {
    std::vector<matrix::ArrayOwner> arguments;
    std::vector<const kxArray*> prhs;
    for (const std::string& word : {tree.string(), std::string(mode), std::string(), std::string("s")}) {
        arguments.emplace_back(kxCreateString(word.c_str()));
        prhs.push_back(arguments.back().get());
    }
    prhs.push_back(nullptr);
    kxArray* plhs[1] = {nullptr};
    fileAttrib(1, plhs, static_cast<int>(arguments.size()), prhs.data());
    const matrix::ArrayOwner status(plhs[0]);
    if (kxGetScalar(status.get()) != 1) throw std::runtime_error("fileattrib failed");
}

void system(const std::string& line) {
    if (std::system(line.c_str()) != 0) throw std::runtime_error(line + " failed");
}

void makeTree(const fs::path& tree, std::size_t filesInFolder) {
    for (std::size_t file = 0; file < files; ++file) {
        const fs::path folder = tree / ("folder" + std::to_string(file / filesInFolder));
        if (file % filesInFolder == 0) fs::create_directories(folder);
        std::ofstream(folder / ("file" + std::to_string(file % filesInFolder) + ".dat"));
    }
}

using Step = std::function<void()>;

/// Two ways in turns, each after the same preparation, which is not timed; the first turn warms up.
korvex::bench::Medians inTurns(int rounds, const Step& prepare, const Step& ours, const Step& peer) {
    std::vector<double> oursSeconds;
    std::vector<double> peerSeconds;
    for (int round = -1; round < rounds; ++round) {
        prepare();
        const double oursTime = secondsFor(ours);
        prepare();
        const double peerTime = secondsFor(peer);
        if (round < 0) continue;
        oursSeconds.push_back(oursTime);
        peerSeconds.push_back(peerTime);
    }
    return {median(oursSeconds), median(peerSeconds)};
}

bool report(const std::string& contest, const korvex::bench::Medians& seconds) {
    korvex::bench::record(
        korvex::bench::Contest{"fileattrib", contest, "chmod -R", seconds.ours, seconds.peer, goal});
    const double ratio = seconds.ours / seconds.peer;
    std::cout << std::left << std::setw(58) << contest << std::fixed << std::setprecision(3) << " ours "
              << seconds.ours << " s, peer " << seconds.peer << " s, ratio " << std::setprecision(2) << ratio
              << " (goal: at most " << goal << ")" << std::endl;
    return ratio <= goal;
}

bool contest(const fs::path& tree, std::size_t filesInFolder, int rounds) {
    makeTree(tree, filesInFolder);
    const std::string name = std::to_string(filesInFolder) + " files a folder";
    const std::string chmod = "exec chmod -R u+w '" + tree.string() + "'";
    const std::string protect = "exec chmod -R u-w '" + tree.string() + "'";
    const Step ours = [&] { changeTree(tree, "+w"); };
    const Step peer = [&] { system(chmod); };
    const bool everyOne =
        report("+w, every file changes, " + name, inTurns(
                                                      rounds, [&] { system(protect); }, ours, peer));
    const bool none = report("+w, no file changes, " + name, inTurns(
                                                                 rounds, [] {}, ours, peer));
    system(chmod);
    fs::remove_all(tree);
    return everyOne && none;
}

}  // namespace

int main(int argc, char* argv[]) {
    const fs::path parent = argc > 1 ? argv[1] : "/dev/shm";
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 9;
    const fs::path scratch = parent / "korvex-bench-attributes";
    fs::remove_all(scratch);
    fs::create_directories(scratch);
    bool isReached = true;
    for (const std::size_t filesInFolder : {std::size_t{100}, std::size_t{10'000}, files})
        isReached = contest(scratch / "tree", filesInFolder, rounds) && isReached;
    fs::remove_all(scratch);
    return isReached ? EXIT_SUCCESS : EXIT_FAILURE;
}
