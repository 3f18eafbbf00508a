// The engines of `mkdir` and `rmdir`: one driver that makes a location of what was typed, and a subclass for
// each command that does the work on it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/filesystem_core.h"
#include "platform/storage_vfs.h"

namespace korvex::filemanip {

/// What both commands have in common. An object lives for one call of a command.
///
/// The order of the virtual operations is the order of the environment's binary interface.
class DirManipulator : public io::filesystem::core::FileManipulator {
public:
    using AbsoluteIRI = foundation::storage::vfs::AbsoluteIRI;
    using Folder = foundation::storage::vfs::Folder;
    using Status = io::filesystem::core::Status;

    DirManipulator() = default;
    ~DirManipulator() override = default;

    /// Does no work: hands out the outcome so far.
    Status Process(std::vector<std::u16string> paths, std::vector<std::u16string> options) override;

    /// One path, or two that are joined, as they were typed. Ends in `DirProcess`, and tells the environment
    /// of what changed in the local file system. Nothing has been touched when a check in front of that
    /// fails. Raises "KORVEX:MKDIR:cwdIsInvalid" for a relative path when the current folder is gone,
    /// `InvalidIRIException` for a location that good slashes do not make parse, and what `DirProcess`
    /// raises.
    Status Process(std::vector<std::u16string> paths) override;

protected:
    /// Does the command's work on the location. `strOriginalPath` is the path before it was made absolute, as
    /// messages show it. True when what the environment knows of the folder is out of date.
    virtual bool DirProcess(const AbsoluteIRI& location, const std::u16string& strOriginalPath) = 0;

    /// Set by a text with a scheme, for the rest of the command: it chooses the words of all messages.
    bool isIRI_ = false;

private:
    /// What a check found: whether the command goes on. A failure is in the status by then.
    enum class Check { passed, failed };

    Check joinPaths(const std::u16string& parent, const std::u16string& child, std::u16string& joined);
    Check prepareLocalPath(std::u16string& path);
    Check prepareLocation(std::u16string& text, const std::u16string& typed);
    void processLocation(std::u16string& path, const std::u16string& typed);
};

/// The engine of `mkdir`: makes a folder with every missing one above it.
class MakeDir : public DirManipulator {
public:
    ~MakeDir() override = default;

protected:
    void reportByKey(const char* key) override;
    /// "virtualfilesystem" for a text with a scheme.
    std::string GetErrorMsgIdPrefix() override;
    /// Stores "KORVEX:FILE:PATHMAX" for a location of more than 1280 units, on purpose under a success code.
    bool DirProcess(const AbsoluteIRI& location, const std::u16string& strOriginalPath) override;

private:
    /// True for a new chain and when something stood there already; the failure is in the status. A chain of
    /// which only a part could be made stays.
    bool CreatePath(const AbsoluteIRI& location, const std::u16string& strOriginalPath);
    /// To be called in the handler of the failure. True when something stood in the way.
    bool reportCreationFailure(const foundation::storage::vfs::Exception& failure,
                               const std::u16string& strOriginalPath);
    void reportWhatStandsThere(const AbsoluteIRI& location, const std::u16string& strOriginalPath);
};

/// The engine of `rmdir`: removes a folder, or all that match a wildcard name, with their contents if asked
/// to. A file that the user names is never deleted. The failure of one item ends that item only; the texts
/// are collected.
class RemoveDir : public DirManipulator {
public:
    ~RemoveDir() override = default;

    Status Process(std::vector<std::u16string> paths, std::vector<std::u16string> options) override;
    /// A separator behind the name of a link is dropped first: what is meant is the link.
    Status Process(std::vector<std::u16string> paths) override;

protected:
    using ExistenceTypeExtended = foundation::storage::provider::ExistenceTypeExtended;

