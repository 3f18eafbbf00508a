// The structure array that `dir` returns. Its means of being fast: the order is an index, entries of one
// folder share one text, and all of them share two logical scalars.
#include "io/filesystem/filemanip/dir_listing_result.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <numeric>
#include <string>
#include <utility>
#include <variant>

#include "io/filesystem/filemanip/dir_listing_time_stamps.h"

namespace korvex::filemanip {

namespace {

using Entries = std::vector<FileNameWithStatLight>;

enum Field : int { name, folder, date, bytes, isdir, datenum };
constexpr std::array<const char*, 6> fieldNames{"name", "folder", "date", "bytes", "isdir", "datenum"};

using Index = std::vector<std::size_t>;

/// Entries that were delivered one behind the other and have the same folder pointer, by their places.
struct Run {
    std::size_t begin;
    std::size_t end;
};

std::vector<Run> runsOf(const Entries& entries) {
    std::vector<Run> runs;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const bool goesOn = i > 0 && entries[i].folder == entries[i - 1].folder;
        if (!goesOn) runs.push_back({i, i});
        runs.back().end = i + 1;
    }
    return runs;
}

matrix::ArrayOwner makeBytesField(const std::variant<std::uint64_t, double>& size, bool sizeKnown) {
    if (!sizeKnown) return matrix::ArrayOwner(kxCreateDoubleMatrix(0, 0));
    const double value = std::visit([](auto held) { return static_cast<double>(held); }, size);
    return matrix::ArrayOwner(kxCreateDoubleScalar(value));
}

/// Fills the elements of the structure, one after the other.
class StructureFiller {
public:
    explicit StructureFiller(kxArray* structure) : structure_(structure) {}

    void fill(std::size_t element, const FileNameWithStatLight& entry) {
        if (!folderArray_ || entry.folder != folder_) {
            folderArray_ = matrix::create(*entry.folder);
            folder_ = entry.folder;
        }
        DateFields dates = makeDateFields(entry.modified);
        set(element, Field::name, matrix::create(entry.name));
        share(element, Field::folder, folderArray_);
        set(element, Field::date, std::move(dates.date));
        set(element, Field::bytes, makeBytesField(entry.size, entry.sizeKnown));
        share(element, Field::isdir, entry.isDirectory ? isTrue_ : isFalse_);
        set(element, Field::datenum, std::move(dates.datenum));
    }

private:
    void set(std::size_t element, Field field, matrix::ArrayOwner value) {
        kxSetFieldByNumber(structure_, element, field, matrix::to_korvex(std::move(value)));
    }
    void share(std::size_t element, Field field, const matrix::ArrayOwner& value) {
        kxSetFieldByNumber(structure_, element, field, kxCreateReference(value.get()));
    }

    kxArray* const structure_;
    const matrix::ArrayOwner isFalse_{kxCreateLogicalScalar(false)};
    const matrix::ArrayOwner isTrue_{kxCreateLogicalScalar(true)};
    std::shared_ptr<const std::u16string> folder_;
    matrix::ArrayOwner folderArray_;
};

}  // namespace

// Listers deliver folder by folder, each mostly in order: bringing those runs in order is cheaper than
// bringing the entries in order one by one. Whatever they deliver, the result is that of one sort by folder
// and name.
Index sortedIndex(const Entries& entries) {
    const auto byName = [&](std::size_t a, std::size_t b) { return entries[a].name < entries[b].name; };
    const auto folderOf = [&](const Run& run) -> const std::u16string& { return *entries[run.begin].folder; };
    Index places(entries.size());
    std::iota(places.begin(), places.end(), std::size_t{0});
    const auto at = [](Index& index, std::size_t place) {
        return index.begin() + static_cast<std::ptrdiff_t>(place);
    };

    std::vector<Run> runs = runsOf(entries);
    for (const Run& run : runs) {
        const auto begin = at(places, run.begin);
        const auto end = at(places, run.end);
        if (!std::is_sorted(begin, end, byName)) std::sort(begin, end, byName);
    }
    const bool isInOrder =
        std::ranges::adjacent_find(runs, std::ranges::greater_equal(), folderOf) == runs.end();
    if (isInOrder) return places;

    std::ranges::stable_sort(runs, {}, folderOf);
    Index index;
    index.reserve(entries.size());
    std::size_t folderBegin = 0;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        // A folder may have been delivered in several runs.
        const bool isNewFolder = i == 0 || folderOf(runs[i]) != folderOf(runs[i - 1]);
        const std::size_t runBegin = index.size();
        if (isNewFolder) folderBegin = runBegin;
        index.insert(index.end(), at(places, runs[i].begin), at(places, runs[i].end));
        std::inplace_merge(at(index, folderBegin), at(index, runBegin), index.end(), byName);
    }
    return index;
}

matrix::ArrayOwner makeListingStructure(const Entries& entries) {
    matrix::ArrayOwner structure(
        kxCreateStructMatrix(entries.size(), 1, static_cast<int>(fieldNames.size()), fieldNames.data()));
    StructureFiller filler(structure.get());
    std::size_t element = 0;
    for (const std::size_t index : sortedIndex(entries))
        filler.fill(element++, entries[index]);
    return structure;
}

}  // namespace korvex::filemanip
