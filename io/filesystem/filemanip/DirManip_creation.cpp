// The creation of folders.
#include "io/filesystem/filemanip/CopyMoveFiles_package_notice.h"
#include "io/filesystem/filemanip/DirManip.h"
#include "io/filesystem/filemanip/command_frame_status_messages.h"
#include "io/filesystem/filemanip/command_frame_trace.h"
#include "platform/kx.h"
#include "platform/message_identifiers.h"

namespace korvex::filemanip {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;
using Velquist::KorvexStorageSystem;

namespace {

/// In 16-bit units of the whole location's text.
constexpr std::size_t longestLocation = 1280;

/// The last folder on the way up that is not there. The folder itself if it is there; a root that is not
/// there ends the search.
vfs::Folder findTopmostMissingFolder(const vfs::Folder& target) {
    vfs::Folder top = target;
    vfs::Folder current = target;
    while (!current.folderExists() && current.hasParent()) {
        top = current;
        current = current.getParent();
    }
    return top;
}

/// Of a whole chain the topmost new folder is the one that changes its parent.
void warnOfPackage(const vfs::Folder& topmost) {
    const auto notice = noticeFolderInPackage(topmost, PackageNoticeMode::intoPackage);
    if (!notice) return;
    if (notice->editable) {
        kxWarningMsgId(KORVEX::MKDIR::CreatedFolderInEditablePackage(notice->itemText, notice->packageName));
    } else {
        kxWarningMsgId(KORVEX::MKDIR::CreatedFolderInPackage(notice->itemText, notice->packageName));
    }
}

}  // namespace

void MakeDir::reportByKey(const char* key) { SetErrorStatus("MKDIR", key); }

std::string MakeDir::GetErrorMsgIdPrefix() {
    return isIRI_ ? "virtualfilesystem" : DirManipulator::GetErrorMsgIdPrefix();
}

bool MakeDir::DirProcess(const AbsoluteIRI& location, const std::u16string& strOriginalPath) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, dirManipSourceFile, __LINE__);
    trace(severity::argument, [&](auto& record) { record << " strOriginalPath=" << strOriginalPath; });
    const std::int32_t codeBefore = status_.code;
    if (CheckStringForPathMax(location.toString(), longestLocation)) {
        return CreatePath(location, strOriginalPath);
    }
    // A note and no failure, on purpose, although nothing is made: the check has set the failure code, and
    // that is taken back.
    storeMessage(status_, KORVEX::FILE::PATHMAX());
    status_.code = codeBefore;
    return false;
}

bool MakeDir::CreatePath(const AbsoluteIRI& location, const std::u16string& strOriginalPath) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, dirManipSourceFile, __LINE__);
    trace(severity::argument, [&](auto& record) { record << " strOriginalPath=" << strOriginalPath; });
    bool needsRefresh = false;
    try {
        const Folder folder(location, KorvexStorageSystem::GetStorageSystemReference());
        const Folder topmost = findTopmostMissingFolder(folder);
        trace(severity::workingValue,
              [&](auto& record) { record << "Path name of created folder: " << folder; });
        trace(severity::workingValue,
              [&](auto& record) { record << "Path name of topmost created folder: " << topmost; });
        folder.createFolderRecursive();
        warnOfPackage(topmost);
        trace(severity::flowOfControl, "Created a new (empty) Folder hierarchy");
        needsRefresh = true;
    } catch (const vfs::Exception& failure) {
        needsRefresh = reportCreationFailure(failure, strOriginalPath);
    }
    // Written on the good path as well.
    trace(severity::error,
          [&](auto& record) { record << "Creating folder error return code: " << (needsRefresh ? 1 : 0); });
    return needsRefresh;
}

bool MakeDir::reportCreationFailure(const vfs::Exception& failure, const std::u16string& strOriginalPath) {
    const bool alreadyExists = failure.getErrorCode() == vfs::resourceAlreadyExists;
    trace(severity::error,
          [&](auto& record) { record << "Exception while creating folder object " << failure.ToUstring(); });
    if (alreadyExists) {
        status_.code = Status::failure;
        reportWhatStandsThere(failure.getLocation(), strOriginalPath);
        return true;
    }
    trace(severity::error, "OS Error!! while creating folder object where folder does not exist.");
    if (isIRI_) {
        SetVFSErrorStatus(failure, strOriginalPath);
        status_.code = Status::failure;
    } else {
        reportByKey("OSError");
    }
    return false;
}

void MakeDir::reportWhatStandsThere(const AbsoluteIRI& location, const std::u16string& strOriginalPath) {
    try {
        const provider::ExistenceType type =
            vfs::exists(location, KorvexStorageSystem::GetStorageSystemReference());
        if (type == provider::AsFile) {
            storeMessage(status_, KORVEX::MKDIR::ExistsAsFile(strOriginalPath));
        } else {
            // What has gone since counts as a folder, too, on purpose.
            storeMessage(status_, KORVEX::MKDIR::DirectoryExists());
        }
    } catch (const vfs::Exception& failure) {
        if (failure.getErrorCode() == vfs::permissionDenied) {
            storeMessage(status_, KORVEX::MKDIR::PermissionDenied(strOriginalPath));
        } else {
            storeMessage(status_, KORVEX::MKDIR::FailureToMkdir(strOriginalPath));
        }
    }
}

}  // namespace korvex::filemanip
