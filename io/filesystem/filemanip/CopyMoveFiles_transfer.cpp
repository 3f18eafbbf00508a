// One item: where it goes, the call of the storage layer, and what a failure of that call means.
#include <boost/variant.hpp>

#include "io/filesystem/filemanip/CopyMoveFiles.h"
#include "io/filesystem/filemanip/CopyMoveFiles_package_notice.h"
#include "io/filesystem/filemanip/CopyMoveFiles_steps.h"
#include "io/filesystem/filemanip/command_frame_path_intake.h"
#include "io/filesystem/filemanip/command_frame_trace.h"
#include "platform/filesystem_core.h"
#include "platform/kx.h"
#include "platform/message_identifiers.h"
#include "platform/path_management.h"

namespace korvex::filemanip {

namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
namespace core = io::filesystem::core;
using Velquist::PathManagement::GetStringFromIRI;

namespace {

template <class Message>
void warnOf(const boost::optional<FilePackageNotice>& notice) {
    if (notice) kxWarningMsgId(Message(notice->itemText, notice->packageName));
}

}  // namespace

bool CopyMoveFiles::ProcessOneFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                                   const std::u16string& destinationText, bool destinationEndsInSeparator) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, copyMoveSourceFile, __LINE__);
    const ExistenceType kind = vfs::exists(destination, storageSystem());
    AbsoluteIRI target = destination;
    if (kind == provider::AsFolder) {
        target = AbsoluteIRI(destination, source.getName());
    } else if (destinationEndsInSeparator) {
        reportNoSuchFolder(target, kind, destinationText);
        return false;
    }
    if (kind != provider::AsNeither && !IsWritable<File>(target)) return false;
    // Asked, and the answer dropped, on purpose: a missing parent is left for the transfer to find.
    if (kind == provider::AsNeither) (void)doesParentExist(destination);

    const File sourceFile(source, storageSystem());
    const File targetFile(target, storageSystem());
    if (sourceFile == targetFile) {
        isIRI_ = false;
        setStatusException("SourceAndDestinationSame", KORVEX::FILE::SourceAndDestinationSame());
        return false;
    }
    return callVfsAPI(sourceFile, targetFile);
}

void CopyMoveFiles::reportNoSuchFolder(const AbsoluteIRI& target, ExistenceType kind,
                                       const std::u16string& destinationText) {
    if (isIRI_) return reportInvalidLocation(target, status_);
    if (kind == provider::AsFile) {
        return setStatusException("OSError", KORVEX::FILE::DestNotAFolder(destinationText));
    }
    setStatusException("OSError", KORVEX::FILE::NeitherFileNorFolder());
}

bool isLink(const vfs::Item& item) {
    try {
        return core::isSymlink(core::getExtendedExistenceType(vfs::getLocation(item), true));
    } catch (const std::exception&) {
        return false;  // what is done next will tell
    }
}

bool doesParentExist(const vfs::AbsoluteIRI& location) {
    return location.hasParent() && vfs::exists(location.getParent(), storageSystem()) != provider::AsNeither;
}

bool CopyMoveFiles::callVfsAPI(const Item& source, const Item& destination) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, copyMoveSourceFile, __LINE__);
    // A file that is moved takes the place of a link itself: what that leads to keeps its protection.
    const bool isFileMove = !isCopy() && boost::get<File>(&source) != nullptr;
    if (force_ && !(isFileMove && isLink(destination))) makeWritable(destination);
    try {
        doVfsOperation(source, destination, force_);
        return true;
    } catch (const vfs::Exception& failure) {
        return reportTransferFailure(failure, source, destination);
    } catch (...) {
        reportByKey("OSError");
        return false;
    }
}