    /// "s", "S" and "resolvesymboliclinks", each at most once, in either order. Raises
    /// "KORVEX:RMDIR:InvalidOption" for another word among the first two; later ones are not looked at.
    void ParseOptArgs(std::vector<std::u16string> options) override;
    void reportByKey(const char* key) override;
    /// "virtualfilesystem" for a text with a scheme, otherwise "RMDIR".
    std::string GetErrorMsgIdPrefix() override;
    /// Both do nothing: a removal does its own work on the search path, item by item.
    void MarkDirOutOfDate(std::u16string& folder) override;
    void RequestPathRefresh() const override;
    /// True when something was removed and nothing failed. Raises `vfs::Exception` when the storage cannot
    /// even tell what the location is.
    bool DirProcess(const AbsoluteIRI& location, const std::u16string& strOriginalPath) override;

private:
    // The steps of a removal. Each is true when it removed something. `topLevel` tells an item that the user
    // named or matched from one that was found in a tree. `failedList` collects texts until it is full
    // (`limitReached`), `somethingFailed` is set by each failure, `removedFolders` gets the local folders
    // that are gone.

    bool removeSingleItem(const ExistenceTypeExtended& type, const AbsoluteIRI& location,
                          std::u16string& failedList, bool& limitReached, bool& somethingFailed,
                          std::vector<AbsoluteIRI>& removedFolders);
    /// All items in `parent`, or those that match the name of `target`.
    bool removeMultipleItems(const Folder& parent, bool topLevel, std::u16string& failedList,
                             bool& limitReached, bool& somethingFailed,
                             std::vector<AbsoluteIRI>& removedFolders,
                             const std::optional<AbsoluteIRI>& target, const std::u16string& strOriginalPath);
    bool doFileRemoval(const ExistenceTypeExtended& type, const AbsoluteIRI& location, bool topLevel,
                       std::u16string& failedList, bool& limitReached, bool& somethingFailed);
    /// With what it holds, if that was asked for. Trees may be of any depth.
    bool doFolderRemoval(const ExistenceTypeExtended& type, const AbsoluteIRI& location, bool topLevel,
                         std::u16string& failedList, bool& limitReached, bool& somethingFailed,
                         std::vector<AbsoluteIRI>& removedFolders);
    /// The last resort: the folder with all that is left in it, in one operation of the storage.
    bool doFolderRemovalRecursive(std::unique_ptr<Folder> folder, const AbsoluteIRI& location,
                                  bool& somethingFailed);

    // The removal of a tree. It is no recursion, since a tree may be deeper than the stack: the folders whose
    // removal has begun stand in a list.

    /// What the steps share: references to the last four arguments above.
    struct Progress;
    /// A folder that comes up among the items of another one.
    struct FoundFolder;
    /// Items that are being removed one by one.
    struct Items;
    /// The removal of one folder.
    struct FolderRemoval;
    class FolderRemovals;

    /// Goes on with the removal of the last folder until it is over, or until a folder in it has to go first.
    std::optional<FoundFolder> proceed(FolderRemovals& removals, const Progress& progress);
    /// False when there is nothing to be done.
    bool begin(FolderRemoval& removal, const FolderRemovals& removals) const;
    /// Goes on with what the folder holds, up to the next folder in it.
    std::optional<FoundFolder> removeMultipleItems(FolderRemoval& removal, const Progress& progress);
    /// Goes on with the items, up to the next folder among them.
    std::optional<FoundFolder> removeUpToFolder(Items& items, bool topLevel, const Progress& progress);
    /// The folder itself, after what it held.
    void removeEmptied(FolderRemoval& removal, const Progress& progress);

    /// A folder that is not walked into and not writable is refused untried.
    void recordReadOnlyFolder(const AbsoluteIRI& location, const Progress& progress);
    /// What a failure in the removal of a folder ends in; true when the folder, or something before, went.
    bool recoverFromFolderFailure(const foundation::storage::vfs::Exception& failure, FolderRemoval& removal,
                                  const Progress& progress);
    void reportMissingItem(const AbsoluteIRI& location, const std::u16string& strOriginalPath);
    void reportRemovalFailure(const foundation::storage::vfs::Exception& failure,
                              const std::u16string& strOriginalPath);
    void reportNothingRemoved(const ExistenceTypeExtended& type, const std::u16string& strOriginalPath);

    bool recursive_ = false;
    bool resolveLinks_ = false;
};

/// The source file's name in trace scopes of these commands.
inline constexpr std::string_view dirManipSourceFile = "io/filesystem/filemanip/DirManip";

}  // namespace korvex::filemanip
