// Write protection: what stops a transfer without a force option, and what is said when permission is
// missing.
#include "io/filesystem/filemanip/CopyMoveFiles.h"
#include "io/filesystem/filemanip/command_frame_path_intake.h"
#include "io/filesystem/filemanip/command_frame_trace.h"
#include "platform/message_identifiers.h"

namespace korvex::filemanip {

namespace vfs = foundation::storage::vfs;

namespace {

constexpr std::size_t longestPathInMessage = 1280;  // units

}  // namespace

template <class Handle>
bool CopyMoveFiles::IsWritable(const AbsoluteIRI& location) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, copyMoveSourceFile, __LINE__);
    const Handle handle(location, Velquist::KorvexStorageSystem::GetStorageSystemReference());
    if (force_) return true;
    try {
        if (vfs::isWritable(handle)) return true;
    } catch (...) {
        // A doubt does not stop the command: the transfer will find out.
        traceCurrentException();
        return true;
    }
    reportReadOnly(locationText(location, isRemoteLocation(location)));
    return false;
}

template bool CopyMoveFiles::IsWritable<vfs::File>(const AbsoluteIRI&);

void CopyMoveFiles::makeWritable(const Item& item) {
    trace(severity::flowOfControl,
          [&](auto& record) { record << "Setting file/folder: " << item << " to be writable."; });
    try {
        boost::apply_visitor([](const auto& handle) { handle.setWritable(true); }, item);
    } catch (const vfs::Exception&) {
        traceCurrentException();
    }
}

std::pair<bool, bool> CopyMoveFiles::SetParentWritable(Folder& parent) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, copyMoveSourceFile, __LINE__);
    bool wasWritable = false;
    bool failed = false;
    try {
        wasWritable = vfs::isWritable(parent);
        if (!wasWritable && force_) {
            trace(severity::flowOfControl,
                  "Setting the 'parentFolder' to writable as the force flag is TRUE.");
            parent.setWritable(true);
        } else if (!wasWritable) {
            const AbsoluteIRI& location = parent.getLocation();
            reportReadOnly(locationText(location, isRemoteLocation(location)));
            failed = true;
        }
    } catch (const vfs::Exception&) {
        traceCurrentException();
    }
    return {wasWritable, failed};
}

void CopyMoveFiles::reportReadOnly(const std::u16string& path) {
    using KORVEX::FILE::ReadOnly;
    reportPermission<ReadOnly, ReadOnly>("ReadOnly", "ReadOnly", path);
}

void CopyMoveFiles::reportReadPermission(const std::u16string& path) {
    using namespace KORVEX::FILE;
    reportPermission<ReadPermissionError, ReadPermissionErrorWithFlag>("ReadPermissionError",
                                                                       "ReadPermissionErrorWithFlag", path);
}

void CopyMoveFiles::reportWritePermission(const std::u16string& path) {
    using namespace KORVEX::FILE;
    reportPermission<WritePermissionError, WritePermissionErrorWithFlag>(
        "WritePermissionError", "WritePermissionErrorWithFlag", path);
}

void CopyMoveFiles::reportFolderPermission(const std::u16string& path) {
    using namespace KORVEX::FILE;
    reportPermission<FolderPermissionError, FolderPermissionErrorWithFlag>(
        "FolderPermissionError", "FolderPermissionErrorWithFlag", path);
}

template <class Plain, class WithFlag>
void CopyMoveFiles::reportPermission(std::string_view plainKey, std::string_view flagKey,
                                     const std::u16string& path) {
    isIRI_ = false;
    const std::u16string shown = path.substr(0, longestPathInMessage);
    if (force_) {
        setStatusException(flagKey, WithFlag(shown));
    } else {
        setStatusException(plainKey, Plain(shown));
    }
}

}  // namespace korvex::filemanip