void CopyMoveFiles::performOperation(const File& source, const TransferRequest& request) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, copyMoveSourceFile, __LINE__);
    const File target = boost::get<File>(request.destination);
    const provider::ReplacementPolicy policy =
        request.overwrite ? provider::ReplaceAny : provider::ReplaceWritable;
    trace(severity::flowOfControl, [&](auto& record) {
        record << (request.isCopy ? "Performing operation: Copy file from location "
                                  : "Performing operation: Move file from location ")
               << source << " to location " << target << " using policy: " << policy;
    });
    if (request.isCopy) {
        source.copyFile(target, policy);
        if (!mayGiveNotices_) return;
        return warnOf<KORVEX::COPYFILE::CopiedFileIntoPackage>(
            noticeFileInPackage(target, PackageNoticeMode::intoPackage));
    }
    // Asked before the move: at its old place the question makes no sense once the file is gone.
    if (mayGiveNotices_) {
        warnOf<KORVEX::MOVEFILE::MovedFileFromPackage>(
            noticeFileInPackage(source, PackageNoticeMode::fromPackage));
    }
    source.moveFile(target, policy);
    try {
        if (mayGiveNotices_) {
            warnOf<KORVEX::MOVEFILE::MovedFileIntoPackage>(
                noticeFileInPackage(target, PackageNoticeMode::intoPackage));
        }
    } catch (...) {
        // That the question failed does not cost the protection of what has moved.
        if (request.restoreReadOnly) protectAgain(target);
        throw;
    }
    if (request.restoreReadOnly) protectAgain(target);
}

bool CopyMoveFiles::reportTransferFailure(const StorageFailure& failure, const Item& source,
                                          const Item& destination) {
    trace(severity::error, [&](auto& record) { record << failure.ToUstring(); });
    const AbsoluteIRI destinationLocation = vfs::getLocation(destination);
    const AbsoluteIRI failedLocation = failure.getLocation();
    if (SetErrorExceptionContext(failure.getExceptionContextsString(), displayText(failedLocation))) {
        return false;
    }
    switch (failure.getErrorCode()) {
        case vfs::folderNotEmpty:
            setStatusException("ResourceExists", KORVEX::virtualfilesystem::resourceAlreadyExists(
                                                     GetStringFromIRI(destinationLocation)));
            return false;
        case vfs::invalidLocation:
            // An item that holds the destination is passed over: its contents are on their way already.
            if (vfs::getLocation(source).isAncestorOf(destinationLocation)) return true;
            break;
        case vfs::permissionDenied: reportPermissionDenied(source, failedLocation); return false;
        case vfs::resourceAlreadyExists: reportResourceExists(failure, source, destination); return false;
        case vfs::resourceNotFound: reportResourceNotFound(failure, source); return false;
        default: break;
    }
    reportStorageFailure(failure, displayText(failedLocation));
    return false;
}

void CopyMoveFiles::reportResourceExists(const StorageFailure& failure, const Item& source,
                                         const Item& destination) {
    const AbsoluteIRI destinationLocation = vfs::getLocation(destination);
    if (vfs::exists(destinationLocation, storageSystem()) == provider::AsFile) {
        // A file that is there and could not be replaced.
        return reportPermissionDenied(source, failure.getLocation());
    }
    if (isIRI_) return reportStorageFailure(failure, displayText(failure.getLocation()));
    setStatusException("ResourceExists", KORVEX::virtualfilesystem::resourceAlreadyExists(
                                             GetStringFromIRI(destinationLocation)));
}

void CopyMoveFiles::reportResourceNotFound(const StorageFailure& failure, const Item& source) {
    const AbsoluteIRI failedLocation = failure.getLocation();
    const AbsoluteIRI sourceLocation = vfs::getLocation(source);
    if (getLinkBehavior() == LinkBehavior::resolve && sourceLocation.toString() == failedLocation &&
        vfs::existsExtended(sourceLocation, storageSystem()) == provider::ExtendedBrokenLink) {
        return setStatusException(
            "NoTargetForBrokenSymlink",
            KORVEX::io::filesystem::symlink::NoTargetForBrokenSymlink(GetStringFromIRI(failedLocation)));
    }
    setStatusException("ResourceNotFound",
                       KORVEX::virtualfilesystem::resourceNotFound(GetStringFromIRI(failedLocation)));
}

void CopyMoveFiles::reportPermissionDenied(const Item& source, const AbsoluteIRI& failedLocation) {
    const AbsoluteIRI here = vfs::getLocation(source);
    const ExistenceType kind = vfs::exists(here, storageSystem());
    if (kind == provider::AsFile) {
        return here.toString() == failedLocation.toString()
                   ? reportReadPermission(displayText(here))
                   : reportWritePermission(displayText(failedLocation));
    }
    if (kind == provider::AsFolder) return reportFolderPermission(displayText(here));
    reportByKey("OSError");
}

void CopyMoveFiles::reportStorageFailure(const StorageFailure& failure, const std::u16string& path) {
    if (!isIRI_) return reportByKey("OSError");
    SetVFSErrorStatus(failure, path);
    status_.code = Status::failure;
}

}  // namespace korvex::filemanip
