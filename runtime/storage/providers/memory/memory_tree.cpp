// The trees of the memory provider. A path is walked component by component, as an operating system does it,
// so that `..` behind something that is not there, or is a file, leads nowhere.
#include "runtime/storage/providers/memory/memory_tree.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "runtime/storage/location.h"

namespace korvex::runtime::storage {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

namespace {

void takeChildren(MemoryNode& node, std::vector<std::unique_ptr<MemoryNode>>& taken) {
    for (auto& [name, child] : node.children)
        taken.push_back(std::move(child));
    node.children.clear();
}

}  // namespace

MemoryNode::~MemoryNode() {
    std::vector<std::unique_ptr<MemoryNode>> left;
    takeChildren(*this, left);
    while (!left.empty()) {
        const std::unique_ptr<MemoryNode> node = std::move(left.back());
        left.pop_back();
        takeChildren(*node, left);
    }
}

std::unique_ptr<MemoryNode> MemoryNode::makeFile(std::string bytes) {
    auto file = std::make_unique<MemoryNode>();
    file->isFolder = false;
    file->content = std::make_shared<const std::string>(std::move(bytes));
    return file;
}

std::unique_ptr<MemoryNode> MemoryNode::copy() const {
    auto made = std::make_unique<MemoryNode>();
    made->isFolder = isFolder;
    made->isWritable = isWritable;
    made->changed = changed;
    made->content = content;
    return made;
}

bool MemoryWalk::passes(const MemoryNode& node) const noexcept {
    return std::find(nodes_.begin(), nodes_.end(), &node) != nodes_.end();
}

bool MemoryWalk::step(std::u16string_view component) {
    if (!node().isFolder) return false;
    if (component == u".") return true;
    if (component == u"..") {
        // A root is its own parent.
        if (!isAtRoot()) leave();
        return true;
    }
    const auto child = node().children.find(component);
    if (child == node().children.end()) return false;
    enter(component, *child->second);
    return true;
}

bool MemoryWalk::stepOrMakeFolder(std::u16string_view component) {
    if (step(component)) return true;
    if (!node().isFolder || !node().isWritable) return false;
    const MemoryEntry made{.folder = &node(), .name = std::u16string(component)};
    made.put(std::make_unique<MemoryNode>());
    return step(component);
}

std::u16string_view MemoryWalk::leave() {
    const std::u16string_view name = names_.back();
    names_.pop_back();
    nodes_.pop_back();
    return name;
}

std::vector<std::u16string_view> MemoryWalk::namesBelow(const MemoryNode& above) const {
    const auto passed = std::find(nodes_.begin(), nodes_.end(), &above);
    if (passed == nodes_.end()) return {};
    return {names_.begin() + (passed - nodes_.begin()), names_.end()};
}

std::u16string MemoryWalk::path() const {
    std::u16string path;
    for (const std::u16string_view name : names_)
        path.append(u"/").append(name);
    return path.empty() ? u"/" : path;
}

void MemoryWalk::enter(std::u16string_view name, MemoryNode& child) {
    names_.push_back(name);
    nodes_.push_back(&child);
}

void MemoryEntry::put(std::unique_ptr<MemoryNode> placed) const {
    folder->children.insert_or_assign(name, std::move(placed));
    folder->changed = std::chrono::system_clock::now();
}

std::unique_ptr<MemoryNode> MemoryEntry::take() const {
    auto taken = folder->children.extract(name);
    folder->changed = std::chrono::system_clock::now();
    return std::move(taken.mapped());
}

std::optional<vfs::ErrorCode> obstacleToFile(const MemoryEntry& place, ReplacementPolicy policy) noexcept {
    if (place.node != nullptr && place.node->isFolder) return vfs::resourceAlreadyExists;
    if (place.folder == nullptr) return vfs::resourceNotFound;
    const bool isProtected = place.node != nullptr && !place.node->isWritable;
    if (isProtected && policy != provider::ReplaceAny) return vfs::permissionDenied;
    if (!place.folder->isWritable) return vfs::permissionDenied;
    return std::nullopt;
}

std::optional<vfs::ErrorCode> obstacleToFolder(const MemoryEntry& place, ReplacementPolicy policy) noexcept {
    if (place.node != nullptr) {
        const bool isMerged = place.node->isFolder && policy != provider::ReplaceWritable;
        return isMerged ? std::nullopt : std::optional(vfs::resourceAlreadyExists);
    }
    if (place.folder == nullptr) return vfs::resourceNotFound;
    if (!place.folder->isWritable) return vfs::permissionDenied;
    return std::nullopt;
}

bool isDots(std::u16string_view name) noexcept { return name == u"." || name == u".."; }

std::vector<std::u16string_view> componentsOf(std::u16string_view path) {
    std::vector<std::u16string_view> components;
    while (!path.empty()) {
        const std::u16string_view component = path.substr(0, path.find(u'/'));
        if (!component.empty()) components.push_back(component);
        path.remove_prefix(std::min(component.size() + 1, path.size()));
    }
    return components;
}

std::optional<MemoryWalk> MemoryHosts::find(const AbsoluteIRI& location) const {
    const auto root = roots_.find(location.parts().host);
    MemoryWalk walk(root == roots_.end() ? *emptyRoot_ : *root->second);
    for (const std::u16string_view component : componentsOf(location.parts().path)) {
        if (!walk.step(component)) return std::nullopt;
    }
    return walk;
}

MemoryEntry MemoryHosts::entryAt(const AbsoluteIRI& location) {
    MemoryWalk walk(rootOf(location));
    const auto components = componentsOf(location.parts().path);
    for (auto component = components.begin(); component != components.end(); ++component) {
        if (walk.step(*component)) continue;
        const bool isLast = std::next(component) == components.end();
        if (!isLast || !walk.node().isFolder) return {};
        return {.folder = &walk.node(), .name = std::u16string(*component)};
    }
    MemoryEntry entry;
    entry.node = &walk.node();
    if (!walk.isAtRoot()) {
        entry.name = walk.leave();
        entry.folder = &walk.node();
    }
    return entry;
}

bool MemoryHosts::isBelow(const AbsoluteIRI& location, const MemoryNode& node) const {
    const auto root = roots_.find(location.parts().host);
    if (root == roots_.end()) return false;
    MemoryWalk walk(*root->second);
    const auto components = componentsOf(location.parts().path);
    const bool isThere = std::all_of(components.begin(), components.end(),
                                     [&](std::u16string_view component) { return walk.step(component); });
    return walk.passes(node) && !(isThere && &walk.node() == &node);
}

MemoryNode& MemoryHosts::rootOf(const AbsoluteIRI& location) {
    auto& root = roots_[location.parts().host];
    if (!root) root = std::make_unique<MemoryNode>();
    return *root;
}

}  // namespace korvex::runtime::storage
