// The trees of files and folders that the memory provider keeps, one a host. No locking here.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/storage/provider.h"

namespace korvex::runtime::storage {

/// A file or a folder.
struct MemoryNode {
    using Time = std::chrono::sys_time<std::chrono::nanoseconds>;
    using Children = std::map<std::u16string, std::unique_ptr<MemoryNode>, std::less<>>;

    MemoryNode() = default;
    /// Takes the tree down without recursion, whatever its depth.
    ~MemoryNode();
    MemoryNode(const MemoryNode&) = delete;
    MemoryNode& operator=(const MemoryNode&) = delete;

    static std::unique_ptr<MemoryNode> makeFile(std::string bytes);
    /// A copy of a file, or of a folder without what is in it. Content is shared: it never changes.
    std::unique_ptr<MemoryNode> copy() const;
    std::uint64_t size() const noexcept { return content ? content->size() : 0; }

    bool isFolder = true;
    bool isWritable = true;
    Time changed = std::chrono::system_clock::now();
    /// Of a file; null of a folder.
    std::shared_ptr<const std::string> content;
    Children children;
};

/// The way from a root down to a node: the nodes passed, and the names that led from each to the next.
class MemoryWalk {
public:
    explicit MemoryWalk(MemoryNode& root) : nodes_{&root} {}

    MemoryNode& node() const noexcept { return *nodes_.back(); }
    bool isAtRoot() const noexcept { return names_.empty(); }
    bool passes(const MemoryNode& node) const noexcept;

    /// False, without a step, when the present node is no folder or has no such child.
    bool step(std::u16string_view component);
    /// The same, but makes a folder where the present folder has no such child and may be written.
    bool stepOrMakeFolder(std::u16string_view component);
    /// Back to the folder above, and out with the name that led down. Not to be asked of a root.
    std::u16string_view leave();

    /// The names that led here from a node passed; none when it was not passed, or is where the way ends.
    std::vector<std::u16string_view> namesBelow(const MemoryNode& above) const;

    /// The path with its dots gone.
    std::u16string path() const;

private:
    void enter(std::u16string_view name, MemoryNode& child);

    std::vector<MemoryNode*> nodes_;
    std::vector<std::u16string_view> names_;
};

/// Where an entry is, or would be: the folder that holds it and its name there.
struct MemoryEntry {
    /// Null for a root, and for what no folder could hold.
    MemoryNode* folder = nullptr;
    std::u16string name;
    /// What stands there; null for nothing.
    MemoryNode* node = nullptr;

    /// Puts a node there, in place of what stood there.
    void put(std::unique_ptr<MemoryNode> placed) const;
    std::unique_ptr<MemoryNode> take() const;
};

/// Why a file, or a folder, may not be put in that place; nothing when it may. `resourceNotFound`,
/// `resourceAlreadyExists`, `permissionDenied`.
std::optional<foundation::storage::vfs::ErrorCode> obstacleToFile(const MemoryEntry& place,
                                                                  ReplacementPolicy policy) noexcept;
std::optional<foundation::storage::vfs::ErrorCode> obstacleToFolder(const MemoryEntry& place,
                                                                    ReplacementPolicy policy) noexcept;

bool isDots(std::u16string_view name) noexcept;
/// The names between the separators of a path.
std::vector<std::u16string_view> componentsOf(std::u16string_view path);

/// The roots, by host. A location given here must outlive what is handed back.
class MemoryHosts {
public:
    /// The way to a location; nothing where there is none.
    std::optional<MemoryWalk> find(const AbsoluteIRI& location) const;
    /// Where the location's last component is or would be.
    MemoryEntry entryAt(const AbsoluteIRI& location);
    /// Whether the way to the location leads through `node` and further.
    bool isBelow(const AbsoluteIRI& location, const MemoryNode& node) const;
    /// Made when it is not there yet.
    MemoryNode& rootOf(const AbsoluteIRI& location);

private:
    /// What every host looks like into which nothing was put.
    const std::unique_ptr<MemoryNode> emptyRoot_ = std::make_unique<MemoryNode>();
    std::map<std::u16string, std::unique_ptr<MemoryNode>> roots_;
};

}  // namespace korvex::runtime::storage
