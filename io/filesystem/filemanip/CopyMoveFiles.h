// The engine of `copyfile` and `movefile`: transfers a file, a folder, or all that a wildcard matches.
//
// The two commands share every step but those that the subclasses fill: the transfer itself, what becomes of
// a folder at a destination that exists, and which folders the environment is told about.
#pragma once

#include <boost/optional.hpp>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/filesystem_core.h"
#include "platform/storage_vfs.h"

namespace korvex::filemanip {

/// What becomes of a symbolic link that is the source of a transfer.
enum class LinkBehavior : std::int32_t {
    preserve = 0,   ///< it is transferred as a link
    resolve = 1,    ///< it is followed
    osdefault = 2,  ///< the storage layer's own rule
};

/// The engine lives for one call. A failure ends up in the status and stops the run where it stands: what was
/// transferred before stays transferred.
class CopyMoveFiles : public io::filesystem::core::FileManipulator {
public:
    using AbsoluteIRI = foundation::storage::vfs::AbsoluteIRI;
    using File = foundation::storage::vfs::File;
    using Folder = foundation::storage::vfs::Folder;
    using Item = foundation::storage::vfs::Item;
    using ListEntry = foundation::storage::vfs::ListEntry;
    using FolderListing = foundation::storage::vfs::FolderListing<ListEntry>;
    using ExistenceType = foundation::storage::provider::ExistenceType;
    using ReplacementPolicy = foundation::storage::provider::ReplacementPolicy;
    using StorageFailure = foundation::storage::vfs::Exception;
    using Status = io::filesystem::core::Status;

    explicit CopyMoveFiles(LinkBehavior linkBehavior) : linkBehavior_(linkBehavior) {}

    /// Reads up to two options, a force word and a link behaviour in either order. Raises "InvalidOption" for
    /// any other. Entries past the second are never looked at.
    void ParseOptArgs(std::vector<std::u16string> options) override;

    /// Options first, then the run. Raises what `ParseOptArgs` raises.
    Status Process(std::vector<std::u16string> paths, std::vector<std::u16string> options) override;

    /// The whole run, from one or two typed paths to the after-effects. Raises what is no failure of storage:
    /// above all `fl::filesystem::PathNotFound` for a folder as source when the current folder is gone.
    Status Process(std::vector<std::u16string> paths) override;

protected:
    /// What one call of the storage layer is to do.
    struct TransferRequest {
        Item destination;
        bool restoreReadOnly;
        bool isCopy;
        bool overwrite;
    };

    // The order of these is the order of the environment's binary interface.

    /// Starts the transfer. Raises what the storage layer raises.
    virtual void doVfsOperation(const Item& source, const Item& destination, bool overwrite) = 0;
    virtual bool processFolder(const Folder& source, const Folder& destination, bool destinationExists) = 0;
    virtual void RefreshAffectedDirectories(std::u16string sourcePath, std::u16string destinationPath) = 0;
    virtual bool isCopy() const = 0;
    virtual LinkBehavior getLinkBehavior() const = 0;
    virtual void setLinkBehavior(LinkBehavior behavior) = 0;

    /// The one place where a transfer starts, and where its failure becomes a message. True when it took
    /// place, or was passed over without an error: an item that holds the destination itself.
    bool callVfsAPI(const Item& source, const Item& destination);

    void performOperation(const File& source, const TransferRequest& request);
    /// A folder that moves takes its entries off the search path; when the move fails they are put back.
    void performOperation(const Folder& source, const TransferRequest& request);

    /// Makes an item writable; a storage failure is traced and dropped.
    void makeWritable(const Item& item);
    /// Whether a folder was writable, and whether it failed to become so. Neither command asks for it.
    std::pair<bool, bool> SetParentWritable(Folder& parent);

    bool force_ = false;
    /// A path has a scheme: failures are told in the words of the storage layer.
    bool isIRI_ = false;
    LinkBehavior linkBehavior_;

private:
    /// The two ends of a run, as far as they are known.
    struct Endpoints;

    [[noreturn]] void throwInvalidOption(const std::u16string& text) const;

    // From the typed texts to two locations. False when the run is over: the failure is stored.
    io::filesystem::core::ResolveSymbolicLinks intakeMode() const;
    bool takeInSource(Endpoints& ends);
    bool takeInDestination(Endpoints& ends, const std::vector<std::u16string>& paths);
    bool reportWebLocationNotWritable(bool isWritten);
    bool areSamePlace(const Endpoints& ends);
    void runTransfer(Endpoints& ends, const std::vector<std::u16string>& paths);
    void reportFailureOfRun(const StorageFailure& failure, const std::u16string& source);

