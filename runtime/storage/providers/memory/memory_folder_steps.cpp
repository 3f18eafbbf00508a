// Walks over the memory provider's trees.
#include "runtime/storage/providers/memory/memory_folder_steps.h"

#include <string>
#include <utility>
#include <vector>

#include "runtime/interpreter/interrupts.h"

namespace korvex::runtime::storage {

namespace vfs = foundation::storage::vfs;

namespace {

/// The location of a folder further down; made only for those who want to know.
template <class Folders>
AbsoluteIRI locationBelow(const AbsoluteIRI& top, const Folders& folders, const std::u16string& name) {
    std::u16string path;
    for (const auto& folder : folders)
        path.append(folder.name).append(folder.name.empty() ? u"" : u"/");
    path += name;
    return path.empty() ? top : AbsoluteIRI(top, path);
}

class ContentsCopy {
public:
    ContentsCopy(const LocatedFolder& source, const LocatedFolder& destination, ReplacementPolicy policy,
                 ProgressCounter& progress)
        : source_(source), destination_(destination), policy_(policy), progress_(progress) {}

    void run() {
        enter({}, source_.node, destination_.node, nullptr);
        while (!open_.empty()) {
            OpenFolder& folder = open_.back();
            if (folder.next == folder.names.size()) {
                leave();
            } else {
                // By value: entering a folder moves the stack.
                const std::u16string name = std::move(folder.names[folder.next++]);
                copyEntry(folder, name);
            }
        }
    }

private:
    struct OpenFolder {
        std::u16string name;
        MemoryNode& source;
        MemoryNode& destination;
        /// Whose attributes the folder gets when everything is in it; null for one that was there.
        const MemoryNode* model;
        /// What was in the folder at the beginning: a merge with a folder further up may add to it.
        std::vector<std::u16string> names;
        std::size_t next = 0;
    };

    void copyEntry(const OpenFolder& folder, const std::u16string& name) {
        if (interpreter::isInterruptPending()) stopIfInterrupted(sourceLocation(name));
        MemoryNode& source = *folder.source.children.find(name)->second;
        const auto standing = folder.destination.children.find(name);
        const MemoryEntry place{
            .folder = &folder.destination,
            .name = name,
            .node = standing == folder.destination.children.end() ? nullptr : standing->second.get()};
        const auto obstacle =
            source.isFolder ? obstacleToFolder(place, policy_) : obstacleToFile(place, policy_);
        if (obstacle) raise(*obstacle, name);
        if (!source.isFolder) {
            copyFile(source, place);
        } else if (place.node != nullptr) {
            enter(name, source, *place.node, nullptr);
        } else {
            auto made = std::make_unique<MemoryNode>();
            MemoryNode& destination = *made;
            place.put(std::move(made));
            enter(name, source, destination, &source);
        }
    }

    void copyFile(const MemoryNode& source, const MemoryEntry& place) {
        if (place.node == &source) return;
        const std::uint64_t bytes = source.size();
        progress_.found(0, bytes);
        place.put(source.copy());
        progress_.finished(1, bytes, [&] { return sourceLocation(place.name); });
    }

    void enter(std::u16string name, MemoryNode& source, MemoryNode& destination, const MemoryNode* model) {
        OpenFolder folder{std::move(name), source, destination, model, {}};
        folder.names.reserve(source.children.size());
        for (const auto& [child, node] : source.children)
            folder.names.push_back(child);
        progress_.found(folder.names.size(), 0);
        open_.push_back(std::move(folder));
    }

    void leave() {
        const OpenFolder& folder = open_.back();
        if (folder.model != nullptr) {
            folder.destination.isWritable = folder.model->isWritable;
            folder.destination.changed = folder.model->changed;
        }
        progress_.finished(1, 0, [&] { return sourceLocation({}); });
        open_.pop_back();
    }

    AbsoluteIRI sourceLocation(const std::u16string& name) const {
        return locationBelow(source_.location, open_, name);
    }

    [[noreturn]] void raise(vfs::ErrorCode code, const std::u16string& name) const {
        throw vfs::Exception(code, locationBelow(destination_.location, open_, name), u"copying a folder");
    }

    const LocatedFolder source_;
    const LocatedFolder destination_;
    const ReplacementPolicy policy_;
    ProgressCounter& progress_;
    std::vector<OpenFolder> open_;
};

struct EmptiedFolder {
    std::u16string name;
    MemoryNode* node;
};

}  // namespace

void copyFolderContents(const LocatedFolder& source, const LocatedFolder& destination,
                        ReplacementPolicy policy, ProgressCounter& progress) {
    ContentsCopy(source, destination, policy, progress).run();
}

void removeFolderContents(const LocatedFolder& folder, ProgressCounter& progress) {
    std::vector<EmptiedFolder> open{{{}, &folder.node}};
    const auto locationOf = [&](const std::u16string& name) {
        return locationBelow(folder.location, open, name);
    };
    progress.found(folder.node.children.size(), 0);
    while (!open.empty()) {
        MemoryNode& present = *open.back().node;
        if (present.children.empty()) {
            const std::u16string name = std::move(open.back().name);
            open.pop_back();
            if (open.empty()) return;
            open.back().node->children.erase(name);
            progress.finished(1, 0, [&] { return locationOf(name); });
            continue;
        }
        const auto& [name, child] = *present.children.begin();
        if (interpreter::isInterruptPending()) stopIfInterrupted(locationOf(name));
        if (!present.isWritable)
            throw vfs::Exception(vfs::permissionDenied, locationOf(name), u"removing from a folder");
        if (child->isFolder) {
            progress.found(child->children.size(), 0);
            open.push_back({name, child.get()});
        } else {
            const std::u16string removed = name;
            present.children.erase(present.children.begin());
            progress.finished(1, 0, [&] { return locationOf(removed); });
        }
    }
}

}  // namespace korvex::runtime::storage
