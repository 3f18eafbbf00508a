// The call of the storage layer for a whole folder, and the search path around it.
#include <boost/variant.hpp>

#include "io/filesystem/filemanip/CopyMoveFiles.h"
#include "io/filesystem/filemanip/CopyMoveFiles_package_notice.h"
#include "io/filesystem/filemanip/CopyMoveFiles_steps.h"
#include "io/filesystem/filemanip/DirManip_search_path.h"
#include "io/filesystem/filemanip/command_frame_trace.h"
#include "platform/dispatcher.h"
#include "platform/kx.h"
#include "platform/message_identifiers.h"
#include "platform/path_management.h"

namespace korvex::filemanip {

namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
namespace paths = Velquist::PathManagement;

namespace {

template <class InEditable, class InOther>
void warnOf(const boost::optional<FolderPackageNotice>& notice) {
    if (!notice) return;
    if (notice->editable) {
        kxWarningMsgId(InEditable(notice->itemText, notice->packageName));
    } else {
        kxWarningMsgId(InOther(notice->itemText, notice->packageName));
    }
}

/// Takes a local folder and all below it off the search path, and can put the whole path back as it was.
class DetachedPathEntries {
public:
    explicit DetachedPathEntries(const vfs::AbsoluteIRI& folder)
        : manager_(Kdispatcher::getDispatcher().GetMainSearchPathManager()),
          snapshot_(manager_.getPathEntries()) {
        if (folder.getScheme() == u"file") {
            removed_ = removeFolderTreeFromPath(vfs::AbsoluteIRI(folder.toString()), false);
        }
    }

    void putBack() {
        if (removed_.empty()) return;
        foundation::core::except::Notification notification;
        manager_.restorePathEntries(snapshot_, notification);
        for (const resource_core::BaseMsgID& message : notification.messages())
            kxWarningMsgId(message);
    }

    void warnOfEach() const {
        for (const vfs::CanonicalAbsoluteIRI& entry : removed_) {
            kxWarningMsgId(KORVEX::MOVEFILE::RemovedFromPath(paths::GetStringFromIRI(entry)));
        }
    }

private:
    paths::IMainSearchPathManager& manager_;
    std::vector<vfs::CanonicalAbsoluteIRI> snapshot_;
    std::vector<vfs::CanonicalAbsoluteIRI> removed_;
};

provider::ReplacementPolicy folderPolicy(bool isCopy, bool overwrite, const vfs::Folder& target) {
    if (overwrite) return provider::ReplaceAny;
    if (isCopy) return provider::MergeFolder;
    return target.getLocation().getScheme() == u"file" ? provider::MergeFolder : provider::ReplaceWritable;
}

}  // namespace

void CopyMoveFiles::performOperation(const Folder& source, const TransferRequest& request) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, copyMoveSourceFile, __LINE__);
    const Folder target = boost::get<Folder>(request.destination);
    const provider::ReplacementPolicy policy = folderPolicy(request.isCopy, request.overwrite, target);
    trace(severity::flowOfControl, [&](auto& record) {
        record << (request.isCopy ? "Performing operation: Copy folder from location "
                                  : "Performing operation: Move folder from location ")
               << source << " to location " << target << " using policy: " << policy;
    });
    if (request.isCopy) {
        copyWholeFolder(source, target, policy);
    } else {
        moveWholeFolder(source, target, policy, request.restoreReadOnly);
    }
}

void CopyMoveFiles::copyWholeFolder(const Folder& source, const Folder& target,
                                    provider::ReplacementPolicy policy) {
    using namespace KORVEX::COPYFILE;
    try {
        source.copyFolder(target, policy);
        warnOf<CopiedFolderIntoEditablePackage, CopiedFolderIntoPackage>(
            noticeFolderInPackage(target, PackageNoticeMode::intoPackage));
    } catch (const vfs::Exception&) {
        traceCurrentException();
        throw;
    }
}

void CopyMoveFiles::moveWholeFolder(const Folder& source, const Folder& target,
                                    provider::ReplacementPolicy policy, bool restoreReadOnly) {
    using namespace KORVEX::MOVEFILE;
    DetachedPathEntries entries(source.getLocation());
    bool isMoved = false;
    try {
        warnOf<MovedFolderFromEditablePackage, MovedFolderFromPackage>(
            noticeFolderInPackage(source, PackageNoticeMode::fromPackage));
        source.moveFolder(target, policy);
        isMoved = true;
        warnOf<MovedFolderIntoEditablePackage, MovedFolderIntoPackage>(
            noticeFolderInPackage(target, PackageNoticeMode::intoPackage));
    } catch (...) {
        traceCurrentException();
        if (isMoved && restoreReadOnly) protectAgain(target);
        entries.putBack();
        throw;
    }
    entries.warnOfEach();
    if (restoreReadOnly) protectAgain(target);
}

}  // namespace korvex::filemanip
