// From the typed texts to two locations, and on to the file or the folder path: the order of checks that the
// user sees.
#include "io/filesystem/filemanip/CopyMoveFiles.h"
#include "io/filesystem/filemanip/command_frame_path_intake.h"
#include "io/filesystem/filemanip/command_frame_status_messages.h"
#include "io/filesystem/filemanip/command_frame_trace.h"
#include "io/filesystem/filemanip/existence_queries_web_location.h"
#include "platform/filesystem_shared.h"
#include "platform/foundation_filesystem.h"
#include "platform/message_catalog.h"
#include "platform/message_identifiers.h"
#include "platform/path_management.h"

namespace korvex::filemanip {

namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
namespace core = korvex::io::filesystem::core;
using Velquist::PathManagement::GetIRIFromString;
using Velquist::PathManagement::GetStringFromIRI;

namespace {

constexpr std::size_t longestSourcePath = 1280;  // units

bool areEqualIgnoringCase(const std::u16string& a, const std::u16string& b) {
    return fl::i18n::detail::compare(a.data(), a.size(), b.data(), b.size(),
                                     fl::i18n::detail::case_insensitive) == 0;
}

}  // namespace

struct CopyMoveFiles::Endpoints {
    std::u16string source;  ///< as typed at first, then as taken in
    boost::optional<AbsoluteIRI> sourceIri;
    std::u16string sourcePath;        ///< display text
    std::u16string sourceParentPath;  ///< display text; empty when there is no parent

    std::u16string destination;
    bool destinationEndsInSeparator = false;  ///< as it was typed
    boost::optional<AbsoluteIRI> destinationIri;
    std::u16string destinationPath;  ///< display text
};

CopyMoveFiles::Status CopyMoveFiles::Process(std::vector<std::u16string> paths) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, copyMoveSourceFile, __LINE__);
    status_.code = Status::success;
    mayGiveNotices_ = true;
    Endpoints ends;
    ends.source = paths[0];
    trace(severity::workingValue, [&](auto& record) { record << "Value of source string: " << ends.source; });
    if (FilenameContainsNull(ends.source)) return status_;
    if (ends.source.empty()) {
        status_.code = Status::failure;
        setStatusException("SourceArgumentIsEmpty", KORVEX::FILE::SourceArgumentIsEmpty());
        return status_;
    }
    try {
        runTransfer(ends, paths);
    } catch (const vfs::InvalidIRIException& failure) {
        reportInvalidIRI(failure.getInvalidIRIString(), status_);
    } catch (const vfs::UnsupportedIRISchemeException& failure) {
        storeFailure(status_, KORVEX::virtualfilesystem::unsupportedProvider(failure.getScheme()));
    } catch (const vfs::Exception& failure) {
        reportFailureOfRun(failure, ends.source);
    }
    return status_;
}

void CopyMoveFiles::runTransfer(Endpoints& ends, const std::vector<std::u16string>& paths) {
    if (!takeInSource(ends) || !takeInDestination(ends, paths)) return;
    if (areSamePlace(ends)) {
        isIRI_ = false;
        setStatusException("SourceAndDestinationSame", KORVEX::FILE::SourceAndDestinationSame());
        return;
    }
    const AbsoluteIRI& source = *ends.sourceIri;
    const AbsoluteIRI& destination = *ends.destinationIri;
    if (getLinkBehavior() == LinkBehavior::preserve && isCopy() &&
        core::isSymlink(GetStringFromIRI(source)) == core::SymbolicLink) {
        // Past everything that follows a transfer, on purpose: nothing is refreshed.
        return copySymbolicLink(source, destination, ends.destinationPath);
    }
    const ExistenceType kind =
        vfs::exists(source, Velquist::KorvexStorageSystem::GetStorageSystemReference());
    trace(severity::workingValue, [&](auto& record) { record << "Value of source exists status: " << kind; });
    const bool done =
        kind == provider::AsFile
            ? ProcessOneFile(source, destination, ends.destination, ends.destinationEndsInSeparator)
            : ProcessDirectory(source, ends.source, destination, ends.destination, kind);
    if (done) RefreshAffectedDirectories(ends.sourcePath, ends.destinationPath);
}

core::ResolveSymbolicLinks CopyMoveFiles::intakeMode() const {
    return getLinkBehavior() == LinkBehavior::resolve ? core::FollowLinks : core::KeepLinks;
}

