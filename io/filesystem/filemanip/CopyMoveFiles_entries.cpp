// The exported entries of `copyfile` and `movefile`: from arguments to paths and options.
#include <string>
#include <vector>

#include "io/filesystem/filemanip/CopyMoveFiles.h"
#include "io/filesystem/filemanip/command_frame.h"
#include "io/filesystem/filemanip/command_frame_limits.h"
#include "io/filesystem/filemanip/command_frame_trace.h"
#include "platform/filesystem_core.h"
#include "platform/message_identifiers.h"

namespace korvex::filemanip {

namespace core = korvex::io::filesystem::core;

namespace {

/// What tells the two commands apart before their engines are built.
struct Copying {
    using Engine = CopyFiles;
    using InvalidOption = KORVEX::COPYFILE::InvalidOption;
    static constexpr const char* word = "COPYFILE";
    static constexpr const char16_t* linkRule = u"copylinkbehavior";
    static std::vector<std::u16string> linkBehaviors() { return {u"osdefault", u"resolve", u"preserve"}; }
    static constexpr const char* exitRecord = "Exiting the copyFile function!!!";
};

struct Moving {
    using Engine = MoveFiles;
    using InvalidOption = KORVEX::MOVEFILE::InvalidOption;
    static constexpr const char* word = "MOVEFILE";
    static constexpr const char16_t* linkRule = u"movelinkbehavior";
    static std::vector<std::u16string> linkBehaviors() { return {u"preserve", u"resolve"}; }
    static constexpr const char* exitRecord = "Exiting the moveFile function!!!";
};

/// Takes the option that stands at `index`, and moves `index` to the last argument that it took.
template <class Command>
std::u16string takeOption(const kxArray* prhs[], int& index) {
    std::u16string text(textOfArgument(prhs[index], false));
    if (text == u"f" || text == u"F" || text == u"writable") return text;
    if (!core::validateRuleName(text, Command::linkRule)) raise(typename Command::InvalidOption(text));
    // Not tested against the number of arguments, on purpose: behind the last one stands a null array, which
    // is no text.
    ++index;
    std::u16string value(textOfArgument(prhs[index], false));
    std::u16string accepted = core::validateRuleValues(value, Command::linkBehaviors());
    if (accepted.empty()) raise(typename Command::InvalidOption(value));
    return accepted;
}

template <class Command>
void transfer(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[], const ArgumentLimits& limits) {
    checkArgumentCounts(limits, nlhs, nrhs);
    std::vector<std::u16string> paths;
    std::vector<std::u16string> options;
    for (int i = 0; i < nrhs; ++i) {
        if (!validateNameArgument(nlhs, plhs, prhs[i], Command::word)) return;
        if (i < 2) {
            // Position decides, not content: a second "f" is a destination.
            paths.emplace_back(textOfArgument(prhs[i], false));
        } else {
            options.push_back(takeOption<Command>(prhs, i));
        }
    }
    typename Command::Engine engine;
    const core::Status status = engine.Process(std::move(paths), std::move(options));
    core::ResultHandler::HandleStatus(status, nlhs, plhs);
    trace(severity::flowOfControl, Command::exitRecord);
}

}  // namespace

KX_MODULE_ENTRY void copyFile(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, copyMoveSourceFile, __LINE__);
    transfer<Copying>(nlhs, plhs, nrhs, prhs, limits::copyFile);
}

KX_MODULE_ENTRY void moveFile(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, copyMoveSourceFile, __LINE__);
    transfer<Moving>(nlhs, plhs, nrhs, prhs, limits::moveFile);
}

}  // namespace korvex::filemanip
