// The commands `mkdir` and `rmdir`: from arguments to an engine, and from its outcome to outputs.
#include "io/filesystem/filemanip/DirManip.h"
#include "io/filesystem/filemanip/command_frame.h"
#include "io/filesystem/filemanip/command_frame_limits.h"
#include "io/filesystem/filemanip/command_frame_link_option.h"
#include "io/filesystem/filemanip/command_frame_status_messages.h"
#include "io/filesystem/filemanip/command_frame_trace.h"
#include "platform/kx.h"
#include "platform/message_identifiers.h"
#include "platform/string_matrix.h"

namespace korvex::filemanip {

namespace core = korvex::io::filesystem::core;
namespace except = foundation::core::except;
using core::ResultHandler;
using core::Status;

namespace {

using CurrentFolderGone = except::Exception<KORVEX::services::cwdIsInvalid>;

std::u16string readText(const kxArray* argument) { return std::u16string(textOfArgument(argument, true)); }

bool isEmptyName(const kxArray* argument) {
    const bool isText =
        Velquist::String::isNonMissingScalarText(argument, Velquist::String::characterVectorsOnly);
    return (isText && textOfArgument(argument, true).empty()) || kxIsEmpty(argument);
}

/// An empty name is no failure, on purpose: a success with a message.
void deliverEmptyName(int nlhs, kxArray* plhs[]) {
    const KORVEX::MKDIR::EmptyDirectoryName message;
    Status status;
    status.code = Status::success;
    if (nlhs < 2) kxWarningMsgId(message);
    storeMessage(status, message);
    ResultHandler::HandleStatus(status, nlhs, plhs);
}

/// Lets every character through; what a path may hold is up to the storage.
void checkInvalidChar(const std::u16string&) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, dirManipSourceFile, __LINE__);
}

/// A folder that is there already is a success; it is told by a warning where no message is asked for.
void turnExistingFolderIntoSuccess(Status& status, int nlhs) {
    const KORVEX::MKDIR::DirectoryExists message;
    if (core::detail::GetID(status.exception) != message.identifier()) return;
    status.code = Status::success;
    if (nlhs < 2) kxWarningMsgId(message);
}

struct RemovalArguments {
    std::vector<std::u16string> paths;
    std::vector<std::u16string> options;
};

/// False when an argument has delivered its outcome already.
bool readRemovalArguments(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[],
                          RemovalArguments& arguments) {
    for (int i = 0; i < nrhs; ++i) {
        if (!validateNameArgument(nlhs, plhs, prhs[i], "RMDIR")) return false;
        std::u16string text = readText(prhs[i]);
        const bool isOption = i > 0;
        const bool isRecursion = text == u"s" || text == u"S";
        if (!isOption) {
            arguments.paths.push_back(std::move(text));
        } else if (isRecursion || !core::validateRuleName(text, linkOptionName)) {
            // The engine refuses what is no option of its own.
            arguments.options.push_back(std::move(text));
        } else {
            ++i;
            const kxArray* const value = i < nrhs ? prhs[i] : nullptr;
            if (linkOptionValue(value)) arguments.options.push_back(linkOptionName);
        }
    }
    return true;
}

}  // namespace

KX_MODULE_ENTRY void makeDir(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
    trace(severity::flowOfControl, "\n");
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, dirManipSourceFile, __LINE__);
    checkArgumentCounts(limits::makeDir, nlhs, nrhs);
    if (isEmptyName(prhs[0])) return deliverEmptyName(nlhs, plhs);

    std::vector<std::u16string> paths;
    for (int i = 0; i < nrhs; ++i) {
        if (!validateNameArgument(nlhs, plhs, prhs[i], "MKDIR")) return;
        std::u16string path = readText(prhs[i]);
        trace(severity::workingValue, [&](auto& record) { record << "Path element: " << path; });
        checkInvalidChar(path);
        trace(severity::flowOfControl, "Valid path element");
        paths.push_back(std::move(path));
    }

    try {
        MakeDir engine;
        Status status = engine.Process(paths);
        turnExistingFolderIntoSuccess(status, nlhs);
        ResultHandler::HandleStatus(status, nlhs, plhs);
        trace(severity::flowOfControl, "Exiting the mkdir function!!!");
    } catch (const CurrentFolderGone&) {
        raise(KORVEX::services::cwdIsInvalid(), "KORVEX:MKDIR:cwdIsInvalid");
    }
}

KX_MODULE_ENTRY void removeDir(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
    trace(severity::flowOfControl, "\n");
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, dirManipSourceFile, __LINE__);
    checkArgumentCounts(limits::removeDir, nlhs, nrhs);

    RemovalArguments arguments;
    if (!readRemovalArguments(nlhs, plhs, nrhs, prhs, arguments)) return;

    try {
        RemoveDir engine;
        const Status status = engine.Process(arguments.paths, arguments.options);
        ResultHandler::HandleStatus(status, nlhs, plhs);
        trace(severity::flowOfControl, "Exiting the rmdir function!!!");
    } catch (const CurrentFolderGone&) {
        // In place of the word that the engines share.
        raise(KORVEX::services::cwdIsInvalid(), "KORVEX:RMDIR:cwdIsInvalid");
    }
}

}  // namespace korvex::filemanip
