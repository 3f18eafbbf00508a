// The removal of what a user named: options, the choice of what is meant, and which of five outcomes it was.
#include "io/filesystem/filemanip/CopyMoveFiles_options.h"
#include "io/filesystem/filemanip/DirManip.h"
#include "io/filesystem/filemanip/DirManip_search_path.h"
#include "io/filesystem/filemanip/command_frame.h"
#include "io/filesystem/filemanip/command_frame_link_option.h"
#include "io/filesystem/filemanip/command_frame_status_messages.h"
#include "io/filesystem/filemanip/command_frame_trace.h"
#include "platform/dispatcher.h"
#include "platform/filesystem_shared.h"
#include "platform/message_identifiers.h"

namespace korvex::filemanip {

namespace core = korvex::io::filesystem::core;
namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

namespace {

using Status = core::Status;

[[noreturn]] void raiseInvalidOption(const std::u16string& option) {
    raise(KORVEX::RMDIR::InvalidOption(option));
}

bool isLinkOption(const std::u16string& option) { return option == linkOptionName; }

/// A message under its own identifier; a success becomes a failure.
template <class Message>
void storeOutcome(Status& status, const Message& message) {
    storeMessage(status, message);
    if (status.code == Status::success) status.code = Status::failure;
}

bool endsInSeparator(const std::u16string& path) {
    return !path.empty() && filesystemSharedFcns::isPathSeparator(path.back());
}

}  // namespace

void RemoveDir::reportByKey(const char* key) { SetErrorStatus("RMDIR", key); }

std::string RemoveDir::GetErrorMsgIdPrefix() { return isIRI_ ? "virtualfilesystem" : "RMDIR"; }

void RemoveDir::MarkDirOutOfDate(std::u16string&) {}

void RemoveDir::RequestPathRefresh() const {}

// The signatures are the interface's.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void RemoveDir::ParseOptArgs(std::vector<std::u16string> options) {
    recursive_ = false;
    resolveLinks_ = false;
    if (options.empty()) return;
    const bool isForceFirst = isForceOption(options, 0, true);
    if (!isForceFirst && !isLinkOption(options[0])) raiseInvalidOption(options[0]);
    recursive_ = isForceFirst;
    resolveLinks_ = !isForceFirst;
    if (options.size() == 1) return;
    const bool isTheOtherOne = isForceFirst ? isLinkOption(options[1]) : isForceOption(options, 1, true);
    if (!isTheOtherOne) raiseInvalidOption(options[1]);
    recursive_ = true;
    resolveLinks_ = true;
}

RemoveDir::Status RemoveDir::Process(std::vector<std::u16string> paths, std::vector<std::u16string> options) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, dirManipSourceFile, __LINE__);
    ParseOptArgs(std::move(options));
    return Process(std::move(paths));
}

RemoveDir::Status RemoveDir::Process(std::vector<std::u16string> paths) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, dirManipSourceFile, __LINE__);
    std::u16string& path = paths.back();
    if (endsInSeparator(path)) {
        const std::u16string withoutSeparator = path.substr(0, path.size() - 1);
        if (filesystemSharedFcns::isSymlink(withoutSeparator)) path = withoutSeparator;
    }
    trace(severity::rawValue, [&](auto& record) {
        record << "Directory name after checking for path seperator & sym link: " << path;
    });
    return DirManipulator::Process(std::move(paths));
}

