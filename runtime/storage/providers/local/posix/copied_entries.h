// What was copied of a tree that is to go from its source: which entries, and what they were then.
//
// An entry counts as the one that was copied when it has the same name in the same folder, and is the same
// file with the same size, time of last change and time of last change of its attributes, to the nanosecond;
// a link also leads to the same target. What is compared is what one file system says at two times, so it
// does not matter in which steps another one keeps times.
#pragma once

#include <sys/stat.h>

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include "runtime/storage/providers/local/posix/folder_tree.h"

namespace korvex::runtime::storage::posix {

enum class CopiedState { gone, asCopied, different };

/// Holds some 100 bytes an entry. Safe for several threads while entries are added, and after `close` while
/// they are asked for.
class CopiedEntries {
public:
    /// An entry of a folder of the source, which is about to be copied. One that cannot be looked at is not
    /// remembered. Waits where the entry has changed so lately that one more change could leave its times the
    /// same: some milliseconds, up to two seconds where the file system keeps whole seconds. An interrupt
    /// that is pending ends the waiting, and the entry may not be remembered then.
    void add(const TreeFolder& folder, int handle, const std::string& name);
    /// A folder that has been opened to be copied.
    void addFolder(const TreeFolder& folder);
    /// There are no more.
    void close();

    /// Something was copied to another file system than that of the top destination.
    void noteFurtherDisk() noexcept { reachesFurtherDisks_.store(true); }
    bool reachesFurtherDisks() const noexcept { return reachesFurtherDisks_.load(); }

    /// `systemError` is 0 or the errno of looking, which makes the entry a different one.
    CopiedState stateOf(const TreeFolder& folder, int handle, const std::string& name,
                        int& systemError) const;
    bool hasFolder(const TreeFolder& folder) const;

private:
    struct Instant {
        time_t seconds = 0;
        long nanoseconds = 0;
        bool operator==(const Instant&) const = default;
    };
    struct Stamp {
        dev_t device = 0;
        ino_t inode = 0;
        mode_t kind = 0;
        off_t size = 0;
        Instant changed;
        Instant attributesChanged;
        std::size_t linkTarget = 0;
        bool hasOtherNames = false;
    };
    /// Where an entry stands: its folder and, as a hash, its name there.
    struct Key {
        dev_t device = 0;
        ino_t inode = 0;
        std::size_t name = 0;
        auto operator<=>(const Key&) const = default;
    };
    struct Entry {
        Key key;
        Stamp stamp;
    };

    static Key keyOf(const TreeFolder& folder, const std::string& name) noexcept;
    /// 0 or the errno.
    static int look(int handle, const std::string& name, Stamp& stamp);
    static bool isSame(const Stamp& copied, const Stamp& now) noexcept;
    const Entry* find(const Key& key) const noexcept;
    void put(const Entry& entry);

    std::mutex mutex_;
    std::vector<Entry> entries_;
    std::atomic<bool> reachesFurtherDisks_{false};
};

}  // namespace korvex::runtime::storage::posix
