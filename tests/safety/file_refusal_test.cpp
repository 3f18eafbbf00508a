// Single files that cannot be read or written: the right code at the right place, and nothing else happens.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "runtime/process/posix/file_descriptor.h"
#include "tests/safety/own_mounts.h"
#include "tests/safety/system_calls.h"

namespace korvex::tests {
namespace {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
using runtime::process::FileDescriptor;

constexpr provider::ReplacementPolicy policies[] = {provider::ReplaceWritable, provider::ReplaceAny,
                                                    provider::MergeFolder};

class FileRefusalTest : public testing::Test {
protected:
    FileRefusalTest() {
        fs::create_directories(folder_);
        writeContent(file_, "content");
    }
    ~FileRefusalTest() override { fs::remove_all(folder_); }

    static vfs::File inMemory() {
        return {vfs::AbsoluteIRI(u"memory://file-refusal/file"),
                Velquist::KorvexStorageSystem::GetStorageSystemReference()};
    }

    const fs::path folder_ = workDisk() / "file-refusal";
    const fs::path file_ = folder_ / "file";
};

TEST_F(FileRefusalTest, ReadOnlyDiskIsAReadOnlyProviderForAFileThatStandsThere) {
    const fs::path there = smallDisk() / "there";
    writeContent(there, "old");
    setSmallDiskReadOnly(true);
    for (const auto policy : policies) {
        fs::path where;
        EXPECT_EQ(codeRaisedBy([&] { fileAt(file_).copyFile(fileAt(there), policy); }, &where),
                  vfs::readOnlyProvider);
        EXPECT_EQ(where, there);
        EXPECT_EQ(codeRaisedBy([&] { fileAt(file_).moveFile(fileAt(there), policy); }, &where),
                  vfs::readOnlyProvider);
        EXPECT_EQ(where, there);
    }
    setSmallDiskReadOnly(false);
    EXPECT_EQ(contentOf(there), "old");
    EXPECT_EQ(contentOf(file_), "content");
    fs::remove(there);
}

TEST_F(FileRefusalTest, SocketCannotBeCopied) {
    const fs::path path = folder_ / "socket";
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    struct ::sockaddr_un address {};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.native().size(), sizeof address.sun_path);
    std::strcpy(address.sun_path, path.c_str());
    ASSERT_EQ(::bind(socket.get(), reinterpret_cast<const struct ::sockaddr*>(&address), sizeof address), 0);
    for (const vfs::File& target : {fileAt(folder_ / "copy"), inMemory()}) {
        fs::path where;
        EXPECT_EQ(codeRaisedBy([&] { fileAt(path).copyFile(target, provider::ReplaceWritable); }, &where),
                  vfs::unsupportedOperation);
        EXPECT_EQ(where, path);
    }
    EXPECT_FALSE(fs::exists(folder_ / "copy"));
}

TEST_F(FileRefusalTest, PipeIsNotEvenOpened) {
    const fs::path pipe = folder_ / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0666), 0);
    const FileDescriptor watch(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    ASSERT_GE(::inotify_add_watch(watch.get(), pipe.c_str(), IN_OPEN), 0);
    for (const vfs::File& target : {fileAt(folder_ / "copy"), inMemory()}) {
        EXPECT_EQ(codeRaisedBy([&] { fileAt(pipe).copyFile(target, provider::ReplaceWritable); }),
                  vfs::unsupportedOperation);
    }
    std::array<char, 4096> events{};
    EXPECT_EQ(::read(watch.get(), events.data(), events.size()), -1);
    EXPECT_EQ(errno, EAGAIN);
}