bool RemoveDir::DirProcess(const AbsoluteIRI& location, const std::u16string& strOriginalPath) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, dirManipSourceFile, __LINE__);
    const ExistenceTypeExtended type = core::getExtendedExistenceType(location, true);
    trace(severity::rawValue, [&](auto& record) { record << "Value of existenceType: " << type; });

    std::u16string failedList;
    bool limitReached = false;
    bool somethingFailed = false;
    std::vector<AbsoluteIRI> removedFolders;
    bool removed = false;
    try {
        if (type != provider::ExtendedNothing) {
            removed =
                removeSingleItem(type, location, failedList, limitReached, somethingFailed, removedFolders);
        } else if (location.hasParent()) {
            const Folder parent(location.getParent(),
                                Velquist::KorvexStorageSystem::GetStorageSystemReference());
            removed = removeMultipleItems(parent, true, failedList, limitReached, somethingFailed,
                                          removedFolders, location, strOriginalPath);
            // On purpose nothing more is reported: matches none of which could go are no failure.
            if (!removed) return false;
        } else {
            trace(severity::error,
                  "IRI's path does not have a parent. Possible cause of error is that 'it is a root path', "
                  "'Resource Not Found' or 'it is not a directory'");
            reportMissingItem(location, strOriginalPath);
            return false;
        }
    } catch (const vfs::Exception& failure) {
        reportRemovalFailure(failure, strOriginalPath);
        return false;
    }

    if (removed && !somethingFailed) {
        updateUnixPath(removedFolders);
        Kdispatcher::getDispatcher().GetMainSearchPathManager().refresh(false);
        return true;
    }
    if (removed) {
        trace(severity::workingValue,
              [&](auto& record) { record << "Some directories could not be removed: " << strOriginalPath; });
        storeOutcome(status_, KORVEX::RMDIR::SomeDirectoriesNotRemoved(failedList));
        return false;
    }
    reportNothingRemoved(type, strOriginalPath);
    return false;
}

bool RemoveDir::removeSingleItem(const ExistenceTypeExtended& type, const AbsoluteIRI& location,
                                 std::u16string& failedList, bool& limitReached, bool& somethingFailed,
                                 std::vector<AbsoluteIRI>& removedFolders) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, dirManipSourceFile, __LINE__);
    if (type == provider::ExtendedFolder || type == provider::ExtendedLinkToFolder) {
        return doFolderRemoval(type, location, true, failedList, limitReached, somethingFailed,
                               removedFolders);
    }
    return doFileRemoval(type, location, true, failedList, limitReached, somethingFailed);
}

void RemoveDir::reportMissingItem(const AbsoluteIRI& location, const std::u16string& strOriginalPath) {
    if (isIRI_) {
        setStatusException("resourceNotFound", KORVEX::virtualfilesystem::resourceNotFound(strOriginalPath));
    } else {
        setStatusException("NotADirectory", KORVEX::RMDIR::NotADirectory(vfs::fromAbsoluteIRI(location)));
    }
}

void RemoveDir::reportRemovalFailure(const vfs::Exception& failure, const std::u16string& strOriginalPath) {
    trace(severity::error, [&](auto& record) {
        record << "[[ERROR]]: Exception while removing single/multiple items\n " << failure.ToUstring();
    });
    if (isIRI_) {
        SetVFSErrorStatus(failure, strOriginalPath);
        status_.code = Status::failure;
        return;
    }
    switch (failure.getErrorCode()) {
        case vfs::invalidLocation:
        case vfs::resourceNotFound:
        case vfs::ioError:
            setStatusException("NotADirectory", KORVEX::FileManip::NotADirectory(strOriginalPath));
            return;
        default: return;  // all others report nothing, on purpose
    }
}

void RemoveDir::reportNothingRemoved(const ExistenceTypeExtended& type,
                                     const std::u16string& strOriginalPath) {
    trace(severity::workingValue,
          [&](auto& record) { record << "No Directories removed: " << strOriginalPath; });
    // The collected texts are not told in any of these cases, on purpose.
    if (core::isSymlink(type)) {
        storeOutcome(status_, KORVEX::RMDIR::NotADirectory(strOriginalPath));
    } else if (recursive_) {
        storeOutcome(status_, KORVEX::RMDIR::NoDirectoriesRemoved());
    } else {
        storeOutcome(status_, KORVEX::RMDIR::DirectoryNotRemoved(strOriginalPath));
    }
}

}  // namespace korvex::filemanip
