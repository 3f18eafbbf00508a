// What is where in memory, and how it gets there.
#include "runtime/storage/providers/memory/memory_provider.h"

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

#include "runtime/storage/location.h"
#include "runtime/storage/name_pattern.h"
#include "runtime/storage/transfer_progress.h"

namespace korvex::runtime::storage {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

namespace {

constexpr const char16_t* makingFile = u"making a file";
constexpr const char16_t* makingFolder = u"making a folder";

class Input : public InputStream {
public:
    explicit Input(const MemoryNode& file)
        : content_(file.content),
          attributes_{.size = file.size(), .changed = file.changed, .isWritable = file.isWritable} {}

    std::size_t read(std::span<std::byte> buffer) override {
        const auto left = std::as_bytes(std::span(*content_)).subspan(position_);
        const std::size_t count = std::min(buffer.size(), left.size());
        std::copy_n(left.begin(), count, buffer.begin());
        position_ += count;
        return count;
    }
    FileAttributes attributes() const override { return attributes_; }

private:
    const std::shared_ptr<const std::string> content_;
    const FileAttributes attributes_;
    std::size_t position_ = 0;
};

}  // namespace

class MemoryProvider::Output : public OutputStream {
public:
    Output(MemoryProvider& provider, AbsoluteIRI location, ReplacementPolicy policy)
        : provider_(provider), location_(std::move(location)), policy_(policy) {}

