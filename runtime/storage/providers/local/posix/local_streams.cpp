// The local provider on POSIX systems: the bytes of one file, in and out.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "runtime/storage/location.h"
#include "runtime/storage/providers/local/local_provider.h"
#include "runtime/storage/providers/local/posix/created_file.h"
#include "runtime/storage/providers/local/posix/error_code.h"
#include "runtime/storage/providers/local/posix/file_attributes.h"
#include "runtime/storage/providers/local/posix/file_transfer.h"
#include "runtime/storage/providers/local/posix/local_times.h"
#include "runtime/storage/providers/local/posix/open_for_reading.h"
#include "runtime/storage/providers/local/posix/place.h"
#include "runtime/storage/providers/local/posix/recent_look.h"

namespace korvex::runtime::storage {

namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
using posix::EntryAt;
using posix::FileDescriptor;
using posix::FileTransfer;
using posix::Links;
using posix::Place;
using posix::raiseSystemError;

namespace {

class LocalInputStream : public InputStream {
public:
    explicit LocalInputStream(const AbsoluteIRI& location) : location_(location) {
        const Place place(location);
        // What is no regular file is not even opened: that may change what a device or pipe does.
        if (::fstatat(place.folder(), place.name(), &status_, 0) != 0)
            raiseSystemError(errno, location_, u"reading");
        int systemError = posix::unlessFile(status_);
        if (systemError == 0)
            file_ = posix::openForReading(place.entry(), Links::follow, status_, systemError);
        if (systemError != 0) raiseSystemError(systemError, location_, u"reading");
    }

    std::size_t read(std::span<std::byte> buffer) override {
        while (true) {
            const ssize_t count = ::read(file_.get(), buffer.data(), buffer.size());
            if (count >= 0) return static_cast<std::size_t>(count);
            if (errno != EINTR) raiseSystemError(errno, location_, u"reading");
        }
    }

    FileAttributes attributes() const override {
        using namespace std::chrono;
        return {.size = static_cast<std::uint64_t>(status_.st_size),
                .changed = sys_time<nanoseconds>(nanoseconds(posix::nanosecondsOf(status_.st_mtim))),
                .isWritable = (status_.st_mode & 0222) != 0};
    }

private:
    const AbsoluteIRI location_;
    FileDescriptor file_;
    struct ::stat status_ {};
};

/// Where a file is written: in this very folder from beginning to end, whatever becomes of the path to it.
class WrittenPlace {
public:
    explicit WrittenPlace(const AbsoluteIRI& location) {
        // A link that somebody named is followed. One in a folder that a listing gave is what gets replaced:
        // what it leads to may lie outside of what is worked on.
        const Place place(location.parts().found ? location : posix::behindLink(location));
        const std::string folder = posix::beside(place.entry(), ".");
        folder_ = FileDescriptor(::openat(place.folder(), folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!folder_) raiseSystemError(errno, location, u"writing");
        name_ = place.lastComponent();
        if (name_.empty()) name_ = ".";
    }

    EntryAt entry() const noexcept { return {folder_.get(), name_.c_str()}; }
    EntryAt temporary() const noexcept { return {folder_.get(), temporaryName_.c_str()}; }

private:
    FileDescriptor folder_;
    std::string name_;
    const std::string temporaryName_ = posix::temporaryName();
};

/// The file that is replaced may not be read, or is gone or another kind of thing by now. Whatever else keeps
/// it from being opened must not cost anybody their access.
bool meansNoListToSee(int systemError) noexcept {
    constexpr int errors[] = {EACCES, EPERM, ENOENT, ELOOP, EISDIR, EOPNOTSUPP};
    return std::find(std::begin(errors), std::end(errors), systemError) != std::end(errors);
}

/// Writes under a temporary name beside the file, and renames at the end. A listing shows that name
/// meanwhile: transfers count on it to get hold of a folder that is empty otherwise.
class LocalOutputStream : public OutputStream {
public:
    LocalOutputStream(const AbsoluteIRI& location, ReplacementPolicy policy)
        : location_(location), transfer_(policy), place_(location) {
        raiseUnlessReplaceable();
        // Others must not come to read what is to replace something that they cannot read.
        struct ::stat standing {};
        const mode_t mode = lookAtReplaced(standing) ? 0600 : 0666;
        output_.emplace(place_.temporary(), mode);
        if (output_->systemError() != 0) raiseSystemError(output_->systemError(), location_, u"writing");
    }

