// What file systems do for a copy, and what they have turned out not to do.
#pragma once

#include <sys/types.h>

#include <algorithm>
#include <atomic>
#include <forward_list>
#include <mutex>
#include <utility>

namespace korvex::runtime::storage::posix {

/// Of the file system of a source; shared by the workers of one operation, asked once each. Not kept for the
/// next one: the number of a device may belong to another file system by then, and files would be cut short.
struct CopyAbilities {
    /// Whether a file holds as many bytes as its size says, so that nobody has to read on to find its end.
    /// Files that the system makes up as they are read say 0, or too little.
    bool tellsSizes = false;
    /// Whether what was written is safe from failing when the file is closed, as it may on a network's disk.
    bool closesSilently = false;
    std::atomic<bool> hasExtendedAttributes{true};
};

/// Of two file systems, or twice the same one. Kept as long as the process lives: what is remembered wrongly,
/// since another disk has got the number of an earlier one, costs time and nothing else.
struct PairAbilities {
    std::atomic<bool> sharesBlocks{true};
    std::atomic<bool> copiesInKernel{true};
};

/// Rows by key, made as they are asked for. Safe for several threads; a row lives as long as the table.
template <class Key, class Abilities>
class AbilityTable {
public:
    AbilityTable() = default;
    AbilityTable(const AbilityTable&) = delete;
    AbilityTable& operator=(const AbilityTable&) = delete;

    /// `begin` is called with a new row.
    template <class Begin>
    Abilities& of(const Key& key, const Begin& begin) {
        Row* const latest = latest_.load(std::memory_order_acquire);
        if (latest != nullptr && latest->key == key) return latest->abilities;
        const std::lock_guard lock(mutex_);
        auto row =
            std::find_if(rows_.begin(), rows_.end(), [&](const Row& known) { return known.key == key; });
        if (row == rows_.end()) {
            rows_.emplace_front(key);
            row = rows_.begin();
            begin(row->abilities);
        }
        latest_.store(&*row, std::memory_order_release);
        return row->abilities;
    }

private:
    struct Row {
        Key key;
        Abilities abilities;
        explicit Row(const Key& itsKey) : key(itsKey) {}
    };

    std::mutex mutex_;
    std::forward_list<Row> rows_;
    /// Nearly every file stands on the same device as the one before.
    std::atomic<Row*> latest_{nullptr};
};

/// The abilities of each device that an operation meets: a tree may have other file systems mounted in it.
class AbilitiesOfDevices {
public:
    /// `file` is open and stands on `device`.
    CopyAbilities& of(int file, dev_t device);

private:
    AbilityTable<dev_t, CopyAbilities> table_;
};

/// Of the devices of a source and a destination.
PairAbilities& abilitiesBetween(dev_t source, dev_t destination);

}  // namespace korvex::runtime::storage::posix
