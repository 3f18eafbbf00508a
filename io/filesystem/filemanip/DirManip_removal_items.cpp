// The removal of files, and the words for items that could not be removed. A failure ends its own item only.
#include <algorithm>
#include <iterator>

#include "io/filesystem/filemanip/CopyMoveFiles_package_notice.h"
#include "io/filesystem/filemanip/DirManip.h"
#include "io/filesystem/filemanip/DirManip_removal_steps.h"
#include "io/filesystem/filemanip/DirManip_search_path.h"
#include "io/filesystem/filemanip/command_frame_path_intake.h"
#include "io/filesystem/filemanip/command_frame_trace.h"
#include "platform/kx.h"
#include "platform/message_identifiers.h"

namespace korvex::filemanip {

namespace core = korvex::io::filesystem::core;
namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;
using resource_core::BaseMsgID;

namespace {

template <class Message>
BaseMsgID messageOfPath(const std::u16string& path) {
    return Message(path);
}

/// The failures of an item on a local path that are told.
struct LocalFailure {
    vfs::ErrorCode code;
    BaseMsgID (*message)(const std::u16string& path);
};

constexpr LocalFailure localFailures[] = {
    {vfs::folderNotEmpty, messageOfPath<KORVEX::FileManip::CouldNotRemove>},
    {vfs::ioError, messageOfPath<KORVEX::FileManip::CouldNotRemove>},
    {vfs::permissionDenied, messageOfPath<KORVEX::FileManip::ReadOnly>},
    {vfs::readOnlyProvider, messageOfPath<KORVEX::FileManip::ReadOnly>},
};

void warnOfPackage(const vfs::File& file) {
    const auto notice = noticeFileInPackage(file, PackageNoticeMode::fromPackage);
    if (!notice) return;
    kxWarningMsgId(KORVEX::RMDIR::RemovedFileFromPackage(notice->itemText, notice->packageName));
}

}  // namespace

void recordFailure(const BaseMsgID& message, std::u16string& failedList, bool& limitReached,
                   bool& somethingFailed) {
    if (!limitReached) limitReached = core::Status::AppendWithLimit(failedList, message);
    somethingFailed = true;
}

void reportItemError(const vfs::Exception& failure, bool isIRI, std::u16string& failedList,
                     bool& limitReached, bool& somethingFailed) {
    trace(severity::error, [&](auto& record) { record << failure.ToUstring(); });
    const std::u16string path = locationText(failure.getLocation(), isIRI);
    if (isIRI) {
        const BaseMsgID message = vfs::messageOf(failure.getErrorCode(), path);
        recordFailure(message, failedList, limitReached, somethingFailed);
        return;
    }
    const auto known = std::find_if(std::begin(localFailures), std::end(localFailures),
                                    [&](const auto& row) { return row.code == failure.getErrorCode(); });
    // On purpose every other failure on a local path is dropped, and does not even count as one.
    if (known == std::end(localFailures)) return;
    recordFailure(known->message(path), failedList, limitReached, somethingFailed);
}

bool RemoveDir::doFileRemoval(const ExistenceTypeExtended& type, const AbsoluteIRI& location, bool topLevel,
                              std::u16string& failedList, bool& limitReached, bool& somethingFailed) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, dirManipSourceFile, __LINE__);
    if (topLevel) {
        // Whatever is no folder stays when it is the user who named or matched it.
        recordFailure(KORVEX::FileManip::NotADirectory(locationText(location, isIRI_)), failedList,
                      limitReached, somethingFailed);
        return false;
    }
    bool removed = false;
    try {
        const vfs::StorageSystemReference storage =
            Velquist::KorvexStorageSystem::GetStorageSystemReference();
        vfs::File file(location, storage);
        if (resolveLinks_) file = vfs::File(file.getCanonicalLocation(), storage);
        trace(severity::flowOfControl, [&](auto& record) { record << "value of fileObject: " << file; });
        if (type != provider::ExtendedBrokenLink) {
            trace(severity::flowOfControl, "Setting fileObject writable to True");
            makeWritable(file);
        }
        warnOfPackage(file);
        file.removeFile();
        removed = true;
        clearKFunction(location);
    } catch (const vfs::Exception& failure) {
        reportItemError(failure, isIRI_, failedList, limitReached, somethingFailed);
    }
    return removed;
}

}  // namespace korvex::filemanip
