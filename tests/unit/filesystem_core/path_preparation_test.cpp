// Paths on their way to becoming locations, and what stands at a location.
#include <gtest/gtest.h>

#include "platform/filesystem_core.h"
#include "platform/foundation_filesystem.h"
#include "platform/path_management.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/paths/path_style.h"
#include "tests/support/scratch_folder.h"

namespace korvex::io::filesystem::core {
namespace {

namespace dispatcher = korvex::runtime::dispatcher;
namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;
using korvex::tests::ScratchFolder;

/// Works in a scratch folder with a file, a folder, and links to both and to nothing.
class PathPreparation : public testing::Test {
protected:
    PathPreparation() {
        scratch.writeFile("folder/file.txt");
        std::filesystem::create_symlink("folder/file.txt", scratch.path() / "fileLink");
        std::filesystem::create_directory_symlink("folder", scratch.path() / "folderLink");
        std::filesystem::create_symlink("nothing", scratch.path() / "brokenLink");
        dispatcher::setCurrentFolderPath(scratch.text());
    }
    ~PathPreparation() override { dispatcher::setCurrentFolderPath(u"/"); }

    /// A path below the current folder, in the platform's own form.
    std::u16string here(const std::u16string& path = u"") const {
        return korvex::runtime::paths::nativeForm(
            path.empty() ? scratch.text() : scratch.text() + u'/' + path, true,
            korvex::runtime::paths::nativeStyle);
    }
    void loseCurrentFolder() {
        dispatcher::setCurrentFolderPath(scratch.makeFolder("gone").u16string());
        std::filesystem::remove(scratch.path() / "gone");
    }
    static std::u16string prepared(std::u16string path, ResolveSymbolicLinks mode) {
        EXPECT_TRUE(setupPathForURLConstruction(path, mode));
        return path;
    }

