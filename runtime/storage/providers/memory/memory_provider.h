// Storage in the process, for tests and scratch work: "memory://box/folder/file".
//
// Every host is a tree of its own, whose root is there from the start and stays. Names are any text without
// "/", compared unit by unit; `.` and `..` in a path mean what they mean on a disk. There are no links.
//
// Files and folders have a time of last change and may be write-protected, each for itself. What is in a
// protected folder may change, but nothing is put in or taken out: that raises `permissionDenied`, at the
// location of what was to be put in or taken out. Copies and moves are one step for every other thread.
#pragma once

#include <memory>
#include <shared_mutex>
#include <span>
#include <string>
#include <string_view>

#include "runtime/storage/provider.h"
#include "runtime/storage/providers/memory/memory_tree.h"

namespace korvex::runtime::storage {

class MemoryProvider : public Provider {
public:
    ExistenceType existence(const AbsoluteIRI& location) override;
    ExistenceTypeExtended extendedExistence(const AbsoluteIRI& location) override;
    CanonicalAbsoluteIRI canonicalLocation(const AbsoluteIRI& location) override;

    bool isWritable(const AbsoluteIRI& location) override;
    void setWritable(const AbsoluteIRI& location, bool isWritable) override;
    std::vector<ListedEntry> list(const AbsoluteIRI& folder, std::u16string_view pattern) override;
    /// The content as it is at this moment, whatever becomes of the file.
    std::unique_ptr<InputStream> read(const AbsoluteIRI& file) override;
    std::unique_ptr<OutputStream> write(const AbsoluteIRI& file, ReplacementPolicy policy) override;

    void copyFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                  ReplacementPolicy policy) override;
    void moveFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                  ReplacementPolicy policy) override;
    void copyFolder(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                    ReplacementPolicy policy) override;
    void moveFolder(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                    ReplacementPolicy policy) override;
    void removeFile(const AbsoluteIRI& file) override;
    void removeFolder(const AbsoluteIRI& folder, FolderRemovalPolicy policy) override;
    void createFolder(const AbsoluteIRI& folder) override;
    void createFolderRecursive(const AbsoluteIRI& folder) override;

    /// Makes a file, and the folders on the way; a file that stands there gets the new content. Raises
    /// `vfs::Exception`: `resourceAlreadyExists` when a folder stands there, `invalidLocation` when a
    /// component on the way is a file, or missing in a protected folder, or the location ends in a dot
    /// component. Folders that were made on the way stay.
    void putFile(const AbsoluteIRI& location, std::string bytes);
    /// Makes a folder, and those on the way; one that stands there stays as it is. Raises `vfs::Exception`:
    /// `resourceAlreadyExists` when a file stands there, `invalidLocation` when a component on the way is a
    /// file. Folders that were made on the way stay.
    void putFolder(const AbsoluteIRI& location);

private:
    class Output;

    /// The caller holds the lock, as for all that follow.
    const MemoryNode& fileAt(const AbsoluteIRI& location) const;
    const MemoryNode& folderAt(const AbsoluteIRI& location) const;
    /// What a move or a removal takes away; raises `invalidLocation` for a root and for a dot component.
    MemoryEntry takenAt(const AbsoluteIRI& location, ExistenceType wanted);
    /// Where a transferred folder goes; raises `invalidLocation` for the folder itself and
    /// for a place inside of it.
    MemoryEntry placeOfFolder(const MemoryNode& source, const AbsoluteIRI& destination,
                              ReplacementPolicy policy);
    /// As that of all providers (transfers.h); `above` stands at the destination.
    void refuseMergeOntoItself(const AbsoluteIRI& source, MemoryNode& folder, const AbsoluteIRI& destination,
                               const MemoryNode& above) const;
    void replaceFile(const AbsoluteIRI& location, ReplacementPolicy policy, std::unique_ptr<MemoryNode> file);
    /// The folder at the end of the components, made where it is missing.
    MemoryNode& makeFolders(const AbsoluteIRI& location, std::span<const std::u16string_view> components,
                            const char16_t* operation);

    std::shared_mutex guard_;
    MemoryHosts hosts_;
};

}  // namespace korvex::runtime::storage
