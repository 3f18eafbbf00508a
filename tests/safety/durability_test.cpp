// What was moved has reached the disk before it goes from where it was; what fails at the very end leaves
// nothing in part; and no call is made that is not needed.
#include <gtest/gtest.h>

#include <cerrno>

#include "tests/safety/own_mounts.h"
#include "tests/safety/system_calls.h"

namespace korvex::tests {
namespace {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;

std::ptrdiff_t entriesIn(const fs::path& folder) { return std::distance(fs::directory_iterator(folder), {}); }

bool reachesTheDisk(SystemCall call) {
    return call == SystemCall::rename || call == SystemCall::renameOntoNothing ||
           call == SystemCall::giveName || call == SystemCall::syncFile || call == SystemCall::remove;
}

class DurabilityTest : public testing::Test {
protected:
    DurabilityTest() {
        fs::create_directories(source_ / "inner");
        for (int file = 0; file < files; ++file) {
            writeContent(source_ / "inner" / std::to_string(file), std::string(4096, 'x'));
        }
        writeContent(source_ / "file", "content");
    }
    ~DurabilityTest() override {
        fs::remove_all(source_);
        for (const fs::directory_entry& entry : fs::directory_iterator(otherDisk())) {
            fs::remove_all(entry);
        }
    }

    void expectSourceWhole() const {
        EXPECT_EQ(entriesIn(source_ / "inner"), files);
        EXPECT_EQ(contentOf(source_ / "file"), "content");
    }
    void moveFile() const { fileAt(source_ / "file").moveFile(fileAt(target_), provider::ReplaceWritable); }
    void moveFolder() const { folderAt(source_).moveFolder(folderAt(target_), provider::MergeFolder); }

