// The content of one open file, into another.
#include "runtime/storage/providers/local/posix/file_content.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <memory>
#include <utility>

#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/providers/local/posix/error_code.h"

#ifdef __linux__
#include <linux/fs.h>
#endif

namespace korvex::runtime::storage::posix {

namespace {

/// Larger buffers fall out of the processor's cache and are slower.
constexpr std::size_t bufferSize = 128 * 1024;
/// Below this size a read and a write cost less than asking the kernel to copy.
constexpr off_t kernelCopyFrom = 256 * 1024;
/// So much in one call that the call itself costs nothing, and so little that one hears of it.
constexpr std::size_t kernelCopyPiece = std::size_t{32} << 20;
constexpr off_t toldEvery = off_t{4} << 20;

/// Whether a call is not to be had between these two file systems at all, whatever the file.
bool meansUnsupported(int systemError) noexcept {
    return systemError == EOPNOTSUPP || systemError == ENOTTY || systemError == ENOSYS ||
           systemError == EXDEV;
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

/// The copy of one file's content by one of several ways.
class ContentCopy {
public:
    ContentCopy(const OpenPair& files, const CopyAbilities& abilities, CopyWatcher* watcher)
        : source_(files.source),
          destination_(files.destination),
          size_(files.sourceStatus.st_size),
          hasHoles_(mayHaveHoles(files.sourceStatus)),
          tellsSizes_(abilities.tellsSizes),
          pair_(abilitiesBetween(files.sourceStatus.st_dev, files.destinationDevice)),
          watcher_(watcher) {}

    Failure run() {
        if (size_ > 0 && shareBlocks()) return {};
        if (hasHoles_) return aroundHoles();
        off_t offset = 0;
        if (size_ >= kernelCopyFrom) {
            if (const Failure failure = range(offset, size_)) return failure;
        }
        return byReading(offset, toTheEnd);
    }

private:
    static constexpr off_t toTheEnd = std::numeric_limits<off_t>::max();

    bool shareBlocks() noexcept {
        if (!pair_.sharesBlocks.load(std::memory_order_relaxed)) return false;
#ifdef FICLONE
        if (::ioctl(destination_, FICLONE, source_) == 0) {
            tell(size_);
            return true;
        }
        if (!meansUnsupported(errno)) return false;
#endif
        pair_.sharesBlocks.store(false, std::memory_order_relaxed);
        return false;
    }

    /// A short read is not the end: only a read of nothing is, or having had as much as there should be.
    bool isAtEnd(off_t offset, off_t end) const noexcept {
        return end == toTheEnd ? tellsSizes_ && offset == size_ : offset >= end;
    }

    /// Copies up to `end`, or as far as the source goes; `offset` is how far that was.
    Failure byReading(off_t& offset, off_t end) {
        thread_local const std::unique_ptr<std::array<char, bufferSize>> buffer =
            std::make_unique_for_overwrite<std::array<char, bufferSize>>();
        while (!isAtEnd(offset, end)) {
            const auto wanted = std::min<off_t>(bufferSize, end - offset);
            const ssize_t count = ::pread(source_, buffer->data(), static_cast<std::size_t>(wanted), offset);
            if (count < 0 && errno == EINTR) continue;
            if (count < 0) return {errno, sourceSide};
            if (count == 0) break;
            if (const int systemError =
                    writeAll(destination_, buffer->data(), static_cast<std::size_t>(count), offset)) {
                return {systemError, destinationSide};
            }
            offset += count;
            tell(count);
            if (isInterrupted()) return {interruptedError, sourceSide};
        }
        return {};
    }

    /// The same. Where the kernel copies nothing, for whatever reason, reading has the last word: it knows on
    /// which side the reason is.
    Failure range(off_t& offset, off_t end) {
        off_t to = offset;
        while (end - offset >= kernelCopyFrom && pair_.copiesInKernel.load(std::memory_order_relaxed)) {
            const std::size_t piece = std::min(kernelCopyPiece, static_cast<std::size_t>(end - offset));
            const ssize_t count = ::copy_file_range(source_, &offset, destination_, &to, piece, 0);
            if (count < 0 && errno == EINTR) continue;
            if (count < 0 && meansUnsupported(errno))
                pair_.copiesInKernel.store(false, std::memory_order_relaxed);
            if (count <= 0) break;
            tell(count);
            if (isInterrupted()) return {interruptedError, sourceSide};
        }
        return byReading(offset, end);
    }

    /// Copies the parts that hold data; what lies between them stays a hole.
    Failure aroundHoles() {
        const off_t limit = tellsSizes_ ? size_ : toTheEnd;
        for (off_t offset = 0; offset < limit;) {
            off_t sizeBefore = 0;
            if (const int systemError = presentSize(sizeBefore)) return {systemError, sourceSide};
            off_t data = ::lseek(source_, offset, SEEK_DATA);
            if (data < 0 && errno != ENXIO) return byReading(offset, toTheEnd);
            const bool isLastHole = data < 0 || data >= limit;
            if (isLastHole) return extend(offset, std::min(limit, sizeBefore));
            const off_t hole = ::lseek(source_, data, SEEK_HOLE);
            if (hole < 0) return byReading(data, toTheEnd);
            tell(data - offset);
            const off_t end = std::min(hole, limit);
            offset = std::max(end, data + 1);
            if (const Failure failure = range(data, end)) return failure;
            // Less than it should be: it has shrunk, or tells a size that it has not. Here it ends.
            if (data < end) return {};
        }
        return {};
    }

    /// A hole at the end. It is one only as far as the file was just as long before and after it was seen: a
    /// file that shrinks or grows meanwhile must not get zeros.
    Failure extend(off_t offset, off_t end) noexcept {
        off_t sizeNow = 0;
        if (const int systemError = presentSize(sizeNow)) return {systemError, sourceSide};
        end = std::min(end, sizeNow);
        if (end <= offset) return {};
        return {::ftruncate(destination_, end) == 0 ? 0 : errno, destinationSide};
    }

    /// 0 or the errno.
    int presentSize(off_t& size) const noexcept {
        struct ::stat now {};
        if (::fstat(source_, &now) != 0) return errno;
        size = now.st_size;
        return 0;
    }

    void tell(off_t bytes) {
        untold_ += bytes;
        if (watcher_ != nullptr && untold_ >= toldEvery) watcher_->copied(std::exchange(untold_, 0));
    }

    /// A file that is small is finished.
    bool isInterrupted() const noexcept {
        return size_ > static_cast<off_t>(bufferSize) && interpreter::isInterruptPending();
    }

    const int source_;
    const int destination_;
    const off_t size_;
    const bool hasHoles_;
    const bool tellsSizes_;
    PairAbilities& pair_;
    CopyWatcher* const watcher_;
    off_t untold_ = 0;
};

}  // namespace

bool mayHaveHoles(const struct ::stat& status) noexcept { return status.st_blocks * 512 < status.st_size; }

Failure copyContent(const OpenPair& files, const CopyAbilities& abilities, CopyWatcher* watcher) {
    if (watcher != nullptr) watcher->begins(files.sourceStatus.st_size);
    return ContentCopy(files, abilities, watcher).run();
}

}  // namespace korvex::runtime::storage::posix
