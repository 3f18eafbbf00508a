// The driver of `mkdir` and `rmdir`: from what was typed to a location that the command may work on.
#include "io/filesystem/filemanip/DirManip.h"

#include "io/filesystem/filemanip/command_frame_trace.h"
#include "io/filesystem/filemanip/existence_queries_web_location.h"
#include "platform/filesystem_shared.h"
#include "platform/foundation_filesystem.h"
#include "platform/message_identifiers.h"
#include "platform/path_management.h"
#include "platform/storage_utility.h"

namespace korvex::filemanip {

namespace except = foundation::core::except;
namespace utility = foundation::storage::utility;
namespace vfs = foundation::storage::vfs;

namespace {

/// In 16-bit units. What is made has a limit of its own; that the two differ is on purpose.
constexpr std::size_t longestParent = 1024;

bool endsInSeparator(const std::u16string& path) {
    return !path.empty() && filesystemSharedFcns::isPathSeparator(path.back());
}

bool beginsWithSeparator(const std::u16string& path) {
    return !path.empty() && filesystemSharedFcns::isPathSeparator(path.front());
}

}  // namespace

// The signatures are the interface's.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
DirManipulator::Status DirManipulator::Process(std::vector<std::u16string>, std::vector<std::u16string>) {
    return status_;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param)
DirManipulator::Status DirManipulator::Process(std::vector<std::u16string> paths) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, dirManipSourceFile, __LINE__);
    status_.code = Status::success;

    std::u16string typed = paths.front();
    if (paths.size() == 2 && joinPaths(paths[0], paths[1], typed) == Check::failed) return status_;
    trace(severity::workingValue, [&](auto& record) { record << "Final path to process: " << typed; });
    if (FilenameContainsNull(typed)) {
        trace(severity::error, [&](auto& record) { record << "Null File name " << typed; });
        return status_;
    }

    std::u16string working = typed;
    const Check isUsable =
        vfs::hasIRIPrefix(working) ? prepareLocation(working, typed) : prepareLocalPath(working);
    if (isUsable == Check::passed) processLocation(working, typed);
    return status_;
}

DirManipulator::Check DirManipulator::joinPaths(const std::u16string& parent, const std::u16string& child,
                                                std::u16string& joined) {
    trace(severity::flowOfControl, [&](auto& record) {
        record << "Two paths passed, parent directory: " << parent << " its length: " << parent.size()
               << ", child directory : " << child << " its length : " << child.size();
    });
    if (!CheckStringForPathMax(parent, longestParent)) {
        trace(severity::error, [&](auto& record) {
            record << "ERROR: PATHMAX, Parent Path Length is: " << parent.size()
                   << ", Exceeds MAX_PATH LENGTH: " << longestParent;
        });
        return Check::failed;
    }
    joined = parent;
    if (!endsInSeparator(parent) && !beginsWithSeparator(child)) {
        joined += vfs::hasIRIPrefix(parent) ? u'/' : fl::filesystem::upath_constant::PATHNAME_SEPARATOR;
    }
    joined += child;
    return Check::passed;
}

DirManipulator::Check DirManipulator::prepareLocalPath(std::u16string& path) {
    try {
        path = fl::filesystem::absolute(path, u"");
    } catch (const fl::filesystem::PathNotFound&) {
        // The word is that of `mkdir` for both commands, on purpose; the entry of `rmdir` puts in its own.
        using CurrentFolderGone = except::Exception<KORVEX::services::cwdIsInvalid>;
        throw CurrentFolderGone(KORVEX::services::cwdIsInvalid(), "KORVEX:MKDIR:cwdIsInvalid");
    } catch (...) {
        // The work goes on with the path as it is: if it is good for nothing, that comes out soon.
        trace(severity::error, [&](auto& record) {
            record << "Error while generating absolute path. Exception not caught. Path name:" << path;
        });
        traceCurrentException();
    }
    trace(severity::workingValue, [&](auto& record) { record << "Absolute path: " << path; });
    if (path.empty()) {
        // The entry of `rmdir`, for both commands.
        setStatusException("PathNotFound", KORVEX::RMDIR::PathNotFound());
        return Check::failed;
    }
    filesystemSharedFcns::handleSingleDots(path);
    filesystemSharedFcns::handleDotDots(path);
    utility::handleWindowsTrailingDotsAndSpaces(path);
    return Check::passed;
}

DirManipulator::Check DirManipulator::prepareLocation(std::u16string& text, const std::u16string& typed) {
    trace(severity::flowOfControl, "Path has IRI prefix");
    isIRI_ = true;
    const bool isWellFormed =
        utility::hasValidNumberOfSlashes(text) && !filesystemSharedFcns::containsDotOrDotDotExpression(text);
    if (!isWellFormed) {
        setStatusException("invalidIRI", KORVEX::virtualfilesystem::invalidIRI(typed));
        return Check::failed;
    }
    text = normalizeHttpLocation(text);
    if (isHttpLocation(text)) {
        trace(severity::error, "Http/s URLs are read only.");
        setStatusException("writeNotAllowed", KORVEX::virtualfileio::stream::writeNotAllowed());
        return Check::failed;
    }
    return Check::passed;
}

void DirManipulator::processLocation(std::u16string& path, const std::u16string& typed) {
    try {
        const AbsoluteIRI location = Velquist::PathManagement::GetIRIFromString(path);
        const bool needsRefresh = DirProcess(location, typed);
        if (!needsRefresh || location.getScheme() != u"file") return;
        std::u16string refreshed = isIRI_ ? std::u16string(vfs::fromAbsoluteIRI(location)) : path;
        MarkDirOutOfDate(refreshed);
        RequestPathRefresh();
    } catch (const vfs::InvalidIRIException&) {
        setStatusException("invalidIRI", KORVEX::virtualfilesystem::invalidIRI(typed));
        traceCurrentException();
    } catch (const vfs::UnsupportedIRISchemeException&) {
        traceCurrentException();
        setStatusException("unsupportedProvider", KORVEX::virtualfilesystem::unsupportedProvider(typed));
    }
}

}  // namespace korvex::filemanip
