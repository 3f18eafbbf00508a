// A new file: its name stands for all of it or for nothing, whatever happens while it is copied.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "runtime/interpreter/interrupts.h"
#include "runtime/process/posix/file_descriptor.h"
#include "runtime/storage/transfer_progress.h"
#include "tests/safety/own_mounts.h"
#include "tests/safety/system_calls.h"

namespace korvex::tests {
namespace {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
namespace interpreter = korvex::runtime::interpreter;

class NewFileTest : public testing::Test {
protected:
    NewFileTest() {
        fs::create_directories(folder_);
        writeContent(source_, std::string(1 << 20, 'x'));
    }
    ~NewFileTest() override {
        fs::remove_all(folder_);
        interpreter::takeInterrupt();
    }

    void copy() const { fileAt(source_).copyFile(fileAt(target_), provider::ReplaceWritable); }
    void expectNothingElse() const { EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 1); }

    const fs::path folder_ = workDisk() / "new";
    const fs::path source_ = folder_ / "source";
    const fs::path target_ = folder_ / "target";
};

TEST_F(NewFileTest, LargeFileHasItsNameOnlyWhenItIsWhole) {
    bool isSeen = true;
    WatchedCalls watched;
    watched.before(SystemCall::copyRange, [&] { isSeen = fs::exists(target_); });
    copy();
    EXPECT_FALSE(isSeen);
    EXPECT_EQ(contentOf(target_), contentOf(source_));
}

TEST_F(NewFileTest, FileWithHolesHasItsNameOnlyWhenItIsWhole) {
    ASSERT_EQ(::truncate(source_.c_str(), 0), 0);
    ASSERT_EQ(::truncate(source_.c_str(), 40'000), 0);
    const runtime::process::FileDescriptor file(::open(source_.c_str(), O_WRONLY | O_CLOEXEC));
    ASSERT_EQ(::pwrite(file.get(), "data", 4, 30'000), 4);
    bool isSeen = true;
    WatchedCalls watched;
    watched.before(SystemCall::read, [&] { isSeen = fs::exists(target_); });
    copy();
    EXPECT_FALSE(isSeen);
    EXPECT_EQ(contentOf(target_), contentOf(source_));
}

TEST_F(NewFileTest, WhatComesMeanwhileIsReplacedNoMoreThanWhatStoodThere) {
    for (const bool isFolder : {true, false}) {
        WatchedCalls watched;
        watched.before(SystemCall::copyRange, [&] {
            isFolder ? static_cast<void>(fs::create_directory(target_)) : writeContent(target_, "theirs");
            fs::permissions(target_, fs::perms(0444));
        });
        EXPECT_EQ(codeRaisedBy([&] { copy(); }),
                  isFolder ? vfs::resourceAlreadyExists : vfs::permissionDenied);
        EXPECT_EQ(fs::is_directory(target_), isFolder);
        fs::remove(target_);
        expectNothingElse();
    }
}

TEST_F(NewFileTest, InterruptStopsALargeFileAndLeavesNothing) {
    fs::resize_file(source_, 1);
    writeContent(source_, std::string(100 << 20, 'x'));
    for (const bool isMove : {false, true}) {
        for (const fs::path& disk : {workDisk(), otherDisk()}) {
            if (isMove && disk == workDisk()) continue;
            const fs::path target = disk / "interrupted";
            WatchedCalls watched;
            watched.before(SystemCall::copyRange, interpreter::raiseInterrupt);
            watched.before(SystemCall::read, interpreter::raiseInterrupt);
            try {
                isMove ? fileAt(source_).moveFile(fileAt(target), provider::ReplaceWritable)
                       : fileAt(source_).copyFile(fileAt(target), provider::ReplaceWritable);
                ADD_FAILURE() << "it went on";
            } catch (const vfs::Exception& failure) {
                EXPECT_EQ(failure.getErrorCode(), vfs::unknownError);
                EXPECT_EQ(failure.getExceptionContextsString(), runtime::storage::interruptedContext);
                EXPECT_EQ(failure.getLocation(), fileAt(source_).getLocation());
            }
            EXPECT_TRUE(interpreter::takeInterrupt());
            EXPECT_FALSE(fs::exists(target));
            EXPECT_EQ(fs::file_size(source_), 100U << 20);
        }
    }
    expectNothingElse();
    EXPECT_EQ(std::distance(fs::directory_iterator(otherDisk()), {}), 0);
}

TEST_F(NewFileTest, WhatTheKernelDoesNotCopyIsRead) {
    WatchedCalls watched;
    watched.fail(SystemCall::copyRange, EIO);
    copy();
    EXPECT_EQ(contentOf(target_), contentOf(source_));
}

TEST_F(NewFileTest, ReadingThatFailsIsToldAtTheSource) {
    WatchedCalls watched;
    watched.fail(SystemCall::copyRange, EIO);
    watched.fail(SystemCall::read, EIO);
    fs::path where;
    EXPECT_EQ(codeRaisedBy([&] { copy(); }, &where), vfs::ioError);
    EXPECT_EQ(where, source_);
    expectNothingElse();
}

TEST_F(NewFileTest, FileWhoseSizeTheSystemOverstatesGetsNoZeros) {
    const fs::path overstated = "/sys/kernel/uevent_seqnum";
    ASSERT_GT(fs::file_size(overstated), 1000U);
    fileAt(overstated).copyFile(fileAt(target_), provider::ReplaceWritable);
    EXPECT_FALSE(contentOf(target_).empty());
    EXPECT_EQ(contentOf(target_).find('\0'), std::string::npos);
}

TEST_F(NewFileTest, WhereFilesNeedANameItIsATemporaryOne) {
    bool isSeen = true;
    WatchedCalls watched;
    watched.fail(SystemCall::giveName, ENOENT);
    watched.before(SystemCall::renameOntoNothing, [&] { isSeen = fs::exists(target_); });
    copy();
    EXPECT_FALSE(isSeen);
    EXPECT_EQ(contentOf(target_), contentOf(source_));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 2);
}

TEST_F(NewFileTest, FolderWithoutRoomForTheNameIsToldAfterOneCopy) {
    WatchedCalls watched;
    watched.fail(SystemCall::giveName, ENOSPC);
    fs::path where;
    EXPECT_EQ(codeRaisedBy([&] { copy(); }, &where), vfs::noSpaceLeft);
    EXPECT_EQ(where, target_);
    EXPECT_EQ(watched.count(SystemCall::changeTimes), 1U);
    expectNothingElse();
}

TEST_F(NewFileTest, WhatComesMeanwhileIsReplacedAsThePolicyAllows) {
    for (const bool isProtected : {false, true}) {
        {
            WatchedCalls watched;
            watched.before(SystemCall::giveName, [&] {
                writeContent(target_, "theirs");
                if (isProtected) ::chmod(target_.c_str(), 0444);
            });
            EXPECT_EQ(codeRaisedBy([&] { copy(); }), isProtected ? int{vfs::permissionDenied} : -1);
        }
        EXPECT_EQ(contentOf(target_) == "theirs", isProtected);
        EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 2);
        fs::remove(target_);
    }
}

TEST_F(NewFileTest, FileThatIsProtectedMeanwhileIsNotReplaced) {
    writeContent(target_, "theirs");
    WatchedCalls watched;
    watched.before(SystemCall::changeTimes, [&] { ::chmod(target_.c_str(), 0444); });
    EXPECT_EQ(codeRaisedBy([&] { copy(); }), vfs::permissionDenied);
    EXPECT_EQ(contentOf(target_), "theirs");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 2);
}

}  // namespace
}  // namespace korvex::tests
