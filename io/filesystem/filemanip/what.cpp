// `what`: from names of folders to printed blocks or a structure array. The order of the steps is the
// command's contract.
#include <algorithm>
#include <array>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "io/filesystem/filemanip/command_frame.h"
#include "io/filesystem/filemanip/command_frame_limits.h"
#include "io/filesystem/filemanip/command_frame_trace.h"
#include "io/filesystem/filemanip/dir_listing_display.h"
#include "io/filesystem/filemanip/existence_queries_web_location.h"
#include "io/filesystem/filemanip/what_folder_names.h"
#include "io/filesystem/filemanip/what_report.h"
#include "io/filesystem/filemanip/what_search_path.h"
#include "platform/filesystem_shared.h"
#include "platform/message_catalog.h"
#include "platform/message_identifiers.h"
#include "platform/path_management.h"
#include "platform/services_io.h"
#include "platform/storage_utility.h"
#include "platform/storage_vfs.h"
#include "platform/string_matrix.h"

namespace korvex::filemanip {

namespace vfs = foundation::storage::vfs;
using services::io::operator<<;
using Velquist::PathManagement::FilenameMatchingPolicy;

namespace {

/// Names of this length in 16-bit units, and longer ones, are refused when they are taken as paths.
constexpr std::size_t nameLimit = 1024;

struct PolicyOption {
    std::u16string_view word;
    FilenameMatchingPolicy policy;
};

constexpr std::array<PolicyOption, 2> policyOptions{{
    {u"-caseinsensitive", Velquist::PathManagement::IgnoreCase},
    {u"-casesensitive", Velquist::PathManagement::MatchCase},
}};

bool isWord(std::u16string_view text, std::u16string_view word) {
    return fl::i18n::detail::compare(text.data(), text.size(), word.data(), word.size(),
                                     fl::i18n::detail::case_insensitive) == 0;
}

/// Of several options the last one counts, and for all names.
void parseWhatArguments(int nrhs, const kxArray* const prhs[], FilenameMatchingPolicy& policy,
                        std::vector<std::u16string>& names) {
    for (int i = 0; i < nrhs; ++i) {
        if (!Velquist::String::isScalarText(prhs[i], true, false)) {
            raise(KORVEX::string::MustBeSingleString(labelText(KORVEX::what::Directory())));
        }
        const std::u16string text(textOfArgument(prhs[i], true));
        const auto option = std::ranges::find_if(
            policyOptions, [&](const PolicyOption& known) { return isWord(text, known.word); });
        if (option != policyOptions.end()) {
            policy = option->policy;
        } else {
            names.push_back(text.empty() ? currentFolderText() : text);
        }
    }
}

/// A line of output: no warning, and no error.
void printLine(const resource_core::BaseMsgID& message) {
    services::io::uout() << labelText(message) << "\n";
}

void printNotFound(const std::u16string& name) { printLine(KORVEX::what::NotFound(name)); }

void printNoFolderConcept() { printLine(KORVEX::virtualfileio::stream::zeroFolderConcept()); }

bool whatByName(std::u16string name, FilenameMatchingPolicy policy, kxArray* result, bool isUNC, bool isIRI) {
    // On purpose the identifier of `dir`.
    if (name.size() >= nameLimit) raise(KORVEX::dir::pathnameTooLong(name));
    const auto resolved = resolveFolderName(policy, name, !isUNC && !isIRI);
    return resolved && reportFolder(*resolved, false, result, isUNC, isIRI);
}

/// Whether the search path or the current folder has it.
bool reportByPartOfPath(const std::u16string& name, FilenameMatchingPolicy policy, kxArray* result) {
    const PathHits hits = kPathWhat(name, policy, result);
    if (hits.exact) return hits.found;
    // Both are reported: what stands on the search path under this name, and what stands here.
    const bool isHere = whatInCurrentFolder(name, policy, result);
    return hits.found || isHere;
}

void reportNotFound(const std::u16string& name) {
    printNotFound(name);
    if (!isHttpLocation(name)) return;
    trace(severity::error, "Http/s URLs are treated as files.");
    traceCurrentException();
    printNoFolderConcept();
}

/// `result` is null where the folders are printed.
void reportName(const std::u16string& typedName, FilenameMatchingPolicy policy, kxArray* result) {
    std::u16string name = typedName;
    const bool isIRI = vfs::hasIRIPrefix(name);
    bool isUNC = false;
    if (isIRI) {
        if (!foundation::storage::utility::hasValidNumberOfSlashes(name) ||
            filesystemSharedFcns::containsDotOrDotDotExpression(name)) {
            if (result == nullptr) printNotFound(typedName);
            return;
        }
        isUNC = filesystemSharedFcns::startsWithSlashSlashOnWindows(name);
    } else {
        filesystemSharedFcns::replaceSlashesOnWindows(name);
        isUNC = filesystemSharedFcns::startsWithSlashSlashOnWindows(name);
        if (isUNC) {
            filesystemSharedFcns::trimTrailingSlash(name);
        } else if (reportByPartOfPath(name, policy, result)) {
            return;
        }
    }
    const bool isReported = whatByName(name, policy, result, isUNC, isIRI);
    if (!isReported && result == nullptr) reportNotFound(typedName);
}

}  // namespace

KX_MODULE_ENTRY void bnFullWhatFcn(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
    checkArgumentCounts(limits::fullWhat, nlhs, nrhs);
    kxArray* result = nullptr;
    // Handed over before anything else: what is found before an error stays in it.
    if (nlhs == 1) result = plhs[0] = matrix::to_korvex(makeEmptyWhatResult());
    if (nrhs == 0) {
        reportFolder(currentFolderText(), true, result, false, false);
        return;
    }
    FilenameMatchingPolicy policy = Velquist::PathManagement::DefaultMatching;
    std::vector<std::u16string> names;
    parseWhatArguments(nrhs, prhs, policy, names);
    for (const std::u16string& name : names)
        reportName(name, policy, result);
}

}  // namespace korvex::filemanip
