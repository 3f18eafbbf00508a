// The local provider on POSIX systems: the bytes of one file, in and out.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <string>
#include <utility>

#include "runtime/storage/providers/local/local_provider.h"
#include "runtime/storage/providers/local/posix/error_code.h"
#include "runtime/storage/providers/local/posix/file_transfer.h"
#include "runtime/storage/providers/local/posix/place.h"

namespace korvex::runtime::storage {

namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
using posix::FileDescriptor;
using posix::FileTransfer;
using posix::Place;
using posix::raiseSystemError;

namespace {

constexpr std::int64_t nanosecondsInSecond = 1'000'000'000;

/// Rounds down, also below zero, as times before 1970 need it.
constexpr std::int64_t floorOfDivision(std::int64_t dividend, std::int64_t divisor) noexcept {
    const std::int64_t quotient = dividend / divisor;
    return quotient * divisor > dividend ? quotient - 1 : quotient;
}

class LocalInputStream : public InputStream {
public:
    explicit LocalInputStream(const AbsoluteIRI& location) : location_(location) {
        const Place place(location);
        file_ = FileDescriptor(
            ::openat(place.folder(), place.name(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
        if (!file_ || ::fstat(file_.get(), &status_) != 0) raiseSystemError(errno, location_, u"reading");
        if (S_ISDIR(status_.st_mode)) raiseSystemError(EISDIR, location_, u"reading");
        if (!S_ISREG(status_.st_mode)) raiseSystemError(EOPNOTSUPP, location_, u"reading");
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
                .changed = sys_time<nanoseconds>(seconds(status_.st_mtim.tv_sec) +
                                                 nanoseconds(status_.st_mtim.tv_nsec)),
                .isWritable = (status_.st_mode & 0222) != 0};
    }

private:
    const AbsoluteIRI location_;
    FileDescriptor file_;
    struct ::stat status_ {};
};

/// Writes under a temporary name beside the file, and renames at the end.
class LocalOutputStream : public OutputStream {
public:
    LocalOutputStream(const AbsoluteIRI& location, ReplacementPolicy policy)
        : location_(location),
          policy_(policy),
          final_(posix::behindLink(location)),
          temporary_(final_, posix::temporaryName()) {
        raiseUnlessReplaceable();
        file_ = FileDescriptor(::openat(temporary_.folder(), temporary_.name(),
                                        O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666));
        isMade_ = static_cast<bool>(file_);
        if (!file_) raiseSystemError(errno, location_, u"writing");
    }
    ~LocalOutputStream() override {
        if (isMade_) ::unlinkat(temporary_.folder(), temporary_.name(), 0);
    }
    LocalOutputStream(const LocalOutputStream&) = delete;
    LocalOutputStream& operator=(const LocalOutputStream&) = delete;

    void write(std::span<const std::byte> bytes) override {
        while (!bytes.empty()) {
            const ssize_t count = ::write(file_.get(), bytes.data(), bytes.size());
            if (count < 0 && errno == EINTR) continue;
            if (count < 0) raiseSystemError(errno, location_, u"writing");
            bytes = bytes.subspan(static_cast<std::size_t>(count));
        }
    }

    void setAttributes(const FileAttributes& attributes) override { attributes_ = attributes; }

    void commit() override {
        raiseUnlessReplaceable();
        int systemError = giveAttributes();
        if (systemError == 0) systemError = file_.close();
        if (systemError != 0) raiseSystemError(systemError, location_, u"writing");
        if (::renameat(temporary_.folder(), temporary_.name(), final_.folder(), final_.name()) != 0) {
            raiseSystemError(errno == EISDIR ? EEXIST : errno, location_, u"writing");
        }
        isMade_ = false;
    }

private:
    int giveAttributes() const noexcept {
        struct ::stat status {};
        if (::fstat(file_.get(), &status) != 0) return errno;
        // A file that is replaced hands its permission bits on: others must not come to read what they could
        // not.
        struct ::stat earlier {};
        const bool isReplaced = ::fstatat(final_.folder(), final_.name(), &earlier, 0) == 0;
        const mode_t bits = (isReplaced ? earlier.st_mode : status.st_mode) & 0777;
        const mode_t wanted = attributes_.isWritable == false ? bits & ~mode_t{0222} : bits;
        if (::fchmod(file_.get(), wanted) != 0) return errno;
        if (!attributes_.changed) return 0;
        const std::int64_t changed = attributes_.changed->time_since_epoch().count();
        const std::int64_t seconds = floorOfDivision(changed, nanosecondsInSecond);
        const struct timespec times[2] = {{0, UTIME_OMIT},
                                          {seconds, changed - seconds * nanosecondsInSecond}};
        return ::futimens(file_.get(), times) == 0 ? 0 : errno;
    }

    void raiseUnlessReplaceable() const {
        const FileTransfer transfer(policy_);
        const int systemError = transfer.mayReplace({final_.folder(), final_.name()});
        if (systemError != 0) raiseSystemError(systemError, location_, u"writing");
    }

    const AbsoluteIRI location_;
    const ReplacementPolicy policy_;
    const Place final_;
    const Place temporary_;
    FileDescriptor file_;
    bool isMade_ = false;
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
