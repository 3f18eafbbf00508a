// Storage in the process, for tests and scratch work: "memory://box/folder/file".
//
// Every host is a tree of its own, whose root is there from the start. Names are any text without "/",
// compared unit by unit; `.` and `..` in a path mean what they mean on a disk. There are no links.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <shared_mutex>
#include <span>
#include <string>
#include <string_view>

#include "runtime/storage/provider.h"

namespace korvex::runtime::storage {

class MemoryProvider : public Provider {
public:
    MemoryProvider();
    ~MemoryProvider() override;

    ExistenceType existence(const AbsoluteIRI& location) override;
    ExistenceTypeExtended extendedExistence(const AbsoluteIRI& location) override;
    CanonicalAbsoluteIRI canonicalLocation(const AbsoluteIRI& location) override;

    /// Makes a file, and the folders on the way; a file that stands there gets the new content. Raises
    /// `vfs::Exception`: `resourceAlreadyExists` when a folder stands there, `invalidLocation` when a
    /// component on the way is a file or the location ends in a dot component. Folders that were made on the
    /// way stay.
    void putFile(const AbsoluteIRI& location, std::string bytes);
    /// Makes a folder, and those on the way; one that stands there stays as it is. Raises `vfs::Exception`:
    /// `resourceAlreadyExists` when a file stands there, `invalidLocation` when a component on the way is a
    /// file. Folders that were made on the way stay.
    void putFolder(const AbsoluteIRI& location);

private:
    struct Node;
    class Walk;

    /// The way to a location; nothing where there is none. The caller holds the lock, as for `makeFolders`.
    std::optional<Walk> find(const AbsoluteIRI& location) const;
    /// The folder at the end of the components, made where it is missing.
    Node& makeFolders(const AbsoluteIRI& location, std::span<const std::u16string_view> components,
                      const char16_t* operation);

    std::shared_mutex guard_;
    /// What every host looks like into which nothing was put.
    const std::unique_ptr<Node> emptyRoot_;
    std::map<std::u16string, std::unique_ptr<Node>> roots_;
};

}  // namespace korvex::runtime::storage
