// The content and the attributes of one open file, into another.
#include "runtime/storage/providers/local/posix/file_content.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#ifdef __linux__
#include <linux/fs.h>
#endif

namespace korvex::runtime::storage::posix {

namespace {

/// Larger buffers fall out of the processor's cache and are slower.
constexpr std::size_t bufferSize = 128 * 1024;
/// Below this size a read and a write cost less than asking the kernel to copy.
constexpr off_t kernelCopyFrom = 256 * 1024;
constexpr std::size_t kernelCopyPiece = std::size_t{1} << 30;

bool meansUnsupported(int systemError) noexcept {
    constexpr int errors[] = {EOPNOTSUPP, ENOTSUP, ENOSYS, EXDEV, EINVAL, ENOTTY, EPERM, EBADF, ETXTBSY};
    return std::find(std::begin(errors), std::end(errors), systemError) != std::end(errors);
}

bool shareBlocks(int source, int destination, CopyAbilities& abilities) noexcept {
    if (!abilities.sharesBlocks.load(std::memory_order_relaxed)) return false;
#ifdef FICLONE
    if (::ioctl(destination, FICLONE, source) == 0) return true;
#endif
    abilities.sharesBlocks.store(false, std::memory_order_relaxed);
    return false;
}

int writeAll(int destination, const char* bytes, std::size_t count, off_t offset) noexcept {
    while (count > 0) {
        const ssize_t written = ::pwrite(destination, bytes, count, offset);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return errno;
        if (written == 0) return ENOSPC;
        bytes += written;
        offset += written;
        count -= static_cast<std::size_t>(written);
    }
    return 0;
}

/// Copies from `begin` to `end`, or to the end of the file when `end` is negative. A short read is not the
/// end: only a read of nothing is.
Failure copyByReading(int source, int destination, off_t begin, off_t end) {
    thread_local const std::unique_ptr<std::array<char, bufferSize>> buffer =
        std::make_unique<std::array<char, bufferSize>>();
    for (off_t offset = begin; end < 0 || offset < end;) {
        const std::size_t wanted =
            end < 0 ? bufferSize : std::min(bufferSize, static_cast<std::size_t>(end - offset));
        const ssize_t count = ::pread(source, buffer->data(), wanted, offset);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return {errno, sourceSide};
        if (count == 0) break;
        if (const int systemError =
                writeAll(destination, buffer->data(), static_cast<std::size_t>(count), offset)) {
            return {systemError, destinationSide};
        }
        offset += count;
    }
    return {};
}

/// As `copyByReading`. Where the kernel copies nothing, for whatever reason, reading has the last word.
Failure copyRange(int source, int destination, off_t begin, off_t end, CopyAbilities& abilities) {
    off_t from = begin;
    off_t to = begin;
    while (from < end && end - from >= kernelCopyFrom &&
           abilities.copiesInKernel.load(std::memory_order_relaxed)) {
        const std::size_t piece = std::min(kernelCopyPiece, static_cast<std::size_t>(end - from));
        const ssize_t count = ::copy_file_range(source, &from, destination, &to, piece, 0);
        if (count == 0) break;
        if (count > 0 || errno == EINTR) continue;
        if (!meansUnsupported(errno)) return {errno, destinationSide};
        abilities.copiesInKernel.store(false, std::memory_order_relaxed);
    }
    return copyByReading(source, destination, from, end);
}

/// Copies the parts that hold data; what lies between them stays a hole.
Failure copyAroundHoles(int source, int destination, CopyAbilities& abilities) {
    for (off_t offset = 0;;) {
        const off_t data = ::lseek(source, offset, SEEK_DATA);
        if (data < 0 && errno == ENXIO) break;
        if (data < 0) return copyByReading(source, destination, offset, -1);
        const off_t hole = ::lseek(source, data, SEEK_HOLE);
        if (hole < 0) return copyByReading(source, destination, data, -1);
        if (const Failure failure = copyRange(source, destination, data, hole, abilities)) return failure;
        offset = std::max(hole, data + 1);
    }
    // The length as it is now: a file that shrank meanwhile must not get zeros at its end.
    struct ::stat now {};
    if (::fstat(source, &now) != 0) return {errno, sourceSide};
    return {::ftruncate(destination, now.st_size) == 0 ? 0 : errno, destinationSide};
}

/// Attributes that only the system itself may set, or that this file system does not know, are left out.
bool mayBeLeftOut(int systemError) noexcept {
    return systemError == ENOTSUP || systemError == EPERM || systemError == EACCES || systemError == EINVAL;
}

int copyAttribute(int source, int destination, const char* name, std::vector<char>& value) {
    // Asked with an empty buffer, the system would tell the size and hand out nothing.
    if (value.empty()) value.resize(256);
    ssize_t size = ::fgetxattr(source, name, value.data(), value.size());
    while (size < 0 && errno == ERANGE) {
        size = ::fgetxattr(source, name, nullptr, 0);
        if (size < 0) break;
        value.resize(static_cast<std::size_t>(size) + 64);
        size = ::fgetxattr(source, name, value.data(), value.size());
    }
    if (size < 0) return errno == ENODATA || mayBeLeftOut(errno) ? 0 : errno;
    if (::fsetxattr(destination, name, value.data(), static_cast<std::size_t>(size), 0) == 0) return 0;
    return mayBeLeftOut(errno) ? 0 : errno;
}

/// The names of a file's extended attributes, each with a NUL behind it.
int attributeNames(int file, std::vector<char>& names) {
    std::array<char, 512> few;
    ssize_t size = ::flistxattr(file, few.data(), few.size());
    if (size >= 0) {
        names.assign(few.data(), few.data() + size);
        return 0;
    }
    while (size < 0 && errno == ERANGE) {
        size = ::flistxattr(file, nullptr, 0);
        if (size < 0) break;
        names.resize(static_cast<std::size_t>(size) + 256);
        size = ::flistxattr(file, names.data(), names.size());
    }
    if (size < 0) return errno;
    names.resize(static_cast<std::size_t>(size));
    return 0;
}

}  // namespace

Failure copyContent(int source, const struct ::stat& sourceStatus, int destination,
                    CopyAbilities& abilities) {
    const off_t size = sourceStatus.st_size;
    if (size > 0 && shareBlocks(source, destination, abilities)) return {};
    const bool hasHoles = sourceStatus.st_blocks * 512 < size;
    if (hasHoles) return copyAroundHoles(source, destination, abilities);
    if (size < kernelCopyFrom) return copyByReading(source, destination, 0, -1);
    if (const Failure failure = copyRange(source, destination, 0, size, abilities)) return failure;
    return copyByReading(source, destination, size, -1);
}

Failure copyExtendedAttributes(int source, int destination, CopyAbilities& abilities) {
    if (!abilities.hasExtendedAttributes.load(std::memory_order_relaxed)) return {};
    thread_local std::vector<char> names;
    thread_local std::vector<char> value;
    if (const int systemError = attributeNames(source, names)) {
        if (systemError == ENOTSUP) abilities.hasExtendedAttributes.store(false, std::memory_order_relaxed);
        return mayBeLeftOut(systemError) ? Failure{} : Failure{systemError, sourceSide};
    }
    for (const char* name = names.data(); name < names.data() + names.size();
         name += std::string_view(name).size() + 1) {
        const int systemError = copyAttribute(source, destination, name, value);
        if (systemError != 0) return {systemError, destinationSide};
    }
    return {};
}

int copyModeAndTimes(const struct ::stat& sourceStatus, int destination, bool keepsOwner) {
    // Not every file system keeps these, and not for everybody: a copy is none the worse for it.
    const auto isKeptElsewhere = [](int systemError) {
        return systemError == EPERM || systemError == EOPNOTSUPP || systemError == ENOSYS;
    };
    const bool hasOwner =
        (sourceStatus.st_uid == ::geteuid() && sourceStatus.st_gid == ::getegid()) ||
        (keepsOwner && ::fchown(destination, sourceStatus.st_uid, sourceStatus.st_gid) == 0);
    const mode_t bits = sourceStatus.st_mode & (hasOwner ? 07777U : 01777U);
    if (::fchmod(destination, bits) != 0 && !isKeptElsewhere(errno)) return errno;
    const struct timespec times[2] = {{0, UTIME_OMIT}, sourceStatus.st_mtim};
    return ::futimens(destination, times) == 0 || isKeptElsewhere(errno) ? 0 : errno;
}

}  // namespace korvex::runtime::storage::posix
