// Moves between disks, where a renaming cannot be: they merge like any other, leave nothing behind when they
// stop, and take nothing from the source that was not copied.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/transfer_progress.h"
#include "tests/safety/own_mounts.h"

namespace korvex::tests {
namespace {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
namespace storage = korvex::runtime::storage;

class CrossDiskTest : public testing::Test {
protected:
    CrossDiskTest() {
        fs::create_directories(source_ / "inner");
        writeContent(source_ / "file", "new");
        writeContent(source_ / "inner" / "file", "inner");
        fs::create_symlink("file", source_ / "link");
    }
    ~CrossDiskTest() override {
        fs::remove_all(source_);
        for (const fs::directory_entry& entry : fs::directory_iterator(otherDisk())) {
            fs::remove_all(entry);
        }
    }

    static std::ptrdiff_t entriesIn(const fs::path& folder) {
        return std::distance(fs::directory_iterator(folder), {});
    }

    const fs::path source_ = workDisk() / "cross";
    const fs::path target_ = otherDisk() / "target";
};

TEST_F(CrossDiskTest, FolderMovesOntoNothing) {
    folderAt(source_).moveFolder(folderAt(target_), provider::ReplaceWritable);
    EXPECT_FALSE(fs::exists(source_));
    EXPECT_EQ(contentOf(target_ / "inner" / "file"), "inner");
    EXPECT_EQ(fs::read_symlink(target_ / "link"), "file");
    EXPECT_EQ(entriesIn(otherDisk()), 1);
}

TEST_F(CrossDiskTest, FolderMergesIntoOneThatExists) {
    for (const auto policy : {provider::MergeFolder, provider::ReplaceAny}) {
        fs::create_directories(source_ / "inner");
        writeContent(source_ / "file", "new");
        writeContent(source_ / "inner" / "file", "inner");
        fs::create_directories(target_ / "inner");
        writeContent(target_ / "file", "old");
        writeContent(target_ / "inner" / "other", "other");
        folderAt(source_).moveFolder(folderAt(target_), policy);
        EXPECT_FALSE(fs::exists(source_));
        EXPECT_EQ(contentOf(target_ / "file"), "new");
        EXPECT_EQ(contentOf(target_ / "inner" / "file"), "inner");
        EXPECT_EQ(contentOf(target_ / "inner" / "other"), "other");
    }
}

TEST_F(CrossDiskTest, FolderDoesNotMergeUnderAPlainPolicy) {
    fs::create_directories(target_);
    EXPECT_EQ(
        codeRaisedBy([&] { folderAt(source_).moveFolder(folderAt(target_), provider::ReplaceWritable); }),
        vfs::resourceAlreadyExists);
    EXPECT_EQ(entriesIn(target_), 0);
    EXPECT_EQ(contentOf(source_ / "file"), "new");
    EXPECT_EQ(entriesIn(otherDisk()), 1);
}

TEST_F(CrossDiskTest, FolderDoesNotReplaceAFile) {
    writeContent(target_, "old");
    for (const auto policy : {provider::ReplaceWritable, provider::ReplaceAny, provider::MergeFolder}) {
        EXPECT_EQ(codeRaisedBy([&] { folderAt(source_).moveFolder(folderAt(target_), policy); }),
                  vfs::resourceAlreadyExists);
    }
    EXPECT_EQ(contentOf(target_), "old");
    EXPECT_EQ(contentOf(source_ / "file"), "new");
}

/// Raises the interrupt as soon as anything is done.
class InterruptAtOnce : public storage::ProgressObserver {
public:
    InterruptAtOnce() : earlier_(storage::setProgressObserver(this)) {}
    ~InterruptAtOnce() override {
        storage::setProgressObserver(earlier_);
        korvex::runtime::interpreter::takeInterrupt();
    }
    void progressed(const storage::Progress&) override { korvex::runtime::interpreter::raiseInterrupt(); }

private:
    storage::ProgressObserver* earlier_;
};

TEST_F(CrossDiskTest, InterruptedMoveLeavesTheSourceWholeAndNothingElse) {
    for (int file = 0; file < 2000; ++file) {
        writeContent(source_ / ("file" + std::to_string(file)), "content");
    }
    {
        const InterruptAtOnce interrupt;
        EXPECT_EQ(
            codeRaisedBy([&] { folderAt(source_).moveFolder(folderAt(target_), provider::ReplaceWritable); }),
            vfs::unknownError);
    }
    EXPECT_EQ(entriesIn(otherDisk()), 0);
    EXPECT_EQ(entriesIn(source_), 2003);
}

TEST_F(CrossDiskTest, LinkToAFolderMovesAsALinkAndReplacesNothing) {
    fs::create_directory_symlink("inner", source_ / "toFolder");
    writeContent(target_, "old");
    EXPECT_EQ(codeRaisedBy([&] {
                  folderAt(source_ / "toFolder").moveFolder(folderAt(target_), provider::ReplaceWritable);
              }),
              vfs::resourceAlreadyExists);
    EXPECT_EQ(contentOf(target_), "old");
    folderAt(source_ / "toFolder").moveFolder(folderAt(otherDisk() / "moved"), provider::ReplaceWritable);
    EXPECT_EQ(fs::read_symlink(otherDisk() / "moved"), "inner");
    EXPECT_FALSE(fs::is_symlink(source_ / "toFolder"));
}

TEST_F(CrossDiskTest, DevicesAndPipesAreNeverReplaced) {
    ASSERT_EQ(::mkfifo(target_.c_str(), 0666), 0);
    for (const auto policy : {provider::ReplaceWritable, provider::ReplaceAny}) {
        EXPECT_EQ(codeRaisedBy([&] { fileAt(source_ / "file").copyFile(fileAt(target_), policy); }),
                  vfs::resourceAlreadyExists);
        EXPECT_EQ(codeRaisedBy([&] { fileAt(source_ / "file").moveFile(fileAt(target_), policy); }),
                  vfs::resourceAlreadyExists);
    }
    EXPECT_TRUE(fs::is_fifo(target_));
    EXPECT_EQ(contentOf(source_ / "file"), "new");
}

TEST_F(CrossDiskTest, MoveOntoAnotherNameOfTheSameFileTakesTheFirstNameAway) {
    fs::create_hard_link(source_ / "file", source_ / "name");
    fileAt(source_ / "file").moveFile(fileAt(source_ / "name"), provider::ReplaceWritable);
    EXPECT_FALSE(fs::exists(source_ / "file"));
    EXPECT_EQ(contentOf(source_ / "name"), "new");
}

TEST_F(CrossDiskTest, FileWhoseSizeTheSystemDoesNotTellIsCopiedWhole) {
    fileAt("/proc/self/status").copyFile(fileAt(target_), provider::ReplaceWritable);
    EXPECT_NE(contentOf(target_).find("VmSize"), std::string::npos);
    fileAt("/proc/kallsyms").copyFile(fileAt(target_), provider::ReplaceAny);
    EXPECT_EQ(contentOf(target_).size(), contentOf("/proc/kallsyms").size());
}

TEST_F(CrossDiskTest, ReadOnlyFileKeepsItsBitsAndItsSourceGoes) {
    ASSERT_EQ(::chmod((source_ / "file").c_str(), 0440), 0);
    fileAt(source_ / "file").moveFile(fileAt(target_), provider::ReplaceWritable);
    struct ::stat status {};
    ASSERT_EQ(::stat(target_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0440U);
    EXPECT_FALSE(fs::exists(source_ / "file"));
}

TEST_F(CrossDiskTest, ProgressKnowsAtLeastWhatIsDone) {
    struct Watcher : storage::ProgressObserver {
        void progressed(const storage::Progress& progress) override {
            EXPECT_LE(progress.bytesDone, progress.bytesKnown);
            EXPECT_LE(progress.itemsDone, progress.itemsKnown);
            bytes = progress.bytesDone;
        }
        std::uint64_t bytes = 0;
    } watcher;
    storage::ProgressObserver* const earlier = storage::setProgressObserver(&watcher);
    folderAt(source_).copyFolder(folderAt(target_), provider::ReplaceWritable);
    storage::setProgressObserver(earlier);
    EXPECT_EQ(watcher.bytes, 8U);
}

}  // namespace
}  // namespace korvex::tests