TEST_F(FileRefusalTest, LinkToAFolderOrPipeIsNotReplacedByAFile) {
    fs::create_directory(folder_ / "folder");
    ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0666), 0);
    fileAt(file_).copyFile(inMemory(), provider::ReplaceAny);
    for (const char* const leadsTo : {"folder", "pipe"}) {
        const fs::path link = folder_ / "link";
        fs::create_symlink(leadsTo, link);
        for (const auto policy : policies) {
            for (const vfs::File& source : {fileAt(file_), inMemory()}) {
                fs::path where;
                EXPECT_EQ(codeRaisedBy([&] { source.copyFile(fileAt(link), policy); }, &where),
                          vfs::resourceAlreadyExists);
                EXPECT_EQ(where, link);
                EXPECT_EQ(codeRaisedBy([&] { source.moveFile(fileAt(link), policy); }),
                          vfs::resourceAlreadyExists);
            }
        }
        EXPECT_EQ(fs::read_symlink(link), leadsTo);
        fs::remove(link);
    }
    inMemory().removeFile();
}

TEST_F(FileRefusalTest, LinkToNothingIsReplacedWhenAnyFileMayBe) {
    const fs::path link = folder_ / "link";
    for (const char* const leadsTo : {"absent", "file/below", "link"}) {
        fs::create_symlink(leadsTo, link);
        EXPECT_EQ(codeRaisedBy([&] { fileAt(file_).copyFile(fileAt(link), provider::ReplaceWritable); }),
                  vfs::resourceAlreadyExists);
        EXPECT_EQ(fs::read_symlink(link), leadsTo);
        fileAt(file_).copyFile(fileAt(link), provider::ReplaceAny);
        EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(link)));
        EXPECT_EQ(contentOf(link), "content");
        fs::remove(link);
    }
}

TEST_F(FileRefusalTest, FileBehindLinksIsReplacedAndTheLinksStay) {
    fs::create_directory(folder_ / "inner");
    fs::create_symlink("inner/second", folder_ / "first");
    fs::create_symlink("../target", folder_ / "inner" / "second");
    writeContent(folder_ / "target", "old");
    fileAt(file_).copyFile(fileAt(folder_ / "first"), provider::ReplaceWritable);
    EXPECT_EQ(contentOf(folder_ / "target"), "content");
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(folder_ / "target")));
    EXPECT_TRUE(fs::is_symlink(folder_ / "first"));
    EXPECT_TRUE(fs::is_symlink(folder_ / "inner" / "second"));
}

TEST_F(FileRefusalTest, AttributeWithoutRoomForItIsLeftOutUnlessTheDiskIsFull) {
    ASSERT_EQ(::setxattr(file_.c_str(), "user.colour", "red", 3, 0), 0);
    for (const int systemError : {ENOSPC, E2BIG, ERANGE}) {
        WatchedCalls watched;
        watched.fail(SystemCall::setAttribute, systemError);
        fileAt(file_).copyFile(fileAt(folder_ / "copy"), provider::ReplaceAny);
        EXPECT_EQ(contentOf(folder_ / "copy"), "content");
        fs::remove(folder_ / "copy");
    }
    const fs::path filling = smallDisk() / "filling";
    const FileDescriptor full(::open(filling.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
    const std::string page(4096, 'x');
    while (::write(full.get(), page.data(), page.size()) > 0) {
    }
    fs::resize_file(file_, 0);
    WatchedCalls watched;
    watched.fail(SystemCall::setAttribute, ENOSPC);
    EXPECT_EQ(
        codeRaisedBy([&] { fileAt(file_).copyFile(fileAt(smallDisk() / "copy"), provider::ReplaceAny); }),
        vfs::noSpaceLeft);
    EXPECT_FALSE(fs::exists(smallDisk() / "copy"));
    fs::remove(filling);
}

TEST_F(FileRefusalTest, StreamForgivesADiskThatKeepsNoBitsOrTimes) {
    fileAt(file_).copyFile(inMemory(), provider::ReplaceAny);
    for (const int systemError : {EPERM, EOPNOTSUPP}) {
        WatchedCalls watched;
        watched.fail(SystemCall::changeBits, systemError);
        watched.fail(SystemCall::changeTimes, systemError);
        inMemory().copyFile(fileAt(folder_ / "copy"), provider::ReplaceAny);
        EXPECT_EQ(contentOf(folder_ / "copy"), "content");
        fs::remove(folder_ / "copy");
    }
    inMemory().removeFile();
}

}  // namespace
}  // namespace korvex::tests
