// `dir` against the system's own listers, in turns, medians, ratios; and the memory that its result takes.
//
//   bench_listing [FOLDER [ROUNDS]]      default: /dev/shm, 11
//
// Everything is made below FOLDER and removed again. The peers run as processes of their own, the command in
// this one. Goals: the structure array of a tree in 0.8 times the time in which `find` prints name, size,
// time and kind of as many entries; the printed names of a folder of 100,000 in 0.7 times the time of `ls
// -C`; at most 900 bytes of memory an entry, also for a million of them.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "bench/listing/peak_memory.h"
#include "bench/storage/data_sets.h"
#include "bench/support/interleaved.h"
#include "bench/support/results.h"
#include "platform/kx.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/interpreter/output.h"
#include "runtime/text/encoding.h"

extern "C" void bnFullDirFcn(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);

namespace {

namespace fs = std::filesystem;

constexpr double mostOfFind = 0.8;
constexpr double mostOfLs = 0.7;
constexpr double mostBytesAnEntry = 900;
constexpr const char* memoryOption = "--memory-of";

void run(const std::string& command) {
    if (std::system(command.c_str()) != 0) throw std::runtime_error(command + " failed");
}

/// A folder that is the process's own and the environment's current one, with a data set in it.
class DataSet {
public:
    DataSet(const fs::path& parent, const std::string& name) : folder_(parent / "korvex-bench-listing") {
        fs::remove_all(folder_);
        if (name == "million") {
            makeMillion();
        } else {
            korvex::bench::makeDataSet(name, folder_);
        }
        fs::current_path(folder_);
        korvex::runtime::dispatcher::setCurrentFolderPath(folder_.u16string());
    }
    ~DataSet() {
        fs::current_path("/");
        fs::remove_all(folder_);
    }
    DataSet(const DataSet&) = delete;
    DataSet& operator=(const DataSet&) = delete;

    const fs::path& folder() const noexcept { return folder_; }

private:
    void makeMillion() const {
        for (int folder = 0; folder < 10; ++folder) {
            const fs::path inner = folder_ / ("folder" + std::to_string(folder));
            fs::create_directories(inner);
            for (int file = 0; file < 100'000; ++file)
                std::ofstream{inner / ("file" + std::to_string(file))};
        }
    }

    fs::path folder_;
};

/// The structure array of everything below the current folder.
matrix::ArrayOwner listTree() {
    const matrix::ArrayOwner pattern = matrix::create(u"**/*");
    kxArray* plhs[1] = {nullptr};
    const kxArray* prhs[2] = {pattern.get(), nullptr};
    bnFullDirFcn(1, plhs, 1, prhs);
    return matrix::ArrayOwner(plhs[0]);
}

void printCurrentFolder() {
    kxArray* plhs[1] = {nullptr};
    const kxArray* prhs[1] = {nullptr};
    bnFullDirFcn(0, plhs, 0, prhs);
}

bool report(const std::string& contest, const char* peer, const korvex::bench::Medians& seconds,
            double goal) {
    korvex::bench::record(korvex::bench::Contest{"dir", contest, peer, seconds.ours, seconds.peer, goal});
    const double ratio = seconds.ours / seconds.peer;
    std::cout << contest << ", peer " << peer << ": ours " << seconds.ours << " s, peer " << seconds.peer
              << " s, ratio " << ratio << " (goal: at most " << goal << ")" << std::endl;
    return ratio <= goal;
}

bool contestOfStructures(const fs::path& parent, const std::string& set, int rounds) {
    const DataSet data(parent, set);
    const korvex::bench::Medians seconds = korvex::bench::interleaved(
        rounds, [] { listTree(); }, [] { run("exec find . -printf '%p %s %T@ %y\\n' > /dev/null"); });
    return report(set + ", s = dir('**/*')", "find -printf", seconds, mostOfFind);
}

bool contestOfPrints(const fs::path& parent, int rounds) {
    const DataSet data(parent, "flat");
    std::ofstream sink("/dev/null", std::ios::binary);
    korvex::runtime::interpreter::setOutputReceiver([&sink](std::u16string_view text) {
        sink << korvex::runtime::text::toDisplayBytes(text) << std::flush;
    });
    const korvex::bench::Medians seconds = korvex::bench::interleaved(
        rounds, [] { printCurrentFolder(); }, [] { run("exec ls -C > /dev/null"); });
    korvex::runtime::interpreter::setOutputReceiver(nullptr);
    return report("flat, dir", "ls -C", seconds, mostOfLs);
}

/// In a process of its own, whose peak is nothing but this.
int measureMemory(const std::string& set, const fs::path& folder) {
    korvex::runtime::dispatcher::setCurrentFolderPath(folder.u16string());
    const std::size_t before = korvex::bench::memoryUse().now;
    const matrix::ArrayOwner listing = listTree();
    const std::size_t entries = kxGetNumberOfElements(listing.get());
    const double bytes =
        static_cast<double>(korvex::bench::memoryUse().peak - before) / static_cast<double>(entries);
    korvex::bench::record(
        korvex::bench::Figure{"dir", set + ", an entry at the peak", "bytes", bytes, mostBytesAnEntry});
    std::cout << set << ": " << entries << " entries, at the peak " << bytes
              << " bytes an entry (goal: at most " << mostBytesAnEntry << ")" << std::endl;
    return bytes <= mostBytesAnEntry ? EXIT_SUCCESS : EXIT_FAILURE;
}

bool contestOfMemory(const fs::path& parent, const std::string& set) {
    const DataSet data(parent, set);
    const std::string self = fs::read_symlink("/proc/self/exe").string();
    return std::system(("'" + self + "' " + memoryOption + ' ' + set + " '" + data.folder().string() + "'")
                           .c_str()) == 0;
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc == 4 && std::string_view(argv[1]) == memoryOption) return measureMemory(argv[2], argv[3]);
    const fs::path parent = argc > 1 ? argv[1] : "/dev/shm";
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 11;

    bool areReached = true;
    for (const char* set : {"small", "mixed"})
        areReached = contestOfStructures(parent, set, rounds) && areReached;
    areReached = contestOfPrints(parent, rounds) && areReached;
    for (const char* set : {"small", "flat", "million"})
        areReached = contestOfMemory(parent, set) && areReached;
    return areReached ? EXIT_SUCCESS : EXIT_FAILURE;
}
