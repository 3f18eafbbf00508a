// `mkdir` and `rmdir` against the system's own programs, in turns, medians; and how the time of a removal
// grows with the tree.
//
//   bench_folder_commands FOLDER [ROUNDS]      default: 7 rounds
//
// Everything is made below FOLDER (a tmpfs, or a file system with a journal) and removed again. Our commands
// run in this process, their peers as processes of their own; a chain of folders is made many times over in
// one such process, so that it is not its start that is measured. Goal: a removal, which visits the items in
// their order, takes at most 1.5 times as long as `rm -rf`.
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

extern "C" void makeDir(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);
extern "C" void removeDir(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);

namespace {

namespace fs = std::filesystem;
using korvex::bench::median;
using korvex::bench::secondsFor;

constexpr double removalGoal = 1.5;
constexpr std::size_t filesInFolder = 100;
constexpr int chains = 50;
constexpr int chainLength = 100;

using Entry = void (*)(int, kxArray*[], int, const kxArray*[]);

/// Calls a command and asks for its status, so that a failure is one here.
void command(Entry entry, const std::vector<std::string>& words) {
    std::vector<matrix::ArrayOwner> arguments;
    std::vector<const kxArray*> prhs;
    for (const std::string& word : words) {
        arguments.emplace_back(kxCreateString(word.c_str()));
        prhs.push_back(arguments.back().get());
    }
    prhs.push_back(nullptr);
    kxArray* plhs[1] = {nullptr};
    entry(1, plhs, static_cast<int>(words.size()), prhs.data());
    const matrix::ArrayOwner status(plhs[0]);
    if (kxGetScalar(status.get()) != 1) throw std::runtime_error("a command failed on " + words.front());
}

void system(const std::string& line) {
    if (std::system(line.c_str()) != 0) throw std::runtime_error(line + " failed");
}

/// One folder for each hundred files.
void makeTree(const fs::path& tree, std::size_t files) {
    const std::string content(512, 'x');
    for (std::size_t file = 0; file < files; ++file) {
        const fs::path folder = tree / ("folder" + std::to_string(file / filesInFolder));
        if (file % filesInFolder == 0) fs::create_directories(folder);
        std::ofstream(folder / ("file" + std::to_string(file % filesInFolder) + ".dat")) << content;
    }
}

std::string chainBelow(const fs::path& folder, int chain) {
    fs::path path = folder / ("chain" + std::to_string(chain));
    for (int link = 1; link < chainLength; ++link)
        path /= "link" + std::to_string(link);
    return path.string();
}

/// Two ways in turns, each after the same preparation, which is not timed.
korvex::bench::Medians inTurns(int rounds, const std::function<void()>& prepare,
                               const std::function<void()>& ours, const std::function<void()>& peer) {
    std::vector<double> oursSeconds;
    std::vector<double> peerSeconds;
    for (int round = -1; round < rounds; ++round) {
        prepare();
        const double oursTime = secondsFor(ours);
        prepare();
        const double peerTime = secondsFor(peer);
        const bool isWarmUp = round < 0;
        if (isWarmUp) continue;
        oursSeconds.push_back(oursTime);
        peerSeconds.push_back(peerTime);
    }
    return {median(oursSeconds), median(peerSeconds)};
}

void print(const korvex::bench::Contest& contest) {
    korvex::bench::record(contest);
    const std::string name =
        std::string(contest.command) + ": " + contest.name + ", peer " + std::string(contest.peer);
    std::cout << std::left << std::setw(44) << name << std::right << std::fixed << std::setprecision(3)
              << " ours " << contest.ours << " s, peer " << contest.peers << " s, ours / peer "
              << std::setprecision(2) << contest.ours / contest.peers << std::endl;
}

korvex::bench::Medians removal(const fs::path& tree, std::size_t files, int rounds) {
    return inTurns(
        rounds, [&] { makeTree(tree, files); },
        [&] {
            command(removeDir, {tree.string(), "s"});
        },
        [&] { system("rm -rf '" + tree.string() + "'"); });
}

korvex::bench::Medians creation(const fs::path& folder, int rounds) {
    std::string allChains;
    for (int chain = 0; chain < chains; ++chain)
        allChains += " '" + chainBelow(folder, chain) + "'";
    return inTurns(
        rounds,
        [&] {
            fs::remove_all(folder);
            fs::create_directories(folder);
        },
        [&] {
            for (int chain = 0; chain < chains; ++chain)
                command(makeDir, {chainBelow(folder, chain)});
        },
        [&] { system("mkdir -p" + allChains); });
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc < 2) {
        std::cerr << "usage: bench_folder_commands FOLDER [ROUNDS]\n";
        return EXIT_FAILURE;
    }
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 7;
    const fs::path scratch = fs::path(argv[1]) / "korvex-bench-folder-commands";
    fs::remove_all(scratch);
    fs::create_directories(scratch);

    const korvex::bench::Medians made = creation(scratch / "chains", rounds);
    print({"mkdir", "50 chains of 100", "mkdir -p", made.ours, made.peer});
    bool isGoalMet = true;
    for (const std::size_t files : {10'000U, 50'000U, 250'000U}) {
        const korvex::bench::Medians seconds = removal(scratch / "tree", files, rounds);
        print({"rmdir", "'s', " + std::to_string(files) + " files", "rm -rf", seconds.ours, seconds.peer,
               removalGoal});
        std::cout << "  a file: " << std::setprecision(2) << seconds.ours / static_cast<double>(files) * 1e6
                  << " us\n";
        isGoalMet = isGoalMet && seconds.ours <= removalGoal * seconds.peer;
    }
    fs::remove_all(scratch);
    std::cout << "goal of rmdir, at most " << removalGoal << " times: " << (isGoalMet ? "met" : "missed")
              << '\n';
    return isGoalMet ? EXIT_SUCCESS : EXIT_FAILURE;
}
