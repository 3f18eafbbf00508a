// What a walk has found.
#include "runtime/listing/listed_folder.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <utility>

namespace korvex::runtime::listing {

namespace {

using Entries = std::vector<FileNameWithStatLight>;

/// Stands for an entry while names are sorted: most comparisons are of two numbers, and nothing large is
/// moved.
struct SortKey {
    std::uint64_t head;  ///< the units behind what all names begin with, the first one on top
    FileNameWithStatLight* entry;

    bool operator<(const SortKey& other) const {
        return head != other.head ? head < other.head : entry->name < other.entry->name;
    }
};

std::size_t commonBeginning(const Entries& entries) {
    std::size_t length = entries.front().name.size();
    for (const FileNameWithStatLight& entry : entries) {
        const std::u16string_view first = std::u16string_view(entries.front().name).substr(0, length);
        const auto difference = std::ranges::mismatch(first, entry.name).in1;
        length = static_cast<std::size_t>(difference - first.begin());
    }
    return length;
}

std::uint64_t headOf(const std::u16string& name, std::size_t begin) {
    constexpr std::size_t unitsInHead = 4;
    std::uint64_t head = 0;
    for (std::size_t i = begin; i < begin + unitsInHead; ++i)
        head = (head << 16) | (i < name.size() ? name[i] : 0);
    return head;
}

void sortByName(Entries& entries) {
    if (std::ranges::is_sorted(entries, {}, &FileNameWithStatLight::name)) return;
    const std::size_t beginning = commonBeginning(entries);
    std::vector<SortKey> keys;
    keys.reserve(entries.size());
    for (FileNameWithStatLight& entry : entries)
        keys.push_back({headOf(entry.name, beginning), &entry});
    std::sort(keys.begin(), keys.end());

    Entries sorted;
    sorted.reserve(entries.size());
    for (const SortKey& key : keys)
        sorted.push_back(std::move(*key.entry));
    entries = std::move(sorted);
}

}  // namespace

ListedFolder::~ListedFolder() {
    std::vector<std::unique_ptr<ListedFolder>> below = std::move(folders);
    while (!below.empty()) {
        const std::unique_ptr<ListedFolder> last = std::move(below.back());
        below.pop_back();
        std::move(last->folders.begin(), last->folders.end(), std::back_inserter(below));
        last->folders.clear();
    }
}

void ListedFolder::sort() {
    sortByName(entries);
    std::ranges::sort(folders, [](const auto& a, const auto& b) { return a->name < b->name; });
}

}  // namespace korvex::runtime::listing