    void write(std::span<const std::byte> bytes) override {
        bytes_.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    void setAttributes(const FileAttributes& attributes) override { attributes_ = attributes; }
    void commit() override {
        auto file = MemoryNode::makeFile(std::move(bytes_));
        file->changed = attributes_.changed.value_or(file->changed);
        file->isWritable = attributes_.isWritable.value_or(true);
        const std::unique_lock lock(provider_.guard_);
        provider_.replaceFile(location_, policy_, std::move(file));
    }

private:
    MemoryProvider& provider_;
    const AbsoluteIRI location_;
    const ReplacementPolicy policy_;
    FileAttributes attributes_;
    std::string bytes_;
};

ExistenceType MemoryProvider::existence(const AbsoluteIRI& location) {
    const std::shared_lock lock(guard_);
    const auto walk = hosts_.find(location);
    if (!walk) return provider::AsNeither;
    return walk->node().isFolder ? provider::AsFolder : provider::AsFile;
}

ExistenceTypeExtended MemoryProvider::extendedExistence(const AbsoluteIRI& location) {
    const std::shared_lock lock(guard_);
    const auto walk = hosts_.find(location);
    if (!walk) return provider::ExtendedNothing;
    return walk->node().isFolder ? provider::ExtendedFolder : provider::ExtendedFile;
}

CanonicalAbsoluteIRI MemoryProvider::canonicalLocation(const AbsoluteIRI& location) {
    const std::shared_lock lock(guard_);
    const auto walk = hosts_.find(location);
    if (!walk) throw vfs::Exception(vfs::resourceNotFound, location, u"resolving the location");
    const AbsoluteIRI::Parts& parts = location.parts();
    return CanonicalAbsoluteIRI(makeLocation(parts.scheme, parts.host, walk->path()));
}

bool MemoryProvider::isWritable(const AbsoluteIRI& location) {
    const std::shared_lock lock(guard_);
    if (const auto walk = hosts_.find(location)) return walk->node().isWritable;
    const auto above = location.hasParent() ? hosts_.find(location.getParent()) : std::nullopt;
    return above && above->node().isFolder && above->node().isWritable;
}

void MemoryProvider::setWritable(const AbsoluteIRI& location, bool isWritable) {
    const std::unique_lock lock(guard_);
    // Made when it is missing: an untouched root has to remember it too.
    hosts_.rootOf(location);
    const auto walk = hosts_.find(location);
    if (!walk) throw vfs::Exception(vfs::resourceNotFound, location, u"write protection");
    walk->node().isWritable = isWritable;
}

std::vector<ListedEntry> MemoryProvider::list(const AbsoluteIRI& folder, std::u16string_view pattern) {
    stopIfInterrupted(folder);
    const NamePattern wanted(pattern);
    const std::shared_lock lock(guard_);
    std::vector<ListedEntry> entries;
    for (const auto& [name, child] : folderAt(folder).children) {
        if (wanted.matches(name)) entries.push_back({name, child->isFolder});
    }
    return entries;
}

std::unique_ptr<InputStream> MemoryProvider::read(const AbsoluteIRI& file) {
    const std::shared_lock lock(guard_);
    return std::make_unique<Input>(fileAt(file));
}

std::unique_ptr<OutputStream> MemoryProvider::write(const AbsoluteIRI& file, ReplacementPolicy policy) {
    const std::unique_lock lock(guard_);
    if (const auto obstacle = obstacleToFile(hosts_.entryAt(file), policy))
        throw vfs::Exception(*obstacle, file, makingFile);
    return std::make_unique<Output>(*this, file, policy);
}

void MemoryProvider::createFolder(const AbsoluteIRI& folder) {
    const std::unique_lock lock(guard_);
    const MemoryEntry place = hosts_.entryAt(folder);
    if (const auto obstacle = obstacleToFolder(place, provider::ReplaceWritable))
        throw vfs::Exception(*obstacle, folder, makingFolder);
    place.put(std::make_unique<MemoryNode>());
}

void MemoryProvider::createFolderRecursive(const AbsoluteIRI& folder) {
    const AbsoluteIRI::Parts& parts = folder.parts();
    const std::unique_lock lock(guard_);
    if (hosts_.find(folder)) throw vfs::Exception(vfs::resourceAlreadyExists, folder, makingFolder);
    MemoryWalk walk(hosts_.rootOf(folder));
    for (const std::u16string_view component : componentsOf(parts.path)) {
        if (walk.stepOrMakeFolder(component)) continue;
        const AbsoluteIRI here = makeLocation(parts.scheme, parts.host, walk.path());
        if (!walk.node().isFolder) throw vfs::Exception(vfs::resourceAlreadyExists, here, makingFolder);
        throw vfs::Exception(vfs::permissionDenied, AbsoluteIRI(here, std::u16string(component)),
                             makingFolder);
    }
}

void MemoryProvider::putFile(const AbsoluteIRI& location, std::string bytes) {
    auto components = componentsOf(location.parts().path);
    if (components.empty()) throw vfs::Exception(vfs::resourceAlreadyExists, location, makingFile);
    const std::u16string name(components.back());
    components.pop_back();
    if (isDots(name)) throw vfs::Exception(vfs::invalidLocation, location, makingFile);

    const std::unique_lock lock(guard_);
    MemoryNode& parent = makeFolders(location, components, makingFile);
    const auto standing = parent.children.find(name);
    if (standing != parent.children.end() && standing->second->isFolder)
        throw vfs::Exception(vfs::resourceAlreadyExists, location, makingFile);
    const MemoryEntry place{.folder = &parent, .name = name};
    place.put(MemoryNode::makeFile(std::move(bytes)));
}

void MemoryProvider::putFolder(const AbsoluteIRI& location) {
    const std::unique_lock lock(guard_);
    const auto standing = hosts_.find(location);
    if (standing && !standing->node().isFolder)
        throw vfs::Exception(vfs::resourceAlreadyExists, location, makingFolder);
    makeFolders(location, componentsOf(location.parts().path), makingFolder);
}

MemoryNode& MemoryProvider::makeFolders(const AbsoluteIRI& location,
                                        std::span<const std::u16string_view> components,
                                        const char16_t* operation) {
    MemoryWalk walk(hosts_.rootOf(location));
    for (const std::u16string_view component : components) {
        if (!walk.stepOrMakeFolder(component))
            throw vfs::Exception(vfs::invalidLocation, location, operation);
    }
    // The last component was there already, as a file.
    if (!walk.node().isFolder) throw vfs::Exception(vfs::invalidLocation, location, operation);
    return walk.node();
}

const MemoryNode& MemoryProvider::fileAt(const AbsoluteIRI& location) const {
    const auto walk = hosts_.find(location);
    if (!walk) throw vfs::Exception(vfs::resourceNotFound, location, u"looking for a file");
    if (walk->node().isFolder) throw vfs::Exception(vfs::invalidLocation, location, u"looking for a file");
    return walk->node();
}

const MemoryNode& MemoryProvider::folderAt(const AbsoluteIRI& location) const {
    const auto walk = hosts_.find(location);
    if (!walk || !walk->node().isFolder)
        throw vfs::Exception(vfs::resourceNotFound, location, u"looking for a folder");
    return walk->node();
}

void MemoryProvider::replaceFile(const AbsoluteIRI& location, ReplacementPolicy policy,
                                 std::unique_ptr<MemoryNode> file) {
    const MemoryEntry place = hosts_.entryAt(location);
    if (const auto obstacle = obstacleToFile(place, policy))
        throw vfs::Exception(*obstacle, location, makingFile);
    place.put(std::move(file));
}

}  // namespace korvex::runtime::storage
