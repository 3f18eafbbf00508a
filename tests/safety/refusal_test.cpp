// Disks that refuse: full, read-only, locked, names too long. The right code, nothing lost, nothing in part.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "tests/safety/own_mounts.h"
#include "tests/support/posix/ordinary_user.h"

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

TEST_F(RefusalTest, MergeThatDoesNotFitTakesNothingFromItsSource) {
    fs::create_directories(work_ / "folder" / "inner");
    fs::create_directories(smallDisk() / "folder" / "inner");
    for (const char* name : {"a", "inner/a", "z"})
        writeContent(work_ / "folder" / name, "content");
    writeContent(work_ / "folder" / "inner" / "large", large);
    fs::path where;
    EXPECT_EQ(codeRaisedBy(
                  [&] {
                      folderAt(work_ / "folder")
                          .moveFolder(folderAt(smallDisk() / "folder"), provider::MergeFolder);
                  },
                  &where),
              vfs::noSpaceLeft);
    EXPECT_EQ(where, smallDisk() / "folder" / "inner" / "large");
    for (const char* name : {"a", "inner/a", "z"})
        EXPECT_EQ(contentOf(work_ / "folder" / name), "content");
    EXPECT_EQ(contentOf(work_ / "folder" / "inner" / "large"), large);
    EXPECT_FALSE(fs::exists(smallDisk() / "folder" / "inner" / "large"));
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
    const vfs::Folder folder = folderAt(smallDisk() / "folder");
    const fs::path added = smallDisk() / "new";
    struct Refusal {
        std::function<void()> operation;
        fs::path expected;
    };
    const Refusal refusals[] = {
        {[&] { little.copyFile(fileAt(added), provider::ReplaceWritable); }, added},
        {[&] { little.moveFile(fileAt(added), provider::ReplaceAny); }, added},
        {[&] { little.copyFile(there, provider::ReplaceAny); }, smallDisk() / "there"},
        {[&] { folderAt(work_).copyFolder(folderAt(added), provider::ReplaceWritable); }, added},
        {[&] { folderAt(work_).moveFolder(folderAt(added), provider::MergeFolder); }, added},
        {[&] { there.removeFile(); }, smallDisk() / "there"},
        {[&] { folder.removeFolder(vfs::RemoveWithContents); }, smallDisk() / "folder"},
        {[&] { folderAt(added).createFolder(); }, added},
        {[&] { there.setWritable(false); }, smallDisk() / "there"},
    };
    for (const Refusal& refusal : refusals) {
        fs::path where;
        EXPECT_EQ(codeRaisedBy(refusal.operation, &where), vfs::readOnlyProvider) << refusal.expected;
        EXPECT_EQ(where, refusal.expected);
    }
    EXPECT_FALSE(vfs::isWritable(there));
    setSmallDiskReadOnly(false);
    EXPECT_EQ(contentOf(smallDisk() / "there"), "old");
    EXPECT_EQ(contentOf(work_ / "little"), "little");
}

TEST_F(RefusalTest, WhatCannotLeaveIsNotCopied) {
    fs::create_directories(smallDisk() / "folder");
    writeContent(smallDisk() / "folder" / "file", "content");
    fs::create_directory(work_ / "taken");
    setSmallDiskReadOnly(true);
    const vfs::Folder folder = folderAt(smallDisk() / "folder");
    const vfs::File file = fileAt(smallDisk() / "folder" / "file");
    fs::path where;
    EXPECT_EQ(codeRaisedBy([&] { file.moveFile(fileAt(work_ / "new"), provider::ReplaceAny); }, &where),
              vfs::readOnlyProvider);
    EXPECT_EQ(where, smallDisk() / "folder" / "file");
    for (const char* name : {"new", "taken"}) {
        EXPECT_EQ(
            codeRaisedBy([&] { folder.moveFolder(folderAt(work_ / name), provider::MergeFolder); }, &where),
            vfs::readOnlyProvider);
        EXPECT_EQ(where, smallDisk() / "folder");
    }
    setSmallDiskReadOnly(false);
    EXPECT_FALSE(fs::exists(work_ / "new"));
    EXPECT_EQ(entriesIn(work_ / "taken"), 0);
    EXPECT_EQ(entriesIn(work_), 3);
}

TEST_F(RefusalTest, StickyFolderKeepsWhatIsOfAnother) {
    fs::permissions(workDisk().parent_path(), fs::perms(0711));
    fs::permissions(workDisk(), fs::perms(0777));
    fs::create_directories(work_ / "sticky" / "folder");
    writeContent(work_ / "sticky" / "file", "content");
    fs::create_directories(work_ / "open" / "sticky");
    for (const char* name : {"sticky", "open"})
        fs::permissions(work_ / name, fs::perms(0777));
    fs::permissions(work_ / "sticky", fs::perms(01777));
    fs::permissions(work_ / "sticky" / "folder", fs::perms(0777));
    fs::permissions(otherDisk(), fs::perms(0777));
    {
        const OrdinaryUser user;
        for (const fs::path& to : {work_ / "open", otherDisk()}) {
            fs::path where;
            EXPECT_EQ(
                codeRaisedBy(
                    [&] {
                        fileAt(work_ / "sticky" / "file").moveFile(fileAt(to / "new"), provider::ReplaceAny);
                    },
                    &where),
                vfs::permissionDenied);
            EXPECT_EQ(where, work_ / "sticky" / "file");
            EXPECT_EQ(codeRaisedBy(
                          [&] {
                              folderAt(work_ / "sticky" / "folder")
                                  .moveFolder(folderAt(to / "new"), provider::ReplaceAny);
                          },
                          &where),
                      vfs::permissionDenied);
            EXPECT_EQ(where, work_ / "sticky" / "folder");
            EXPECT_FALSE(fs::exists(to / "new"));
        }
        // The same further down, in a merge.
        fs::path where;
        EXPECT_EQ(codeRaisedBy(
                      [&] {
                          folderAt(work_ / "sticky")
                              .moveFolder(folderAt(work_ / "open" / "sticky"), provider::MergeFolder);
                      },
                      &where),
                  vfs::permissionDenied);
        EXPECT_EQ(where.parent_path(), work_ / "sticky");
    }
    EXPECT_EQ(contentOf(work_ / "sticky" / "file"), "content");
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

TEST_F(RefusalTest, FileBeyondTheSizeLimitIsAnError) {
    const pid_t process = ::fork();
    if (process == 0) {
        const struct ::rlimit limit { 1 << 20, 1 << 20 };
        ::setrlimit(RLIMIT_FSIZE, &limit);
        const int code = codeRaisedBy(
            [&] { fileAt(work_ / "large").copyFile(fileAt(work_ / "copy"), provider::ReplaceWritable); });
        ::_exit(code);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(process, &status, 0), process);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), vfs::fileTooLarge);
    EXPECT_EQ(entriesIn(work_), 2);
}

TEST_F(RefusalTest, RenamingThatFailsForItsDestinationIsToldThere) {
    fs::permissions(workDisk().parent_path(), fs::perms(0711));
    fs::permissions(work_, fs::perms(0555));
    const fs::path target = workDisk() / "missing" / "target";
    fs::path where;
    {
        const OrdinaryUser user;
        EXPECT_EQ(
            codeRaisedBy([&] { fileAt(work_ / "little").moveFile(fileAt(target), provider::ReplaceAny); },
                         &where),
            vfs::resourceNotFound);
    }
    EXPECT_EQ(where, target);
    fs::permissions(work_, fs::perms(0755));
}

}  // namespace
}  // namespace korvex::tests