    void write(std::span<const std::byte> bytes) override {
        while (!bytes.empty()) {
            const ssize_t count = ::write(output_->file().get(), bytes.data(), bytes.size());
            if (count < 0 && errno == EINTR) continue;
            if (count <= 0) raiseSystemError(count < 0 ? errno : ENOSPC, location_, u"writing");
            bytes = bytes.subspan(static_cast<std::size_t>(count));
        }
    }

    void setAttributes(const FileAttributes& attributes) override { attributes_ = attributes; }

    void commit() override {
        raiseUnlessReplaceable();
        int systemError = giveAttributes(output_->file().get());
        if (systemError == 0) systemError = output_->file().close();
        // As if nothing stood there: what has come or is protected since is asked for once more.
        if (systemError == 0) {
            systemError = transfer_.rename(place_.temporary(), posix::EntryKind::file, place_.entry(), false);
        }
        if (systemError != 0) raiseSystemError(systemError, location_, u"writing");
        output_->keep();
    }

private:
    /// 0 or the errno.
    int giveAttributes(int file) const {
        struct ::stat made {};
        if (::fstat(file, &made) != 0) return errno;
        mode_t bits = made.st_mode & 0777;
        if (const int systemError = takeOver(file, made, bits)) return systemError;
        posix::forgetWritable();
        if (attributes_.isWritable == false) bits &= ~mode_t{0222};
        if (attributes_.isWritable == true) bits |= 0200;
        if (::fchmod(file, bits) != 0 && !posix::meansNotKept(errno)) return errno;
        if (!attributes_.changed) return 0;
        const struct timespec times[2] = {{0, UTIME_OMIT},
                                          posix::timeOf(attributes_.changed->time_since_epoch().count())};
        return ::futimens(file, times) == 0 || posix::meansNotKept(errno) ? 0 : errno;
    }

    /// A file that is replaced hands its owner, its access list and its permission bits on: whoever could get
    /// at it still can, and nobody else. 0 or the errno.
    int takeOver(int file, struct ::stat& made, mode_t& bits) const {
        struct ::stat earlier {};
        if (!lookAtReplaced(earlier)) return 0;
        posix::giveOwner(file, earlier, made);
        if (const int systemError = posix::removeInheritedAccessLists(file, made.st_mode, {}))
            return systemError;
        bits = earlier.st_mode & 0777;
        int systemError = 0;
        const FileDescriptor opened =
            posix::openForReading(place_.entry(), Links::tellApart, earlier, systemError);
        if (!opened) {
            if (!meansNoListToSee(systemError)) return systemError;
            // If it has a list, its group's bits are not what its group may.
            bits &= 0707;
            return 0;
        }
        static const std::vector<char> accessList(
            posix::accessListName, posix::accessListName + std::strlen(posix::accessListName) + 1);
        return posix::copyExtendedAttributes(opened.get(), file, accessList, made).systemError;
    }

    /// False when there is no file that hands anything on.
    bool lookAtReplaced(struct ::stat& status) const noexcept {
        const EntryAt entry = place_.entry();
        return ::fstatat(entry.folder, entry.name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
               S_ISREG(status.st_mode);
    }

    void raiseUnlessReplaceable() const {
        const int systemError = transfer_.mayReplace(place_.entry());
        if (systemError != 0) raiseSystemError(systemError, location_, u"writing");
    }

    const AbsoluteIRI location_;
    const FileTransfer transfer_;
    const WrittenPlace place_;
    std::optional<posix::CreatedFile> output_;
    FileAttributes attributes_;
};

}  // namespace

std::unique_ptr<InputStream> LocalProvider::read(const AbsoluteIRI& file) {
    return std::make_unique<LocalInputStream>(file);
}

std::unique_ptr<OutputStream> LocalProvider::write(const AbsoluteIRI& file, ReplacementPolicy policy) {
    return std::make_unique<LocalOutputStream>(file, policy);
}

}  // namespace korvex::runtime::storage
