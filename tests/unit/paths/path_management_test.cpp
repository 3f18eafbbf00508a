// The bridges between path text and locations, and fl::filesystem over the environment's current folder.
#include "platform/path_management.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/foundation_filesystem.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/paths/path_style.h"
#include "tests/support/scratch_folder.h"

namespace {

using korvex::runtime::dispatcher::currentFolderPath;
using korvex::runtime::dispatcher::setCurrentFolderPath;
using korvex::runtime::paths::nativeStyle;
using korvex::runtime::paths::PathStyle;
using Velquist::PathManagement::GetIRIFromString;
using Velquist::PathManagement::GetStringFromIRI;
namespace vfs = foundation::storage::vfs;

/// A scratch folder that is the environment's current folder.
class PathManagementTest : public testing::Test {
protected:
    PathManagementTest() {
        setCurrentFolderPath(scratch_.text());
        here_ = currentFolderPath();
    }
    ~PathManagementTest() override { setCurrentFolderPath(u"/"); }

    korvex::tests::ScratchFolder scratch_;
    std::u16string here_;
};

TEST_F(PathManagementTest, RelativePathBecomesLocationInCurrentFolder) {
    EXPECT_EQ(GetStringFromIRI(GetIRIFromString(u"a/b.txt")), here_ + u"/a/b.txt");
}

TEST_F(PathManagementTest, LocationKeepsDotsAndDropsDoubledAndTrailingSeparators) {
    const vfs::AbsoluteIRI location = GetIRIFromString(u"/a//./b/../c/");
    EXPECT_EQ(location.toString(), u"file:///a/./b/../c");
    EXPECT_EQ(location.getName(), u"c");
}

TEST_F(PathManagementTest, TextWithSchemeIsParsed) {
    EXPECT_EQ(GetIRIFromString(u"memory://box/a%20b").getName(), u"a b");
    EXPECT_EQ(GetStringFromIRI(GetIRIFromString(u"memory://box/a b")), u"memory://box/a%20b");
    EXPECT_EQ(GetStringFromIRI(GetIRIFromString(u"file:///a%20b")), u"/a b");
    EXPECT_THROW(GetIRIFromString(u"memory://box"), vfs::InvalidIRIException);
}

TEST_F(PathManagementTest, LocationOnAnotherMachineNeverReadsAsAPathOnThisOne) {
    constexpr bool hasNetworkPaths = nativeStyle == PathStyle::windows;
    const vfs::AbsoluteIRI elsewhere = GetIRIFromString(u"file://server/share/a b");
    const std::u16string text = GetStringFromIRI(elsewhere);
    EXPECT_EQ(text, hasNetworkPaths ? u"\\\\server\\share\\a b" : u"file://server/share/a%20b");
    EXPECT_EQ(GetIRIFromString(text), elsewhere);
    EXPECT_EQ(GetStringFromIRI(GetIRIFromString(u"file://localhost/a")), hasNetworkPaths ? u"\\a" : u"/a");
}

TEST_F(PathManagementTest, EmptyTextIsNoLocation) {
    EXPECT_THROW(GetIRIFromString(u""), vfs::InvalidIRIException);
}

TEST_F(PathManagementTest, AbsoluteTakesBaseOrCurrentFolder) {
    EXPECT_EQ(fl::filesystem::absolute(u"/x/../y", u"/b"), u"/x/../y");
    EXPECT_EQ(fl::filesystem::absolute(u"x", u"/b"), u"/b/x");
    EXPECT_EQ(fl::filesystem::absolute(u"x", u""), here_ + u"/x");
    EXPECT_EQ(fl::filesystem::absolute(u"x", u"b"), here_ + u"/b/x");
    EXPECT_EQ(fl::filesystem::absolute(u"", u""), here_);
}

TEST_F(PathManagementTest, GoneCurrentFolderMattersToRelativePathsOnly) {
    std::filesystem::create_directory(scratch_.path() / "gone");
    setCurrentFolderPath(u"gone");
    std::filesystem::remove(scratch_.path() / "gone");

    EXPECT_EQ(fl::filesystem::absolute(u"/x", u""), u"/x");
    EXPECT_EQ(fl::filesystem::absolute(u"x", u"/b"), u"/b/x");
    EXPECT_THROW(fl::filesystem::absolute(u"x", u""), fl::filesystem::PathNotFound);
    EXPECT_THROW(GetIRIFromString(u"x"), fl::filesystem::PathNotFound);
}

}  // namespace
