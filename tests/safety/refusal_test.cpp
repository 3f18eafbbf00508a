// Disks that refuse: full, read-only, locked, names too long. The right code, nothing lost, nothing in part.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/safety/own_mounts.h"

namespace korvex::tests {
namespace {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;

const std::string large(4 << 20, 'x');

std::ptrdiff_t entriesIn(const fs::path& folder) { return std::distance(fs::directory_iterator(folder), {}); }

class RefusalTest : public testing::Test {
protected:
    RefusalTest() {
        fs::create_directories(work_);
        writeContent(work_ / "large", large);
        writeContent(work_ / "little", "little");
    }
    ~RefusalTest() override {
        fs::remove_all(work_);
        for (const fs::directory_entry& entry : fs::directory_iterator(smallDisk())) {
            fs::remove_all(entry);
        }
    }

    const fs::path work_ = workDisk() / "refusal";
};

TEST_F(RefusalTest, FullDiskTakesNoNewFileAndKeepsNoPartOfIt) {
    fs::path where;
    const fs::path target = smallDisk() / "target";
    EXPECT_EQ(
        codeRaisedBy([&] { fileAt(work_ / "large").copyFile(fileAt(target), provider::ReplaceWritable); },
                     &where),
        vfs::noSpaceLeft);
    EXPECT_EQ(where, target);
    EXPECT_EQ(entriesIn(smallDisk()), 0);
}

TEST_F(RefusalTest, FullDiskLeavesTheOldFileWhole) {
    const fs::path target = smallDisk() / "target";
    writeContent(target, "old");
    for (const auto policy : {provider::ReplaceWritable, provider::ReplaceAny}) {
        EXPECT_EQ(codeRaisedBy([&] { fileAt(work_ / "large").copyFile(fileAt(target), policy); }),
                  vfs::noSpaceLeft);
        EXPECT_EQ(codeRaisedBy([&] { fileAt(work_ / "large").moveFile(fileAt(target), policy); }),
                  vfs::noSpaceLeft);
    }
    EXPECT_EQ(contentOf(target), "old");
    EXPECT_EQ(entriesIn(smallDisk()), 1);
    EXPECT_EQ(contentOf(work_ / "large"), large);
}

TEST_F(RefusalTest, FolderThatDoesNotFitStaysWholeAtItsSource) {
    fs::create_directory(work_ / "folder");
    writeContent(work_ / "folder" / "large", large);
    const fs::path target = smallDisk() / "folder";
    EXPECT_EQ(
        codeRaisedBy([&] { folderAt(work_ / "folder").moveFolder(folderAt(target), provider::MergeFolder); }),
        vfs::noSpaceLeft);
    EXPECT_EQ(contentOf(work_ / "folder" / "large"), large);
    EXPECT_EQ(entriesIn(smallDisk()), 0);
}

TEST_F(RefusalTest, CopyOfAFolderOntoAFullDiskLeavesNoFileInPart) {
    fs::create_directory(work_ / "folder");
    writeContent(work_ / "folder" / "large", large);
    const fs::path target = smallDisk() / "folder";
    fs::path where;
    EXPECT_EQ(
        codeRaisedBy([&] { folderAt(work_ / "folder").copyFolder(folderAt(target), provider::MergeFolder); },
                     &where),
        vfs::noSpaceLeft);
    EXPECT_EQ(where, target / "large");
    EXPECT_FALSE(fs::exists(target / "large"));
}

TEST_F(RefusalTest, ReadOnlyDiskIsAReadOnlyProvider) {
    writeContent(smallDisk() / "there", "old");
    fs::create_directory(smallDisk() / "folder");
    setSmallDiskReadOnly(true);
    const vfs::File there = fileAt(smallDisk() / "there");
    const vfs::File little = fileAt(work_ / "little");
    EXPECT_EQ(codeRaisedBy([&] { little.copyFile(fileAt(smallDisk() / "new"), provider::ReplaceWritable); }),
              vfs::readOnlyProvider);
    EXPECT_EQ(codeRaisedBy([&] { little.copyFile(there, provider::ReplaceAny); }), vfs::readOnlyProvider);
    EXPECT_EQ(codeRaisedBy([&] { little.moveFile(fileAt(smallDisk() / "new"), provider::ReplaceAny); }),
              vfs::readOnlyProvider);
    EXPECT_EQ(codeRaisedBy([&] { there.removeFile(); }), vfs::readOnlyProvider);
    EXPECT_EQ(codeRaisedBy([&] { folderAt(smallDisk() / "folder").removeFolder(vfs::RemoveWithContents); }),
              vfs::readOnlyProvider);
    EXPECT_EQ(codeRaisedBy([&] { folderAt(smallDisk() / "new").createFolder(); }), vfs::readOnlyProvider);
    EXPECT_EQ(codeRaisedBy([&] { there.setWritable(false); }), vfs::readOnlyProvider);
    EXPECT_FALSE(vfs::isWritable(there));
    setSmallDiskReadOnly(false);
    EXPECT_EQ(contentOf(smallDisk() / "there"), "old");
    EXPECT_EQ(contentOf(work_ / "little"), "little");
}

TEST_F(RefusalTest, NameTooLongIsAnInvalidLocation) {
    const fs::path target = work_ / std::string(256, 'n');
    fs::path where;
    EXPECT_EQ(codeRaisedBy([&] { fileAt(work_ / "little").copyFile(fileAt(target), provider::ReplaceAny); },
                           &where),
              vfs::invalidLocation);
    EXPECT_EQ(where, target);
    EXPECT_EQ(codeRaisedBy([&] { fileAt(work_ / "little").moveFile(fileAt(target), provider::ReplaceAny); },
                           &where),
              vfs::invalidLocation);
    EXPECT_EQ(where, target);
    EXPECT_EQ(codeRaisedBy([&] { folderAt(target).createFolder(); }), vfs::invalidLocation);
    EXPECT_EQ(contentOf(work_ / "little"), "little");
}

TEST_F(RefusalTest, LongestNameCanBeReplaced) {
    const fs::path target = work_ / std::string(255, 'n');
    writeContent(target, "old");
    fileAt(work_ / "little").copyFile(fileAt(target), provider::ReplaceWritable);
    EXPECT_EQ(contentOf(target), "little");
}

}  // namespace
}  // namespace korvex::tests