    // One file.
    bool ProcessOneFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                        const std::u16string& destinationText, bool destinationEndsInSeparator);
    void reportNoSuchFolder(const AbsoluteIRI& target, ExistenceType kind,
                            const std::u16string& destinationText);
    void copySymbolicLink(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                          const std::u16string& destinationPath);

    // A folder, or what a wildcard matches.
    bool ProcessDirectory(const AbsoluteIRI& source, const std::u16string& sourceText,
                          const AbsoluteIRI& destination, const std::u16string& destinationText,
                          const ExistenceType& sourceKind);
    bool processExistingFolder(const Folder& source, const Folder& destination,
                               const ExistenceType& destinationKind,
                               const boost::optional<Folder>& createdParent);
    bool processMatches(const AbsoluteIRI& source, const std::u16string& sourceText,
                        const Folder& destination, const ExistenceType& destinationKind);
    bool createMissingParent(const Folder& destination, boost::optional<Folder>& createdParent);
    bool createDestination(const AbsoluteIRI& source, const Folder& destination);
    bool preprocessFolder(const Folder& source, const Folder& destination, bool destinationExists);
    bool processFolderContents(const FolderListing& listing, const Folder& destination);
    bool mayGiveNoticesOf(const File& first, const Folder& destination) const;
    bool targetsAreWritable(const std::vector<const Item*>& items, const Folder& destination,
                            std::vector<Item>& targets);
    void copyWholeFolder(const Folder& source, const Folder& target, ReplacementPolicy policy);
    void moveWholeFolder(const Folder& source, const Folder& target, ReplacementPolicy policy,
                         bool restoreReadOnly);

    // From a failure of a transfer to its message.
    bool reportTransferFailure(const StorageFailure& failure, const Item& source, const Item& destination);
    void reportResourceExists(const StorageFailure& failure, const Item& source, const Item& destination);
    void reportResourceNotFound(const StorageFailure& failure, const Item& source);
    void reportPermissionDenied(const Item& source, const AbsoluteIRI& failedLocation);
    void reportStorageFailure(const StorageFailure& failure, const std::u16string& path);

    // Write protection. Each report speaks for the command, whatever scheme the path has.
    template <class Handle>
    bool IsWritable(const AbsoluteIRI& location);
    void reportReadOnly(const std::u16string& path);
    void reportReadPermission(const std::u16string& path);
    void reportWritePermission(const std::u16string& path);
    void reportFolderPermission(const std::u16string& path);
    template <class Plain, class WithFlag>
    void reportPermission(std::string_view plainKey, std::string_view flagKey, const std::u16string& path);

    /// Whether a package may have something to say about the files that are transferred now.
    bool mayGiveNotices_ = true;
};

/// `copyfile`. A folder copied onto one that exists puts its contents there.
class CopyFiles final : public CopyMoveFiles {
public:
    // The two commands start from different behaviours, on purpose.
    CopyFiles() : CopyMoveFiles(LinkBehavior::osdefault) {}

protected:
    void reportByKey(const char* key) override;
    std::string GetErrorMsgIdPrefix() override;
    void doVfsOperation(const Item& source, const Item& destination, bool overwrite) override;
    bool processFolder(const Folder& source, const Folder& destination, bool destinationExists) override;
    void RefreshAffectedDirectories(std::u16string sourcePath, std::u16string destinationPath) override;
    bool isCopy() const override { return true; }
    LinkBehavior getLinkBehavior() const override { return linkBehavior_; }
    void setLinkBehavior(LinkBehavior behavior) override { linkBehavior_ = behavior; }
};

/// `movefile`. A folder moved to one that exists goes inside it, under its own name.
class MoveFiles final : public CopyMoveFiles {
public:
    MoveFiles() : CopyMoveFiles(LinkBehavior::preserve) {}

protected:
    void reportByKey(const char* key) override;
    std::string GetErrorMsgIdPrefix() override;
    void doVfsOperation(const Item& source, const Item& destination, bool overwrite) override;
    bool processFolder(const Folder& source, const Folder& destination, bool destinationExists) override;
    void RefreshAffectedDirectories(std::u16string sourcePath, std::u16string destinationPath) override;
    bool isCopy() const override { return false; }
    LinkBehavior getLinkBehavior() const override { return linkBehavior_; }
    void setLinkBehavior(LinkBehavior behavior) override { linkBehavior_ = behavior; }
};

/// The source file's name in trace scopes of these commands.
inline constexpr std::string_view copyMoveSourceFile = "io/filesystem/filemanip/CopyMoveFiles";

}  // namespace korvex::filemanip
