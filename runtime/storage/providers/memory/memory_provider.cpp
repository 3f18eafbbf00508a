// Storage in the process. A path is walked component by component, as an operating system does it, so that
// `..` behind something that is not there, or is a file, leads nowhere.
#include "runtime/storage/providers/memory/memory_provider.h"

#include <algorithm>
#include <mutex>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "runtime/storage/location.h"

namespace korvex::runtime::storage {

namespace vfs = foundation::storage::vfs;

namespace {

constexpr const char16_t* makingFile = u"making a file";
constexpr const char16_t* makingFolder = u"making a folder";

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

}  // namespace

struct MemoryProvider::Node {
    bool isFolder = true;
    std::string bytes;
    std::map<std::u16string, std::unique_ptr<Node>, std::less<>> children;
};

/// The way from a root down to a node: the nodes passed, and the names that led from each to the next.
class MemoryProvider::Walk {
public:
    explicit Walk(Node& root) : nodes_{&root} {}

    Node& node() const noexcept { return *nodes_.back(); }

    /// False, without a step, when the present node is no folder or has no such child.
    bool step(std::u16string_view component) {
        if (!node().isFolder) return false;
        if (component == u".") return true;
        if (component == u"..") {
            leave();
            return true;
        }
        const auto child = node().children.find(component);
        if (child == node().children.end()) return false;
        enter(component, *child->second);
        return true;
    }

    /// The same, but makes a folder where the present folder has no such child.
    bool stepOrMakeFolder(std::u16string_view component) {
        if (step(component)) return true;
        if (!node().isFolder) return false;
        auto& made = node().children[std::u16string(component)];
        made = std::make_unique<Node>();
        enter(component, *made);
        return true;
    }

    /// The path with its dots gone.
    std::u16string path() const {
        std::u16string path;
        for (const std::u16string_view name : names_)
            path.append(u"/").append(name);
        return path.empty() ? u"/" : path;
    }

private:
    void enter(std::u16string_view name, Node& child) {
        names_.push_back(name);
        nodes_.push_back(&child);
    }

    /// A root is its own parent.
    void leave() {
        if (names_.empty()) return;
        names_.pop_back();
        nodes_.pop_back();
    }

    std::vector<Node*> nodes_;
    std::vector<std::u16string_view> names_;
};

MemoryProvider::MemoryProvider() : emptyRoot_(std::make_unique<Node>()) {}
MemoryProvider::~MemoryProvider() = default;

ExistenceType MemoryProvider::existence(const AbsoluteIRI& location) {
    const std::shared_lock lock(guard_);
    const std::optional<Walk> walk = find(location);
    if (!walk) return foundation::storage::provider::AsNeither;
    return walk->node().isFolder ? foundation::storage::provider::AsFolder
                                 : foundation::storage::provider::AsFile;
}

ExistenceTypeExtended MemoryProvider::extendedExistence(const AbsoluteIRI& location) {
    const std::shared_lock lock(guard_);
    const std::optional<Walk> walk = find(location);
    if (!walk) return foundation::storage::provider::ExtendedNothing;
    return walk->node().isFolder ? foundation::storage::provider::ExtendedFolder
                                 : foundation::storage::provider::ExtendedFile;
}

CanonicalAbsoluteIRI MemoryProvider::canonicalLocation(const AbsoluteIRI& location) {
    const std::shared_lock lock(guard_);
    const std::optional<Walk> walk = find(location);
    if (!walk) throw vfs::Exception(vfs::resourceNotFound, location, u"resolving the location");
    const AbsoluteIRI::Parts& parts = location.parts();
    return CanonicalAbsoluteIRI(makeLocation(parts.scheme, parts.host, walk->path()));
}

void MemoryProvider::putFile(const AbsoluteIRI& location, std::string bytes) {
    auto components = componentsOf(location.parts().path);
    if (components.empty()) throw vfs::Exception(vfs::resourceAlreadyExists, location, makingFile);
    const std::u16string name(components.back());
    components.pop_back();
    if (isDots(name)) throw vfs::Exception(vfs::invalidLocation, location, makingFile);

    const std::unique_lock lock(guard_);
    Node& parent = makeFolders(location, components, makingFile);
    auto& file = parent.children[name];
    if (!file) file = std::make_unique<Node>(Node{.isFolder = false, .bytes = {}, .children = {}});
    if (file->isFolder) throw vfs::Exception(vfs::resourceAlreadyExists, location, makingFile);
    file->bytes = std::move(bytes);
}

void MemoryProvider::putFolder(const AbsoluteIRI& location) {
    const std::unique_lock lock(guard_);
    const std::optional<Walk> standing = find(location);
    if (standing && !standing->node().isFolder) {
        throw vfs::Exception(vfs::resourceAlreadyExists, location, makingFolder);
    }
    makeFolders(location, componentsOf(location.parts().path), makingFolder);
}

std::optional<MemoryProvider::Walk> MemoryProvider::find(const AbsoluteIRI& location) const {
    const auto root = roots_.find(location.parts().host);
    Walk walk(root == roots_.end() ? *emptyRoot_ : *root->second);
    for (const std::u16string_view component : componentsOf(location.parts().path)) {
        if (!walk.step(component)) return std::nullopt;
    }
    return walk;
}

MemoryProvider::Node& MemoryProvider::makeFolders(const AbsoluteIRI& location,
                                                  std::span<const std::u16string_view> components,
                                                  const char16_t* operation) {
    auto& root = roots_[location.parts().host];
    if (!root) root = std::make_unique<Node>();
    Walk walk(*root);
    for (const std::u16string_view component : components) {
        if (!walk.stepOrMakeFolder(component))
            throw vfs::Exception(vfs::invalidLocation, location, operation);
    }
    // The last component was there already, as a file.
    if (!walk.node().isFolder) throw vfs::Exception(vfs::invalidLocation, location, operation);
    return walk.node();
}

}  // namespace korvex::runtime::storage
