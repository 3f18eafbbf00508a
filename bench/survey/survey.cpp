// `what` against the lister that it stands on, in turns, medians, ratios.
//
//   bench_survey [FOLDER [ROUNDS]]      default: /dev/shm, 21
//
// A folder of 200,000 entries of mixed names is made below FOLDER and removed again. Goal: finding out what
// the entries are and handing it over, as a structure array or as printed columns, takes with the listing at
// most 1.3 times as long as the listing alone.
#include <array>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/support/interleaved.h"
#include "bench/support/results.h"
#include "platform/kx.h"
#include "platform/listing.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/interpreter/output.h"
#include "runtime/text/encoding.h"

extern "C" void bnFullWhatFcn(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);

namespace {

namespace fs = std::filesystem;

constexpr double mostOfLister = 1.3;
constexpr std::size_t entries = 200'000;

/// What stands in front of and behind the number in a name. Every tenth entry is a folder.
struct NameForm {
    const char* front;
    const char* end;
    bool isFolder;
};
constexpr std::array<NameForm, 10> nameForms{{
    {"compute_", ".k", false},
    {"measurement ", ".kat", false},
    {"view", ".klapp", false},
    {"@Class", "", true},
    {"photo-", ".jpg", false},
    {"lesson_on_numbers_", ".klx", false},
    {"module", ".kexw64", false},
    {"README", "", false},
    {"my code ", ".k", false},
    {"p", ".p", false},
}};

/// A folder that is the environment's current one.
class MixedFolder {
public:
    explicit MixedFolder(const fs::path& parent) : folder_(parent / "korvex-bench-survey") {
        fs::remove_all(folder_);
        fs::create_directories(folder_);
        for (std::size_t i = 0; i < entries; ++i) {
            const NameForm& form = nameForms[i % nameForms.size()];
            const fs::path entry = folder_ / (form.front + std::to_string(i) + form.end);
            if (form.isFolder) {
                fs::create_directory(entry);
            } else if (!std::ofstream(entry)) {
                throw std::runtime_error(entry.string() + " cannot be made");
            }
        }
        korvex::runtime::dispatcher::setCurrentFolderPath(folder_.u16string());
    }
    ~MixedFolder() {
        korvex::runtime::dispatcher::setCurrentFolderPath(u"/");
        fs::remove_all(folder_);
    }
    MixedFolder(const MixedFolder&) = delete;
    MixedFolder& operator=(const MixedFolder&) = delete;

    std::u16string path() const { return folder_.u16string(); }

private:
    fs::path folder_;
};

void surveyToStructure() {
    kxArray* plhs[1] = {nullptr};
    const kxArray* prhs[1] = {nullptr};
    bnFullWhatFcn(1, plhs, 0, prhs);
    const matrix::ArrayOwner result(plhs[0]);
    if (kxGetM(kxGetField(result.get(), 0, "k")) != entries / nameForms.size()) {
        throw std::runtime_error("the survey has missed some entries");
    }
}

void surveyToColumns() {
    const kxArray* prhs[1] = {nullptr};
    bnFullWhatFcn(0, nullptr, 0, prhs);
}

bool contest(const std::string& name, void (*survey)(), const std::u16string& folder, int rounds) {
    const korvex::bench::Medians seconds = korvex::bench::interleaved(rounds, survey, [&] {
        std::vector<FileNameWithStatLight> listed;
        ioGetDirListVFS(folder, u"*", listed);
        if (listed.size() != entries) throw std::runtime_error("the lister has missed some entries");
    });
    korvex::bench::record(
        korvex::bench::Contest{"what", name, "the lister alone", seconds.ours, seconds.peer, mostOfLister});
    const double ratio = seconds.ours / seconds.peer;
    std::cout << name << ": ours " << seconds.ours << " s, the lister alone " << seconds.peer << " s, ratio "
              << ratio << " (goal: at most " << mostOfLister << ")" << std::endl;
    return ratio <= mostOfLister;
}

}  // namespace

int main(int argc, char* argv[]) {
    const fs::path parent = argc > 1 ? argv[1] : "/dev/shm";
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 21;
    const MixedFolder folder(parent);

    std::ofstream sink("/dev/null", std::ios::binary);
    korvex::runtime::interpreter::setOutputReceiver([&sink](std::u16string_view text) {
        sink << korvex::runtime::text::toDisplayBytes(text) << std::flush;
    });
    const bool isStructureFast = contest("s = what", surveyToStructure, folder.path(), rounds);
    const bool areColumnsFast = contest("what", surveyToColumns, folder.path(), rounds);
    korvex::runtime::interpreter::setOutputReceiver(nullptr);
    return isStructureFast && areColumnsFast ? EXIT_SUCCESS : EXIT_FAILURE;
}
