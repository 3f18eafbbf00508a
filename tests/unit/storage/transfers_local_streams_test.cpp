// The bytes of local files: how files are opened for them, whoever else has a hold on the file, and where
// they may be too many.
#include "runtime/storage/providers/local/posix/open_for_reading.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <span>
#include <optional>
#include <string>

#include "platform/path_management.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/providers/local/local_provider.h"
#include "runtime/storage/providers/local/posix/error_code.h"
#include "tests/support/posix/few_open_files.h"
#include "tests/support/scratch_folder.h"

namespace korvex::runtime::storage::posix {
namespace {

namespace fs = std::filesystem;
namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

/// Another process that has a lease on a file, and is asked to give it up when somebody opens the file.
class LeaseHolder {
public:
    enum class Answer { givesUp, protectsFirst, interruptsInstead };

    /// Returns when the lease is there.
    LeaseHolder(const fs::path& file, Answer answer) {
        std::array<int, 2> ends{};
        EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
        const FileDescriptor reading(ends[0]);
        FileDescriptor writing(ends[1]);
        child_ = ::fork();
        if (child_ == 0) hold(file.c_str(), writing.get(), answer);
        writing.close();
        char isHeld = 'n';
        EXPECT_EQ(::read(reading.get(), &isHeld, 1), 1);
        EXPECT_EQ(isHeld, 'y') << "no lease";
    }
    ~LeaseHolder() {
        ::kill(child_, SIGKILL);
        ::waitpid(child_, nullptr, 0);
    }
    LeaseHolder(const LeaseHolder&) = delete;
    LeaseHolder& operator=(const LeaseHolder&) = delete;

private:
    [[noreturn]] static void hold(const char* file, int told, Answer answer) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::sigset_t asked{};
        ::sigemptyset(&asked);
        ::sigaddset(&asked, SIGIO);
        ::sigprocmask(SIG_BLOCK, &asked, nullptr);
        const int opened = ::open(file, O_RDWR | O_CLOEXEC);
        const char isHeld = ::fcntl(opened, F_SETLEASE, F_WRLCK) == 0 ? 'y' : 'n';
        if (::write(told, &isHeld, 1) != 1) ::_exit(1);
        ::sigwaitinfo(&asked, nullptr);
        // Until this process is ended: nobody tells it when the other one waits.
        while (answer == Answer::interruptsInstead)
            ::kill(::getppid(), SIGUSR1);
        if (answer == Answer::protectsFirst && ::fchmod(opened, 0444) != 0) ::_exit(1);
        ::fcntl(opened, F_SETLEASE, F_UNLCK);
        ::_exit(0);
    }

    ::pid_t child_ = -1;
};

std::string contentOf(const FileDescriptor& file) {
    std::array<char, 100> buffer{};
    const ::ssize_t count = ::read(file.get(), buffer.data(), buffer.size());
    return {buffer.data(), count < 0 ? 0 : static_cast<std::size_t>(count)};
}

class OpenForReading : public ::testing::Test {
protected:
    FileDescriptor open(const std::string& name, Links links) {
        return openForReading({AT_FDCWD, (scratch_.path() / name).c_str()}, links, status_, systemError_);
    }
    AbsoluteIRI locationOf(const std::string& name) const {
        return Velquist::PathManagement::GetIRIFromString((scratch_.path() / name).u16string());
    }