    static constexpr std::ptrdiff_t files = 40;
    const fs::path source_ = workDisk() / "durable";
    const fs::path target_ = otherDisk() / "target";
};

TEST_F(DurabilityTest, MovedFileAndItsNameReachTheDiskBeforeTheSourceGoes) {
    const WatchedCalls watched;
    moveFile();
    std::vector<SystemCall> found;
    for (const SystemCall call : watched.calls()) {
        if (reachesTheDisk(call)) found.push_back(call);
    }
    // The first renaming is the one that cannot be.
    EXPECT_EQ(found, (std::vector{SystemCall::renameOntoNothing, SystemCall::syncFile, SystemCall::giveName,
                                  SystemCall::syncFile, SystemCall::remove}));
}

TEST_F(DurabilityTest, MovedFileStaysWhenItsCopyDoesNotReachTheDisk) {
    WatchedCalls watched;
    watched.fail(SystemCall::syncFile, EIO);
    fs::path where;
    EXPECT_EQ(codeRaisedBy([&] { moveFile(); }, &where), vfs::ioError);
    EXPECT_EQ(where, target_);
    expectSourceWhole();
    EXPECT_EQ(entriesIn(otherDisk()), 0);
}

TEST_F(DurabilityTest, MovedTreeReachesTheDiskInOneWaitBeforeAnythingGoes) {
    for (const bool isMerge : {false, true}) {
        if (isMerge) {
            fs::rename(target_, otherDisk() / "back");
            folderAt(otherDisk() / "back").moveFolder(folderAt(source_), provider::MergeFolder);
            fs::create_directory(target_);
        }
        const WatchedCalls watched;
        moveFolder();
        EXPECT_FALSE(fs::exists(source_));
        EXPECT_EQ(watched.count(SystemCall::syncFileSystem), 1U);
        EXPECT_TRUE(watched.isBefore(SystemCall::syncFileSystem, SystemCall::remove));
        EXPECT_LE(watched.count(SystemCall::syncFile), 1U);
    }
}

TEST_F(DurabilityTest, MovedTreeStaysWhenItsCopyDoesNotReachTheDisk) {
    WatchedCalls watched;
    watched.fail(SystemCall::syncFileSystem, ENOSPC);
    EXPECT_EQ(codeRaisedBy([&] { moveFolder(); }), vfs::noSpaceLeft);
    expectSourceWhole();
    EXPECT_EQ(entriesIn(otherDisk()), 0);
    fs::create_directory(target_);
    EXPECT_EQ(codeRaisedBy([&] { moveFolder(); }), vfs::noSpaceLeft);
    expectSourceWhole();
}

TEST_F(DurabilityTest, WhatComesFromOtherStorageReachesTheDiskBeforeItGoesThere) {
    const vfs::StorageSystemReference storage = Velquist::KorvexStorageSystem::GetStorageSystemReference();
    const vfs::File file(vfs::AbsoluteIRI(u"memory://durability/folder/file"), storage);
    vfs::Folder(vfs::AbsoluteIRI(u"memory://durability/folder"), storage).createFolder();
    fileAt(source_ / "file").moveFile(file, provider::ReplaceWritable);
    {
        WatchedCalls watched;
        watched.fail(SystemCall::syncFile, EIO);
        watched.fail(SystemCall::syncFileSystem, EIO);
        EXPECT_EQ(codeRaisedBy([&] { file.moveFile(fileAt(target_), provider::ReplaceAny); }), vfs::ioError);
        EXPECT_EQ(codeRaisedBy([&] {
                      file.getParent().moveFolder(folderAt(otherDisk() / "folder"), provider::ReplaceAny);
                  }),
                  vfs::ioError);
    }
    EXPECT_EQ(vfs::exists(file.getLocation(), storage), provider::AsFile);
    file.moveFile(fileAt(target_), provider::ReplaceAny);
    EXPECT_EQ(contentOf(target_), "content");
    file.getParent().removeFolder(vfs::RemoveEmptyFolder);
}

TEST_F(DurabilityTest, FileThatChangesWhileItMovesStays) {
    WatchedCalls watched;
    watched.before(SystemCall::syncFile, [&] { writeContent(source_ / "file", "changed meanwhile"); });
    fs::path where;
    EXPECT_EQ(codeRaisedBy([&] { moveFile(); }, &where), vfs::resourceInUse);
    EXPECT_EQ(where, source_ / "file");
    EXPECT_EQ(contentOf(source_ / "file"), "changed meanwhile");
    EXPECT_EQ(contentOf(target_), "content");
}

TEST_F(DurabilityTest, WhatChangesOrComesWhileItsTreeMovesStays) {
    for (const char* name : {"file", "new"}) {
        WatchedCalls watched;
        watched.before(SystemCall::syncFileSystem, [&] { writeContent(source_ / name, "meanwhile"); });
        fs::path where;
        EXPECT_EQ(codeRaisedBy([&] { moveFolder(); }, &where), vfs::resourceInUse);
        EXPECT_EQ(where, source_ / name);
        EXPECT_EQ(contentOf(source_ / name), "meanwhile");
    }
}

TEST_F(DurabilityTest, FileWhoseClosingFailsLeavesNothingInPart) {
    for (const bool isThere : {false, true}) {
        if (isThere) writeContent(target_, "old");
        {
            WatchedCalls watched;
            watched.fail(SystemCall::close, EDQUOT);
            const vfs::File file = fileAt(source_ / "file");
            EXPECT_EQ(codeRaisedBy([&] { file.copyFile(fileAt(target_), provider::ReplaceAny); }),
                      vfs::noSpaceLeft);
            EXPECT_EQ(codeRaisedBy([&] { file.moveFile(fileAt(target_), provider::ReplaceAny); }),
                      vfs::noSpaceLeft);
        }
        EXPECT_EQ(entriesIn(otherDisk()), isThere ? 1 : 0);
        EXPECT_EQ(contentOf(target_), isThere ? "old" : "");
        expectSourceWhole();
    }
}

TEST_F(DurabilityTest, StreamWhoseClosingFailsLeavesNothingInPart) {
    const vfs::StorageSystemReference storage = Velquist::KorvexStorageSystem::GetStorageSystemReference();
    const vfs::File file(vfs::AbsoluteIRI(u"memory://durability/file"), storage);
    fileAt(source_ / "file").copyFile(file, provider::ReplaceAny);
    {
        WatchedCalls watched;
        watched.fail(SystemCall::close, EIO);
        EXPECT_EQ(codeRaisedBy([&] { file.copyFile(fileAt(target_), provider::ReplaceAny); }), vfs::ioError);
    }
    EXPECT_EQ(entriesIn(otherDisk()), 0);
    file.removeFile();
}

TEST_F(DurabilityTest, FileOnADiskThatTellsSizesIsReadWithOneCall) {
    const WatchedCalls watched;
    folderAt(source_).copyFolder(folderAt(target_), provider::ReplaceWritable);
    EXPECT_EQ(watched.count(SystemCall::read), static_cast<std::size_t>(files) + 1);
    EXPECT_EQ(contentOf(target_ / "inner" / "7"), std::string(4096, 'x'));
}

}  // namespace
}  // namespace korvex::tests