    ScratchFolder scratch;
};

TEST_F(PathPreparation, MakesAPathAbsoluteAndClean) {
    EXPECT_EQ(prepared(u"a", KeepLinks), here(u"a"));
    EXPECT_EQ(prepared(u"./a//b/../c/", KeepLinks), here(u"a/c"));
    EXPECT_EQ(prepared(u".", KeepLinks), here());
    EXPECT_EQ(prepared(u"", KeepLinks), here());
    EXPECT_EQ(prepared(scratch.text() + u"//a/", KeepLinks), here(u"a"));
    EXPECT_EQ(prepared(u"a*/?.txt", KeepLinks), here(u"a*/?.txt"));
}

TEST_F(PathPreparation, ARootKeepsItsSeparator) {
    const std::u16string root = scratch.path().root_path().u16string();
    EXPECT_EQ(prepared(root, KeepLinks), root);
    EXPECT_EQ(prepared(root + u"..", KeepLinks), root);
    EXPECT_EQ(prepared(root, FollowLinks), root);
}

TEST_F(PathPreparation, LinksStayUnlessTheyAreToBeFollowed) {
    EXPECT_EQ(prepared(u"folderLink/file.txt", KeepLinks), here(u"folderLink/file.txt"));
    EXPECT_EQ(prepared(u"folderLink/file.txt", FollowLinks), here(u"folder/file.txt"));
    EXPECT_EQ(prepared(u"fileLink", FollowLinks), here(u"folder/file.txt"));
}

TEST_F(PathPreparation, DotsGoAsTextBeforeLinksAreFollowed) {
    EXPECT_EQ(prepared(u"folderLink/../folderLink", FollowLinks), here(u"folder"));
    EXPECT_EQ(prepared(u"folderLink/..", FollowLinks), here());
}

TEST_F(PathPreparation, LinksAreFollowedInThePartThatExists) {
    EXPECT_EQ(prepared(u"folderLink/new/deep", FollowLinks), here(u"folder/new/deep"));
    EXPECT_EQ(prepared(u"folderLink/*.txt", FollowLinks), here(u"folder/*.txt"));
    EXPECT_EQ(prepared(u"brokenLink", FollowLinks), here(u"brokenLink"));
}

TEST_F(PathPreparation, ARelativePathIsEmptiedWhenTheCurrentFolderIsGone) {
    loseCurrentFolder();
    std::u16string path = u"a";
    EXPECT_FALSE(setupPathForURLConstruction(path, KeepLinks));
    EXPECT_EQ(path, u"");
    EXPECT_EQ(prepared(scratch.text() + u"/a", KeepLinks), here(u"a"));
}

TEST_F(PathPreparation, RelativeToAbsoluteTreatsDotsAndLinksByMode) {
    const auto absolute = [](ResolveSymbolicLinks mode) {
        std::u16string path = u"folderLink/./file.txt";
        relativeToAbsolute(path, mode);
        return path;
    };
    EXPECT_EQ(absolute(KeepLinksAndDots), fl::filesystem::absolute(u"folderLink/./file.txt", scratch.text()));
    EXPECT_EQ(absolute(KeepLinks), fl::filesystem::absolute(u"folderLink/file.txt", scratch.text()));
    EXPECT_EQ(absolute(FollowLinks), here(u"folder/file.txt"));
}

TEST_F(PathPreparation, RelativeToAbsoluteRaisesWhenTheCurrentFolderIsGone) {
    loseCurrentFolder();
    std::u16string path = u"a";
    EXPECT_THROW(relativeToAbsolute(path, KeepLinksAndDots), fl::filesystem::PathNotFound);
    EXPECT_EQ(path, u"a");
}

TEST_F(PathPreparation, ExistenceTellsLinksApartOrLooksThroughThem) {
    struct Expected {
        const char16_t* path;
        provider::ExistenceTypeExtended apart;
        provider::ExistenceTypeExtended through;
    };
    for (const auto& [path, apart, through] :
         {Expected{u"folder/file.txt", provider::ExtendedFile, provider::ExtendedFile},
          Expected{u"folder", provider::ExtendedFolder, provider::ExtendedFolder},
          Expected{u"fileLink", provider::ExtendedLinkToFile, provider::ExtendedFile},
          Expected{u"folderLink", provider::ExtendedLinkToFolder, provider::ExtendedFolder},
          Expected{u"brokenLink", provider::ExtendedBrokenLink, provider::ExtendedNothing},
          Expected{u"nothing", provider::ExtendedNothing, provider::ExtendedNothing}}) {
        const vfs::AbsoluteIRI location = Velquist::PathManagement::GetIRIFromString(path);
        EXPECT_EQ(getExtendedExistenceType(location, true), apart);
        EXPECT_EQ(getExtendedExistenceType(location, false), through);
    }
}

TEST_F(PathPreparation, ExistenceOfASchemeThatNobodyServesRaises) {
    EXPECT_THROW(getExtendedExistenceType(vfs::AbsoluteIRI(u"nobody://host/a"), true),
                 vfs::UnsupportedIRISchemeException);
}

TEST_F(PathPreparation, ALinkIsToldByItsText) {
    EXPECT_EQ(isSymlink(std::u16string(u"brokenLink")), SymbolicLink);
    EXPECT_EQ(isSymlink(std::u16string(u"folderLink")), SymbolicLink);
    EXPECT_EQ(isSymlink(std::u16string(u"folder")), NoSymbolicLink);
    EXPECT_EQ(isSymlink(std::u16string(u"http:///bad")), NoSymbolicLink);
    static_assert(SymbolicLink == 0);
}

TEST(LinkValues, AreTheThreeOfLinks) {
    for (int value = 0; value <= 6; ++value) {
        const bool isLink = value == 1 || value == 4 || value == 5;
        EXPECT_EQ(isSymlink(static_cast<provider::ExistenceTypeExtended>(value)), isLink);
    }
}

}  // namespace
}  // namespace korvex::io::filesystem::core