    tests::ScratchFolder scratch_;
    struct ::stat status_ {};
    int systemError_ = 0;
};

TEST_F(OpenForReading, GivesAFileAndItsStatus) {
    scratch_.writeFile("file", "content");
    fs::create_symlink("file", scratch_.path() / "link");
    EXPECT_EQ(contentOf(open("file", Links::tellApart)), "content");
    EXPECT_EQ(status_.st_size, 7);
    EXPECT_EQ(contentOf(open("link", Links::follow)), "content");
    EXPECT_EQ(systemError_, 0);
}

TEST_F(OpenForReading, TellsWhatIsNoFile) {
    scratch_.makeFolder("folder");
    fs::create_symlink("folder", scratch_.path() / "link");
    ASSERT_EQ(::mkfifo((scratch_.path() / "pipe").c_str(), 0666), 0);
    EXPECT_FALSE(open("folder", Links::tellApart));
    EXPECT_EQ(systemError_, EISDIR);
    EXPECT_FALSE(open("pipe", Links::tellApart));
    EXPECT_EQ(systemError_, EOPNOTSUPP);
    EXPECT_FALSE(open("link", Links::tellApart));
    EXPECT_EQ(systemError_, ELOOP);
    EXPECT_FALSE(open("absent", Links::follow));
    EXPECT_EQ(systemError_, ENOENT);
}

TEST_F(OpenForReading, WaitsForTheEndOfALease) {
    const fs::path file = scratch_.writeFile("file", "content");
    fs::create_symlink("file", scratch_.path() / "link");
    for (const Links links : {Links::follow, Links::tellApart}) {
        const LeaseHolder holder(file, LeaseHolder::Answer::givesUp);
        EXPECT_EQ(contentOf(open(links == Links::follow ? "link" : "file", links)), "content");
        EXPECT_EQ(systemError_, 0);
    }
}

TEST_F(OpenForReading, AnInterruptEndsTheWaitingForALease) {
    const fs::path file = scratch_.writeFile("file", "content");
    struct ::sigaction raising {};
    struct ::sigaction earlier {};
    raising.sa_handler = [](int) { interpreter::raiseInterrupt(); };
    ASSERT_EQ(::sigaction(SIGUSR1, &raising, &earlier), 0);
    {
        const LeaseHolder holder(file, LeaseHolder::Answer::interruptsInstead);
        EXPECT_FALSE(open("file", Links::tellApart));
        EXPECT_EQ(systemError_, interruptedError);
    }
    ::sigaction(SIGUSR1, &earlier, nullptr);
    EXPECT_TRUE(interpreter::takeInterrupt());
}

class LocalStreams : public OpenForReading {};

TEST_F(LocalStreams, WaitForTheEndOfALease) {
    const fs::path file = scratch_.writeFile("file", "content");
    const LeaseHolder holder(file, LeaseHolder::Answer::givesUp);
    LocalProvider disk;
    std::array<char, 100> buffer{};
    EXPECT_EQ(disk.read(locationOf("file"))->read(std::as_writable_bytes(std::span(buffer))), 7U);
    EXPECT_STREQ(buffer.data(), "content");
}

class LocalOutput : public LocalStreams {
protected:
    /// A stream with new content for a file.
    std::unique_ptr<OutputStream> written(const std::string& name) {
        auto stream = disk_.write(locationOf(name), provider::ReplaceWritable);
        stream->write(std::as_bytes(std::span(newContent_)));
        return stream;
    }
    static vfs::ErrorCode errorOfCommit(OutputStream& stream) {
        try {
            stream.commit();
        } catch (const vfs::Exception& failure) {
            return failure.getErrorCode();
        }
        ADD_FAILURE() << "no exception";
        return vfs::unknownError;
    }
    std::string contentNow(const std::string& name) { return contentOf(open(name, Links::tellApart)); }

    LocalProvider disk_;
    const std::string newContent_ = "new";
};

TEST_F(LocalOutput, TheReplacedFileHandsItsBitsOnOrStays) {
    const fs::path file = scratch_.writeFile("file", "old");
    ASSERT_EQ(::chmod(file.c_str(), 0660), 0);
    const auto stream = written("file");
    // A sanitizer needs a file of its own when it meets an exception's type first.
    std::optional<vfs::Exception> seen = vfs::Exception(vfs::unknownError, AbsoluteIRI(u"file:///a"));
    seen = vfs::Exception(*seen);
    (void)seen->what();
    seen.reset();
    {
        const tests::FewOpenFiles none(0);
        EXPECT_EQ(errorOfCommit(*stream), vfs::internalError);
    }
    EXPECT_EQ(contentNow("file"), "old");
    stream->commit();
    EXPECT_EQ(contentNow("file"), "new");
    EXPECT_EQ(status_.st_mode & 07777U, 0660U);
}

TEST_F(LocalOutput, AFileThatIsProtectedAtTheVeryEndStays) {
    const fs::path file = scratch_.writeFile("file", "old");
    const auto stream = written("file");
    const LeaseHolder holder(file, LeaseHolder::Answer::protectsFirst);
    EXPECT_EQ(errorOfCommit(*stream), vfs::permissionDenied);
    EXPECT_EQ(contentNow("file"), "old");
}

TEST_F(LocalOutput, WhatSomebodyPutsInThePlaceOfTheUnfinishedFileStays) {
    auto stream = written("file");
    const fs::path unfinished = fs::directory_iterator(scratch_.path())->path();
    const std::string name = unfinished.filename().string();
    fs::remove(unfinished);
    scratch_.writeFile(name, "theirs");
    stream.reset();
    EXPECT_EQ(contentNow(name), "theirs");
}

/// What becomes of a stream that goes beyond the size which a file may have.
vfs::ErrorCode errorOfWritingBeyondLimit(const AbsoluteIRI& location) {
    constexpr ::rlim_t limit = 10'000;
    const struct ::rlimit few { limit, limit };
    ::signal(SIGXFSZ, SIG_DFL);
    if (::setrlimit(RLIMIT_FSIZE, &few) != 0) return vfs::internalError;
    LocalProvider disk;
    const auto stream = disk.write(location, provider::ReplaceWritable);
    try {
        const std::string content(limit + 1, 'x');
        stream->write(std::as_bytes(std::span(content)));
    } catch (const vfs::Exception& failure) {
        return failure.getErrorCode();
    }
    return vfs::unknownError;
}

TEST_F(LocalStreams, BeyondTheLimitOfSizesAreAnErrorAndLeaveNothing) {
    // In a process of its own, which the system ends for such a thing unless it is told not to.
    EXPECT_EXIT(::_exit(errorOfWritingBeyondLimit(locationOf("file"))),
                ::testing::ExitedWithCode(vfs::fileTooLarge), "");
    EXPECT_TRUE(fs::is_empty(scratch_.path()));
}

}  // namespace
}  // namespace korvex::runtime::storage::posix
