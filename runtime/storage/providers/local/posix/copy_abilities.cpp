// What file systems do for a copy.
#include "runtime/storage/providers/local/posix/copy_abilities.h"

#include <iterator>

#ifdef __linux__
#include <linux/magic.h>
#include <sys/vfs.h>
#endif

namespace korvex::runtime::storage::posix {

namespace {

/// A disk of this machine, of a kind that is known well.
bool isKnownDisk(int file) noexcept {
#ifdef __linux__
    // XFS has its number in a header of its own only.
    constexpr unsigned long xfs = 0x58465342;
    constexpr unsigned long known[] = {EXT4_SUPER_MAGIC, TMPFS_MAGIC, xfs, BTRFS_SUPER_MAGIC,
                                       F2FS_SUPER_MAGIC};
    struct ::statfs status {};
    if (::fstatfs(file, &status) != 0) return false;
    const auto kind = static_cast<unsigned long>(status.f_type) & 0xFFFFFFFFUL;
    return std::find(std::begin(known), std::end(known), kind) != std::end(known);
#else
    return static_cast<void>(file), false;
#endif
}

}  // namespace

CopyAbilities& AbilitiesOfDevices::of(int file, dev_t device) {
    return table_.of(device, [=](CopyAbilities& abilities) {
        abilities.tellsSizes = isKnownDisk(file);
        abilities.closesSilently = abilities.tellsSizes;
    });
}

PairAbilities& abilitiesBetween(dev_t source, dev_t destination) {
    static AbilityTable<std::pair<dev_t, dev_t>, PairAbilities> pairs;
    return pairs.of({source, destination}, [](const PairAbilities&) {});
}

}  // namespace korvex::runtime::storage::posix
