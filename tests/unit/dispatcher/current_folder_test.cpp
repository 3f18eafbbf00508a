// The environment's current folder: what may become it, what commands are given, and what its loss means.
#include "tests/unit/dispatcher/current_folder.h"

#include <filesystem>

#include "platform/foundation_filesystem.h"

namespace korvex::runtime::dispatcher {
namespace {

namespace vfs = foundation::storage::vfs;

TEST_F(CurrentFolderTest, IsGivenAsAFolder) {
    EXPECT_EQ(vfs::fromAbsoluteIRI(given().getLocation()).text(), here_);
    EXPECT_TRUE(given().folderExists());
}

TEST_F(CurrentFolderTest, ChangesAgainstThePresentOneAndNotTheProcess) {
    scratch_.makeFolder("a/b");
    const std::filesystem::path processFolder = std::filesystem::current_path();
    setCurrentFolderPath(u"a");
    setCurrentFolderPath(u"b/");
    EXPECT_EQ(currentFolderPath(), here_ + u"/a/b");
    setCurrentFolderPath(u"../..");
    EXPECT_EQ(currentFolderPath(), here_);
    setCurrentFolderPath(u"file://" + here_ + u"/a");
    EXPECT_EQ(currentFolderPath(), here_ + u"/a");
    EXPECT_EQ(std::filesystem::current_path(), processFolder);
}

TEST_F(CurrentFolderTest, IsKeptWithItsLinksResolved) {
    scratch_.makeFolder("real");
    std::filesystem::create_directory_symlink("real", scratch_.path() / "link");
    setCurrentFolderPath(u"link");
    EXPECT_EQ(currentFolderPath(), here_ + u"/real");
    EXPECT_EQ(given().getName(), u"real");
}

TEST_F(CurrentFolderTest, WhatIsNoFolderIsRefusedAndNothingChanges) {
    scratch_.writeFile("file");
    EXPECT_EQ(refusalOf(u"nothing"), vfs::resourceNotFound);
    EXPECT_EQ(refusalOf(u"file"), vfs::invalidLocation);
    EXPECT_EQ(currentFolderPath(), here_);
}

TEST_F(CurrentFolderTest, FolderOfAnotherStorageIsRefusedAndNothingChanges) {
    EXPECT_EQ(refusalOf(u"memory://box/"), vfs::unsupportedOperation);
    EXPECT_EQ(refusalOf(u"http://host/"), vfs::unsupportedOperation);
    EXPECT_EQ(currentFolderPath(), here_);
}

TEST_F(CurrentFolderTest, NoTextIsRefusedAndNothingChanges) {
    EXPECT_THROW(setCurrentFolderPath(u""), vfs::InvalidIRIException);
    EXPECT_THROW(setCurrentFolderPath(u"memory://box"), vfs::InvalidIRIException);
    EXPECT_EQ(currentFolderPath(), here_);
}

TEST_F(CurrentFolderTest, FromAFolderThatIsGoneOnlyAnAbsolutePathLeadsAway) {
    scratch_.makeFolder("gone");
    setCurrentFolderPath(u"gone");
    std::filesystem::remove(scratch_.path() / "gone");
    EXPECT_THROW(setCurrentFolderPath(u".."), fl::filesystem::PathNotFound);
    EXPECT_EQ(currentFolderPath(), here_ + u"/gone");
    setCurrentFolderPath(here_);
    EXPECT_EQ(currentFolderPath(), here_);
}

TEST_F(CurrentFolderTest, WhatIsGoneIsNotGiven) {
    scratch_.makeFolder("gone");
    setCurrentFolderPath(u"gone");
    EXPECT_TRUE(currentFolderExists());
    std::filesystem::remove(scratch_.path() / "gone");

    EXPECT_FALSE(currentFolderExists());
    EXPECT_EQ(currentFolderPath(), here_ + u"/gone");
    try {
        given();
        FAIL() << "a folder that is gone was given";
    } catch (const fl::filesystem::PathNotFound& error) {
        EXPECT_EQ(error.get_error_id(), "KORVEX:services:cwdIsInvalid");
    }
}

TEST_F(CurrentFolderTest, FileInItsPlaceIsNotGiven) {
    scratch_.makeFolder("replaced");
    setCurrentFolderPath(u"replaced");
    std::filesystem::remove(scratch_.path() / "replaced");
    scratch_.writeFile("replaced");
    EXPECT_THROW(given(), fl::filesystem::PathNotFound);
}

}  // namespace
}  // namespace korvex::runtime::dispatcher
