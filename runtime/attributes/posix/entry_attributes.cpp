// Reading and changing the attributes of an entry.
#include "runtime/attributes/posix/entry_attributes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include "runtime/attributes/stored_attributes.h"
#include "runtime/storage/providers/local/posix/file_descriptor.h"
#include "runtime/storage/providers/local/posix/permission_bits.h"
#include "runtime/storage/providers/local/posix/recent_look.h"

namespace korvex::runtime::attributes::posix {

namespace {

struct StoredAttribute {
    file_status::perms attribute;
    StoredBit bit;
};

constexpr StoredAttribute storedAttributes[] = {
    {file_status::archive_file, archiveBit},
    {file_status::hidden_file, hiddenBit},
    {file_status::system_file, systemBit},
};

std::uint32_t storedBitsOf(file_status::perms mask) noexcept {
    std::uint32_t bits = 0;
    for (const StoredAttribute& stored : storedAttributes)
        if ((mask & stored.attribute) != 0) bits |= stored.bit;
    return bits;
}

file_status::perms attributesOf(std::uint32_t bits) noexcept {
    file_status::perms attributes = file_status::no_perms;
    for (const StoredAttribute& stored : storedAttributes)
        if ((bits & stored.bit) != 0) attributes = attributes | stored.attribute;
    return attributes;
}

/// Links, devices, pipes and sockets have no extended attributes of users.
bool canKeepStored(mode_t mode) noexcept { return S_ISREG(mode) || S_ISDIR(mode); }

/// Whether a name, or the last one of a path, says by itself that it is hidden.
bool isDotName(std::string_view path) noexcept {
    const std::string_view name = path.substr(path.rfind('/') + 1);
    return name.size() > 1 && name.front() == '.' && name != "..";
}

/// The name by which a file may be hidden: that of what a link leads to, where links are followed.
bool isDotNamed(EntryAt entry, Links links) {
    struct ::stat status {};
    const bool isLink = links == Links::follow &&
                        ::fstatat(entry.folder, entry.name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
                        S_ISLNK(status.st_mode);
    if (!isLink) return isDotName(entry.name);
    const storage::posix::EndOfLink end(entry);
    return isDotName(end.entry().name);
}

constexpr int reading = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
/// Without any access: enough for the permission bits, and harmless whatever stands there.
constexpr int seeing = O_PATH | O_CLOEXEC;

FileDescriptor openEntry(EntryAt entry, Links links, int flags) noexcept {
    return FileDescriptor(
        ::openat(entry.folder, entry.name, links == Links::follow ? flags : flags | O_NOFOLLOW));
}

/// The value of the extended attribute; empty where there is none. 0 or the errno.
int readStored(int file, std::string& value) {
    // Twice as long as the longest known form.
    std::array<char, 512> bytes{};
    const ssize_t length = ::fgetxattr(file, storedAttributesName, bytes.data(), bytes.size());
    value.assign(bytes.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    return length >= 0 || errno == ENODATA ? 0 : errno;
}

/// The attribute may not be seen now, no storage is there for it, or it is of no known form.
bool meansNoneToSee(int systemError) noexcept {
    constexpr int errors[] = {EACCES, EPERM, EAGAIN, EOPNOTSUPP, ERANGE, E2BIG};
    return std::find(std::begin(errors), std::end(errors), systemError) != std::end(errors);
}

int readStoredBits(EntryAt entry, mode_t mode, std::uint32_t& bits) {
    bits = 0;
    if (!canKeepStored(mode)) return 0;
    const FileDescriptor file = openEntry(entry, Links::follow, reading);
    std::string value;
    const int systemError = file ? readStored(file.get(), value) : errno;
    if (systemError != 0) return meansNoneToSee(systemError) ? 0 : systemError;
    bits = StoredAttributes(value).bits();
    return 0;
}

int writeStored(int file, const std::string& value) noexcept {
    const int result = value.empty() ? ::fremovexattr(file, storedAttributesName)
                                     : ::fsetxattr(file, storedAttributesName, value.data(), value.size(), 0);
    // Somebody else may have removed it just now.
    return result == 0 || (value.empty() && errno == ENODATA) ? 0 : errno;
}

/// Who owns a file may hide it though it is write-protected, and the system lets nobody write an extended
/// attribute of such a file: it is writable for that moment. `mode` is that of the open file.
int writeStoredOfProtected(int file, mode_t mode, const std::string& value) noexcept {
    const mode_t bits = mode & 07777;
    if (::fchmod(file, bits | S_IWUSR) != 0) return EACCES;
    const int systemError = writeStored(file, value);
    const bool isProtectedAgain = ::fchmod(file, bits) == 0;
    return systemError != 0 || isProtectedAgain ? systemError : errno;
}

/// What a change meets where nothing can be stored, which is clear for ever.
constexpr int notKept(bool isAddition) noexcept { return isAddition ? EOPNOTSUPP : 0; }

mode_t withOwnerWrite(mode_t mode, bool isAddition) noexcept {
    return isAddition ? mode | S_IWUSR : mode & ~mode_t{S_IWUSR};
}

int lookAt(EntryAt entry, Links links, struct ::stat& status) noexcept {
    const int flags = links == Links::follow ? 0 : AT_SYMLINK_NOFOLLOW;
    return ::fstatat(entry.folder, entry.name, &status, flags) == 0 ? 0 : errno;
}

}  // namespace

int readAttributes(EntryAt entry, file_status& attributes) {
    struct ::stat status {};
    if (::fstatat(entry.folder, entry.name, &status, 0) != 0) {
        const int systemError = errno;
        const bool mayBeBrokenLink = storage::posix::meansNothingThere(systemError);
        if (!mayBeBrokenLink || ::fstatat(entry.folder, entry.name, &status, AT_SYMLINK_NOFOLLOW) != 0)
            return systemError;
    }
    std::uint32_t bits = 0;
    if (const int systemError = readStoredBits(entry, status.st_mode, bits)) return systemError;
    if (isDotNamed(entry, Links::follow)) bits |= hiddenBit;
    const bool isWritable = (status.st_mode & S_IWUSR) != 0;
    attributes =
        file_status(attributesOf(bits) | (isWritable ? file_status::owner_write : file_status::no_perms),
                    S_ISDIR(status.st_mode));
    return 0;
}

FileDescriptor openWithoutAccess(EntryAt entry) noexcept {
    return openEntry(entry, Links::tellApart, seeing);
}

int AttributeChanges::change(EntryAt entry, file_status::perms mask, FileDescriptor opened) {
    const bool isAddition = (mask & file_status::perms_add) != 0;
    if (!isAddition && (mask & file_status::perms_remove) == 0) return 0;
    if (!isAddition) storage::posix::forgetWritable();
    const std::uint32_t stored = storedBitsOf(mask);
    const auto changeWrite = [&] {
        return (mask & file_status::owner_write) != 0 ? changeOwnerWrite(entry, isAddition, std::move(opened))
                                                      : 0;
    };
    const auto changeOthers = [&] { return stored != 0 ? changeStored(entry, stored, isAddition) : 0; };
    // What is stored is changed while the file may be written.
    if (isAddition) {
        const int systemError = changeWrite();
        return systemError != 0 ? systemError : changeOthers();
    }
    const int systemError = changeOthers();
    return systemError != 0 ? systemError : changeWrite();
}

/// The bits are read from the very file that gets them back: by its name it could be another one by then.
int AttributeChanges::changeOwnerWrite(EntryAt entry, bool isAddition, FileDescriptor file) noexcept {
    struct ::stat status {};
    const auto isRight = [&] {
        return S_ISLNK(status.st_mode) || withOwnerWrite(status.st_mode, isAddition) == status.st_mode;
    };
    if (!file && !opensAtOnce_) {
        if (const int systemError = lookAt(entry, links_, status)) return systemError;
        if (isRight()) return 0;
    }
    if (!file) file = openEntry(entry, links_, seeing);
    if (!file || ::fstat(file.get(), &status) != 0) return errno;
    opensAtOnce_ = !isRight();
    if (!opensAtOnce_) return 0;
    return storage::posix::changeBits(file.get(), withOwnerWrite(status.st_mode, isAddition) & 07777);
}

int AttributeChanges::changeStored(EntryAt entry, std::uint32_t wanted, bool isAddition) const {
    struct ::stat status {};
    if (const int systemError = lookAt(entry, links_, status)) return systemError;
    if (S_ISLNK(status.st_mode)) return 0;
    // A device is not even opened.
    if (!canKeepStored(status.st_mode)) return notKept(isAddition);
    const FileDescriptor file = openEntry(entry, links_, reading);
    if (!file) return errno == ELOOP && links_ == Links::tellApart ? 0 : errno;
    // What stands there now need not be what stood there before.
    if (::fstat(file.get(), &status) != 0) return errno;
    if (!canKeepStored(status.st_mode)) return notKept(isAddition);

    std::string value;
    int systemError = readStored(file.get(), value);
    if (systemError == EOPNOTSUPP) return notKept(isAddition);
    if (systemError != 0) return systemError;
    const StoredAttributes stored(value, isDotNamed(entry, links_));
    if (!stored.isKnown()) return EOPNOTSUPP;
    const std::uint32_t bits = isAddition ? stored.bits() | wanted : stored.bits() & ~wanted;
    // What only the name says is not stored yet.
    const bool isStored = !value.empty() || !isAddition;
    if (isStored && bits == stored.bits()) return 0;
    const std::string changed = stored.valueWith(bits);
    systemError = writeStored(file.get(), changed);
    const bool isProtected = systemError == EACCES && (status.st_mode & S_IWUSR) == 0;
    return isProtected ? writeStoredOfProtected(file.get(), status.st_mode, changed) : systemError;
}

}  // namespace korvex::runtime::attributes::posix
