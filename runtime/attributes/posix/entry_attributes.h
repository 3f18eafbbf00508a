// The attributes of one entry of an open folder: the owner's write bit, and those in the extended attribute.
#pragma once

#include <cstdint>

#include "platform/foundation_filesystem.h"
#include "runtime/storage/providers/local/posix/entry_at.h"
#include "runtime/storage/providers/local/posix/file_descriptor.h"
#include "runtime/storage/providers/local/posix/path_lookup.h"

namespace korvex::runtime::attributes::posix {

using fl::filesystem::file_status;
using storage::posix::EntryAt;
using storage::posix::FileDescriptor;
using storage::posix::Links;

/// As `fl::filesystem::status`, links followed: 0 or the errno. A name may have a path in front.
int readAttributes(EntryAt entry, file_status& attributes);

/// Opens what stands there without any access, which is enough to change the permission bits; of a link, the
/// link. None when it cannot.
FileDescriptor openWithoutAccess(EntryAt entry) noexcept;

/// Changes the attributes of one entry after the other.
class AttributeChanges {
public:
    explicit AttributeChanges(Links links) noexcept : links_(links) {}

    /// As `fl::filesystem::permissions`: 0 or the errno. With `Links::tellApart` a link is left alone, also
    /// one that somebody puts in the entry's place meanwhile. Another file in its place may be changed as
    /// asked, and keeps all else that it has. Stored attributes of a form that nobody here knows are left
    /// alone: EOPNOTSUPP.
    int change(EntryAt entry, file_status::perms mask) { return change(entry, mask, FileDescriptor()); }
    /// The same for an entry that is open without any access, or not open.
    int change(EntryAt entry, file_status::perms mask, FileDescriptor opened);

    /// Whether the next entry will be opened without a look at it before.
    bool opensAtOnce() const noexcept { return opensAtOnce_; }

private:
    int changeOwnerWrite(EntryAt entry, bool isAddition, FileDescriptor file) noexcept;
    int changeStored(EntryAt entry, std::uint32_t wanted, bool isAddition) const;

    const Links links_;
    /// Whether the bits of the last entry had to be changed. Then those of the next one most likely have to
    /// be, too, and it is opened without a look at it before.
    bool opensAtOnce_ = false;
};

}  // namespace korvex::runtime::attributes::posix
