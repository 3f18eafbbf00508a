// Handing out what a walk has found, folder by folder.
#include "runtime/listing/delivery.h"

#include <iterator>
#include <memory>
#include <utility>

namespace korvex::runtime::listing {

namespace {

using FolderText = std::shared_ptr<const std::u16string>;

struct Waiting {
    std::unique_ptr<ListedFolder> folder;
    FolderText above;
};

FolderText textBelow(const std::u16string& above, char16_t separator, const std::u16string& name) {
    std::u16string text;
    text.reserve(above.size() + 1 + name.size());
    text = above;
    if (!text.ends_with(separator)) text += separator;
    return std::make_shared<const std::u16string>(text += name);
}

/// Whether there was anything in this folder.
bool deliverFolder(ListedFolder& folder, const FolderText& text, const GlobPattern& pattern,
                   const Receiver& receiver) {
    if (!folder.wasListed) return false;
    for (FileNameWithStatLight& entry : folder.entries)
        entry.folder = text;
    const bool isEmpty = folder.entries.empty() && pattern.listsEverything(folder.positions);
    const bool isFound = isEmpty || !folder.entries.empty();
    if (receiver.display == nullptr) {
        if (receiver.entries.empty()) {
            receiver.entries = std::move(folder.entries);
        } else {
            std::move(folder.entries.begin(), folder.entries.end(), std::back_inserter(receiver.entries));
        }
    } else if (isFound || pattern.endsIn(folder.positions)) {
        receiver.entries = std::move(folder.entries);
        receiver.display(receiver.entries, isEmpty ? *text : receiver.prefix, isEmpty);
        receiver.entries.clear();
    }
    folder.entries = {};
    return isFound;
}

}  // namespace

bool deliver(std::unique_ptr<ListedFolder> top, const GlobPattern& pattern, const std::u16string& text,
             char16_t separator, const Receiver& receiver) {
    bool isFound = false;
    std::vector<Waiting> waiting;
    waiting.push_back({std::move(top), nullptr});
    while (!waiting.empty()) {
        const Waiting next = std::move(waiting.back());
        waiting.pop_back();
        ListedFolder& folder = *next.folder;
        const FolderText own = next.above ? textBelow(*next.above, separator, folder.name)
                                          : std::make_shared<const std::u16string>(text);
        if (deliverFolder(folder, own, pattern, receiver)) isFound = true;
        for (auto below = folder.folders.rbegin(); below != folder.folders.rend(); ++below) {
            waiting.push_back({std::move(*below), own});
        }
        folder.folders.clear();
    }
    return isFound;
}

}  // namespace korvex::runtime::listing
