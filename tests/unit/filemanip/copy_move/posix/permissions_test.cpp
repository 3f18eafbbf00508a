// What the system itself refuses an ordinary user, on a disk.
#include <filesystem>

#include "runtime/dispatcher/current_folder.h"
#include "tests/support/posix/ordinary_user.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/filemanip/copy_move/copy_move_fixture.h"

namespace korvex::filemanip::tests {
namespace {

namespace fs = std::filesystem;

/// "file" and "secret", which may not be read; "folder", which holds a secret too; "open", a folder to write
/// to, and "locked", a folder that may not be written, with "locked/kept" in it.
class PermissionsTest : public testing::TestWithParam<Command> {
protected:
    PermissionsTest() {
        scratch_.writeFile("open/source/file", "F");
        scratch_.writeFile("open/source/secret", "S");
        scratch_.writeFile("open/source/folder/a", "A");
        scratch_.writeFile("open/source/folder/secret", "S");
        scratch_.writeFile("locked/kept", "K");
        for (const char* secret : {"open/source/secret", "open/source/folder/secret"})
            fs::permissions(scratch_.path() / secret, fs::perms::none);
        for (const char* folder : {"open", "open/source", "open/source/folder"})
            fs::permissions(scratch_.path() / folder, fs::perms::all);
        fs::permissions(scratch_.path(), fs::perms::all);
        fs::permissions(scratch_.path() / "locked", fs::perms(0555));
        runtime::dispatcher::setCurrentFolderPath(scratch_.text() + u"/open/source");
    }
    ~PermissionsTest() override { runtime::dispatcher::setCurrentFolderPath(u"/"); }

    Failure run(const std::u16string& source, const std::u16string& destination, bool isForced) const {
        const korvex::tests::OrdinaryUser user;
        Texts arguments{source, destination};
        if (isForced) arguments.emplace_back(u"f");
        return failureOf(GetParam(), arguments);
    }
    Failure permission(const std::string& kind, bool isForced, const std::u16string& shown) const {
        const std::string key = kind + "PermissionError" + (isForced ? "WithFlag" : "");
        return failure("KORVEX:" + GetParam().word + ':' + key, "KORVEX:FILE:" + key,
                       {scratch_.text() + shown});
    }
    bool isThere(const fs::path& path) const { return fs::exists(scratch_.path() / path); }

    korvex::tests::ScratchFolder scratch_;
};

INSTANTIATE_TEST_SUITE_P(CopyMove, PermissionsTest, testing::Values(copyCommand, moveCommand), nameOfCommand);

TEST_P(PermissionsTest, SourceThatMayNotBeReadIsNotCopied) {
    if (!GetParam().isCopy) return;
    for (const bool isForced : {false, true}) {
        EXPECT_EQ(run(u"secret", u"../new", isForced), permission("Read", isForced, u"/open/source/secret"));
    }
    EXPECT_FALSE(isThere("open/new"));
}

TEST_P(PermissionsTest, FolderThatHoldsASecretIsNotCopiedAsAWhole) {
    if (!GetParam().isCopy) return;
    for (const bool isForced : {false, true}) {
        EXPECT_EQ(run(u"folder", u"../new", isForced),
                  permission("Folder", isForced, u"/open/source/folder"));
    }
    EXPECT_FALSE(isThere("open/new/secret"));
}

TEST_P(PermissionsTest, NewFileInALockedFolderMayNotBeWritten) {
    for (const bool isForced : {false, true}) {
        EXPECT_EQ(run(u"file", u"../../locked/new", isForced), permission("Write", isForced, u"/locked/new"));
    }
    EXPECT_TRUE(isThere("open/source/file"));
    EXPECT_FALSE(isThere("locked/new"));
}

TEST_P(PermissionsTest, LockedFolderCountsAsReadOnlyUntilForceIsAskedFor) {
    EXPECT_EQ(run(u"file", u"../../locked", false),
              failure("KORVEX:" + GetParam().word + ":ReadOnly", "KORVEX:FILE:ReadOnly",
                      {scratch_.text() + u"/locked/file"}));
    EXPECT_EQ(run(u"file", u"../../locked", true), permission("Write", true, u"/locked/file"));
    EXPECT_TRUE(isThere("open/source/file"));
    EXPECT_FALSE(isThere("locked/file"));
}

TEST_P(PermissionsTest, MatchesHaveNoNewFolderInALockedOne) {
    EXPECT_EQ(run(u"fil*", u"../../locked/new", false),
              failure("KORVEX:COPYFILE:ReadOnlyDestination", "KORVEX:virtualfilesystem:permissionDenied",
                      {scratch_.text() + u"/open/source/fil*"}));
    EXPECT_TRUE(isThere("open/source/file"));
}

TEST_P(PermissionsTest, NothingIsTakenOutOfALockedFolder) {
    if (GetParam().isCopy) return;
    for (const bool isForced : {false, true}) {
        EXPECT_NE(run(u"../../locked/kept", u"../new", isForced), noFailure());
        EXPECT_TRUE(isThere("locked/kept"));
        EXPECT_FALSE(isThere("open/new"));
    }
}

}  // namespace
}  // namespace korvex::filemanip::tests