bool CopyMoveFiles::takeInSource(Endpoints& ends) {
    const std::u16string typedSource = ends.source;
    const TakenPath taken = takeInPath(ends.source, intakeMode(), isIRI_, status_);
    if (taken == TakenPath::refused) return false;
    if (taken == TakenPath::localPath) {
        if (ends.source.empty()) {
            reportByKey("OSError");
            return false;
        }
        if (!CheckStringForPathMax(ends.source, longestSourcePath)) return false;
    }
    const bool sourceIsHttp = isIRI_ && isHttpLocation(ends.source);
    if (!reportWebLocationNotWritable(sourceIsHttp && !isCopy())) return false;

    ends.sourceIri = GetIRIFromString(ends.source);
    if (sourceIsHttp && ends.sourceIri->getName() == u"/") {
        setStatusException("pathComponentMissing",
                           KORVEX::virtualfileio::stream::pathComponentMissing(typedSource));
        status_.code = Status::failure;
        return false;
    }
    const bool isRemote = isRemoteLocation(*ends.sourceIri);
    ends.sourcePath = locationText(*ends.sourceIri, isRemote);
    trace(severity::workingValue, [&](auto& record) { record << "Value of VFS Path: " << ends.sourcePath; });
    if (ends.sourceIri->hasParent()) {
        ends.sourceParentPath = locationText(ends.sourceIri->getParent(), isRemote);
        trace(severity::flowOfControl,
              [&](auto& record) { record << "Source IRI has Parent, value: " << ends.sourceParentPath; });
    }
    return true;
}

bool CopyMoveFiles::takeInDestination(Endpoints& ends, const std::vector<std::u16string>& paths) {
    if (paths.size() >= 2) {
        ends.destination = paths[1];
        trace(severity::workingValue,
              [&](auto& record) { record << "Value of destination: " << ends.destination; });
        if (FilenameContainsNull(ends.destination)) return false;
    } else {
        ends.destination = fl::filesystem::get_current_path();
        trace(severity::flowOfControl, [&](auto& record) {
            record << "No destination specified, destination is cwd: " << ends.destination;
        });
    }
    ends.destinationEndsInSeparator =
        !ends.destination.empty() && filesystemSharedFcns::isPathSeparator(ends.destination.back());

    const TakenPath taken = takeInPath(ends.destination, intakeMode(), isIRI_, status_);
    if (taken == TakenPath::refused) return false;
    // A local destination is tested neither for emptiness nor for its length, on purpose.
    const bool isWeb = taken == TakenPath::location && isHttpLocation(ends.destination);
    if (!reportWebLocationNotWritable(isWeb)) return false;

    ends.destinationIri = GetIRIFromString(ends.destination);
    ends.destinationPath = locationText(*ends.destinationIri, isRemoteLocation(*ends.destinationIri));
    trace(severity::workingValue,
          [&](auto& record) { record << "Destination VFS path: " << ends.destinationPath; });
    return true;
}

bool CopyMoveFiles::reportWebLocationNotWritable(bool isWritten) {
    if (!isWritten) return true;
    trace(severity::error, "HTTP/S URLs are read only.");
    traceCurrentException();
    setStatusException("writeNotAllowed", KORVEX::virtualfileio::stream::writeNotAllowed());
    status_.code = Status::failure;
    return false;
}

// Case is ignored on purpose, also where names differ by it.
bool CopyMoveFiles::areSamePlace(const Endpoints& ends) {
    return areEqualIgnoringCase(ends.sourcePath, ends.destinationPath) ||
           areEqualIgnoringCase(ends.sourceParentPath, ends.destinationPath);
}

void CopyMoveFiles::reportFailureOfRun(const StorageFailure& failure, const std::u16string& source) {
    trace(severity::error, [&](auto& record) { record << failure.ToUstring(); });
    const AbsoluteIRI failed = failure.getLocation();
    const std::u16string failedText = locationText(failed, isRemoteLocation(failed));
    if (SetErrorExceptionContext(failure.getExceptionContextsString(), failedText)) return;
    switch (failure.getErrorCode()) {
        case vfs::permissionDenied:
            return failedText == source ? reportReadPermission(failedText)
                                        : reportWritePermission(failedText);
        case vfs::resourceNotFound:
            if (isIRI_) return reportStorageFailure(failure, failedText);
            return setStatusException("FileNotFound", KORVEX::FILE::FileNotFound(source));
        case vfs::readOnlyProvider: return reportReadOnly(failedText);
        default: return reportStorageFailure(failure, failedText);
    }
}

}  // namespace korvex::filemanip
