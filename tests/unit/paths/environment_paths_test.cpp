// The environment's path functions: the rules of the running platform, its storage and its current folder.
#include <gtest/gtest.h>

#include <memory>

#include "platform/filesystem_shared.h"
#include "platform/foundation_filesystem.h"
#include "platform/storage_utility.h"
#include "platform/storage_vfs.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/paths/path_style.h"
#include "runtime/storage/provider.h"
#include "runtime/storage/storage_system.h"
#include "tests/support/scratch_folder.h"

namespace korvex::runtime::paths {
namespace {

namespace filesystem = fl::filesystem;
namespace storage = korvex::runtime::storage;
namespace vfs = foundation::storage::vfs;
using korvex::tests::ScratchFolder;

constexpr bool isWindows = nativeStyle == PathStyle::windows;
const std::u16string separator(1, preferredSeparator(nativeStyle));

/// Works in a scratch folder with a file, a folder, and links to both and to nothing.
class EnvironmentPaths : public testing::Test {
protected:
    EnvironmentPaths() {
        scratch.writeFile("folder/file.txt");
        std::filesystem::create_symlink("folder/file.txt", scratch.path() / "fileLink");
        std::filesystem::create_directory_symlink("folder", scratch.path() / "folderLink");
        std::filesystem::create_symlink("nothing", scratch.path() / "brokenLink");
        dispatcher::setCurrentFolderPath(scratch.text());
        here = dispatcher::currentFolderPath();
    }
    ~EnvironmentPaths() override { dispatcher::setCurrentFolderPath(u"/"); }

    ScratchFolder scratch;
    std::u16string here;
};

/// Raises the same failure whatever it is asked.
class FailingProvider : public storage::Provider {
public:
    explicit FailingProvider(vfs::ErrorCode code) : code_(code) {}

    storage::ExistenceType existence(const vfs::AbsoluteIRI& location) override { fail(location); }
    storage::ExistenceTypeExtended extendedExistence(const vfs::AbsoluteIRI& location) override {
        fail(location);
    }
    vfs::CanonicalAbsoluteIRI canonicalLocation(const vfs::AbsoluteIRI& location) override { fail(location); }

private:
    [[noreturn]] void fail(const vfs::AbsoluteIRI& location) const { throw vfs::Exception(code_, location); }

    vfs::ErrorCode code_;
};

/// Says of everything that it is a link, and counts how often it was asked.
class ProviderOfLinks : public storage::Provider {
public:
    storage::ExistenceType existence(const vfs::AbsoluteIRI&) override {
        ++questions;
        return foundation::storage::provider::AsFile;
    }
    storage::ExistenceTypeExtended extendedExistence(const vfs::AbsoluteIRI&) override {
        ++questions;
        return foundation::storage::provider::ExtendedLinkToFile;
    }
    vfs::CanonicalAbsoluteIRI canonicalLocation(const vfs::AbsoluteIRI& location) override {
        ++questions;
        return vfs::CanonicalAbsoluteIRI(location);
    }

    int questions = 0;
};

storage::ScopedStorageSystem failingWith(vfs::ErrorCode code) {
    auto system = std::make_shared<vfs::StorageSystem>();
    system->add(u"file", std::make_shared<FailingProvider>(code));
    return storage::ScopedStorageSystem(std::move(system));
}

TEST_F(EnvironmentPaths, CanonicalFormHasNoLinksAndNoDots) {
    EXPECT_EQ(filesystem::canonical(u"folderLink/../folder/file.txt", u""),
              here + separator + u"folder" + separator + u"file.txt");
    EXPECT_EQ(filesystem::canonical(u"fileLink", u""),
              here + separator + u"folder" + separator + u"file.txt");
    EXPECT_EQ(filesystem::canonical(u"file.txt", here + u"/folderLink"),
              here + separator + u"folder" + separator + u"file.txt");
    EXPECT_EQ(filesystem::canonical(u"", u""), here);
}

TEST_F(EnvironmentPaths, NothingHasNoCanonicalForm) {
    try {
        filesystem::canonical(u"brokenLink", u"");
        FAIL() << "a link to nothing has a canonical form";
    } catch (const vfs::Exception& failure) {
        EXPECT_EQ(failure.getErrorCode(), vfs::resourceNotFound);
    }
}

TEST_F(EnvironmentPaths, ExistsLooksThroughLinks) {
    for (const char16_t* path : {u"folder", u"folder/file.txt", u"fileLink", u"folderLink/file.txt", u"."}) {
        EXPECT_TRUE(filesystem::exists(path));
        EXPECT_TRUE(filesystemSharedFcns::exists(path));
    }
    for (const char16_t* path : {u"nothing", u"brokenLink", u"folder/file.txt/below", u""}) {
        EXPECT_FALSE(filesystem::exists(path));
        EXPECT_FALSE(filesystemSharedFcns::exists(path));
    }
}

TEST_F(EnvironmentPaths, ARelativePathThatLooksLikeALocationIsAskedForAsAPath) {
    EXPECT_FALSE(filesystem::exists(u"memory://box/"));
    EXPECT_FALSE(filesystem::exists(u"ab:/file"));
    EXPECT_FALSE(filesystemSharedFcns::exists(u"memory://box/"));
    EXPECT_FALSE(filesystemSharedFcns::exists(u"ab:/file"));
}

TEST_F(EnvironmentPaths, LinksOfAllKindsAreLinksAndOtherThingsAreNot) {
    for (const char16_t* path : {u"fileLink", u"folderLink", u"brokenLink"}) {
        EXPECT_TRUE(filesystemSharedFcns::isSymlink(path));
    }
    for (const char16_t* path : {u"folder", u"folder/file.txt", u"folderLink/file.txt", u"nothing", u""}) {
        EXPECT_FALSE(filesystemSharedFcns::isSymlink(path));
    }
}

TEST_F(EnvironmentPaths, SeparatorsAtTheEndDoNotCountButADotDoes) {
    const std::u16string location = u"file://" + std::u16string(isWindows ? u"/" : u"") + here;
    for (const std::u16string& path :
         {std::u16string(u"folderLink/"), std::u16string(u"folderLink//"), std::u16string(u"brokenLink/"),
          std::u16string(u"fileLink/"), here + u"/folderLink/", location + u"/folderLink//"}) {
        EXPECT_TRUE(filesystemSharedFcns::isSymlink(path));
    }
    for (const char16_t* path : {u"folderLink/.", u"folderLink/./", u"folder/", u"/", u"//"}) {
        EXPECT_FALSE(filesystemSharedFcns::isSymlink(path));
    }
    for (const char16_t* path : {u"folder//", u"folderLink/", u"folder/file.txt/", u"fileLink/", u"/"}) {
        EXPECT_TRUE(filesystem::exists(path));
        EXPECT_TRUE(filesystemSharedFcns::exists(path));
    }
    EXPECT_FALSE(filesystem::exists(u"brokenLink/"));
    EXPECT_FALSE(filesystem::exists(u"folder/file.txt/."));
}

TEST_F(EnvironmentPaths, ALocationOfALinkIsALinkToo) {
    const std::u16string locationOfFolder = u"file://" + std::u16string(isWindows ? u"/" : u"") + here;
    EXPECT_TRUE(filesystemSharedFcns::isSymlink(locationOfFolder + u"/brokenLink"));
    EXPECT_FALSE(filesystemSharedFcns::isSymlink(locationOfFolder + u"/folder"));
    EXPECT_FALSE(filesystemSharedFcns::isSymlink(u"nobody://host/link"));
    EXPECT_FALSE(filesystemSharedFcns::isSymlink(u"memory:////"));
}

TEST_F(EnvironmentPaths, AWebLocationIsNoLinkAndIsNotAsked) {
    const auto links = std::make_shared<ProviderOfLinks>();
    auto system = std::make_shared<vfs::StorageSystem>();
    for (const char16_t* scheme : {u"http", u"https", u"memory"})
        system->add(scheme, links);
    const storage::ScopedStorageSystem scope(std::move(system));
    for (const char16_t* text : {u"http://host/x", u"https://host/x", u"HTTP://host/x/", u"http://host/"})
        EXPECT_FALSE(filesystemSharedFcns::isSymlink(text));
    EXPECT_EQ(links->questions, 0);
    EXPECT_TRUE(filesystemSharedFcns::isSymlink(u"memory://box/x"));
    EXPECT_EQ(links->questions, 1);
}

TEST_F(EnvironmentPaths, WithoutACurrentFolderARelativePathIsNoLink) {
    scratch.makeFolder("gone");
    dispatcher::setCurrentFolderPath(u"gone");
    std::filesystem::remove(scratch.path() / "gone");
    EXPECT_FALSE(filesystemSharedFcns::isSymlink(u"brokenLink"));
    EXPECT_TRUE(filesystemSharedFcns::isSymlink(here + u"/brokenLink"));
}

TEST_F(EnvironmentPaths, WhereTheSystemKeepsThemFromLookingExistsSaysSo) {
    const storage::ScopedStorageSystem denied = failingWith(vfs::permissionDenied);
    EXPECT_THROW(filesystem::exists(u"/a"), filesystem::AccessDenied);
    EXPECT_THROW(filesystemSharedFcns::exists(u"/a"), vfs::Exception);
    EXPECT_FALSE(filesystemSharedFcns::isSymlink(u"/a"));
}

TEST_F(EnvironmentPaths, AnotherFailureOfTheStorageCrossesExists) {
    const storage::ScopedStorageSystem failing = failingWith(vfs::ioError);
    EXPECT_THROW(filesystem::exists(u"/a"), vfs::Exception);
}

TEST(AccessDeniedTest, NamesThePathUnderTheStoragesOwnIdentifier) {
    const filesystem::AccessDenied denied(u"/a");
    EXPECT_EQ(denied.get_error_id(), "KORVEX:virtualfilesystem:permissionDenied");
    EXPECT_NE(denied.GetUnicodeMessageTxt().find(u"/a"), std::u16string::npos);
    EXPECT_THROW(denied.throwCopy(), filesystem::AccessDenied);
}

TEST_F(EnvironmentPaths, RelativeToAbsoluteTouchesNothingElse) {
    const auto absolute = [](std::u16string path) {
        filesystemSharedFcns::relativeToAbsolute(path);
        return path;
    };
    EXPECT_EQ(absolute(u"a/../b//"), here + separator + u"a/../b//");
    EXPECT_EQ(absolute(u""), here);
    EXPECT_EQ(absolute(here + u"/a/"), here + u"/a/");
}

TEST_F(EnvironmentPaths, RelativeToAbsoluteNeedsTheCurrentFolder) {
    dispatcher::setCurrentFolderPath(scratch.makeFolder("gone").u16string());
    std::filesystem::remove(scratch.path() / "gone");
    std::u16string path = u"a";
    EXPECT_THROW(filesystemSharedFcns::relativeToAbsolute(path), filesystem::PathNotFound);
    EXPECT_EQ(path, u"a");
}

TEST_F(EnvironmentPaths, ASystemPathNamesTheSameFileWhateverItsBytes) {
    EXPECT_TRUE(std::filesystem::exists(filesystem::system_path(here + u"/folder/file.txt")));
    EXPECT_EQ(filesystem::system_path(here + u"/a b/\u00e4").u16string(), here + u"/a b/\u00e4");
    if constexpr (!isWindows) {
        EXPECT_EQ(filesystem::system_path({u'/', 0xDCFF}).native(), "/\xFF");
    }
}

TEST_F(EnvironmentPaths, ASystemPathOfWhatNamesNoPlaceIsEmpty) {
    for (const std::u16string& text :
         {std::u16string(), std::u16string(u"folder"), here + std::u16string(1, u'\0'),
          std::u16string(u"memory://box/a"), std::u16string(u"file:///a")}) {
        EXPECT_EQ(filesystem::system_path(text), std::filesystem::path());
    }
    if constexpr (!isWindows) {
        EXPECT_EQ(filesystem::system_path({u'/', 0xD800}), std::filesystem::path());
    }
}

TEST(ConcatenatePathname, PutsOneSeparatorBetween) {
    using filesystem::detail::concatenate_pathname;
    EXPECT_EQ(concatenate_pathname(u"a", u"b", false), u"a" + separator + u"b");
    EXPECT_EQ(concatenate_pathname(u"a/", u"b", false), u"a/b");
    EXPECT_EQ(concatenate_pathname(u"a", u"", false), u"a");
    EXPECT_EQ(concatenate_pathname(u"", u"b", false), u"b");
    EXPECT_EQ(concatenate_pathname(u"a/b", u"c/d", true),
              u"a" + separator + u"b" + separator + u"c" + separator + u"d");
    const std::u16string absoluteName = isWindows ? u"D:\\b" : u"/b";
    EXPECT_EQ(concatenate_pathname(u"a", absoluteName, true), absoluteName);
}

TEST(PartsOfANativePath, AreTakenBehindTheLastSeparator) {
    EXPECT_EQ(filesystem::detail::extract_filename(u"/a.d/b.c.k"), u"b.c.k");
    EXPECT_EQ(filesystem::detail::extract_stem(u"/a.d/b.c.k"), u"b.c");
    EXPECT_EQ(filesystem::detail::extract_extension(u"/a.d/b.c.k"), u"k");
    EXPECT_EQ(filesystem::detail::extract_extension(u"/a.d/b"), u"");
}

TEST(PathTextHelpers, FollowTheStyleOfThePlatform) {
    std::u16string path = u"/a/./b/../c\\d /";
    filesystemSharedFcns::handleSingleDots(path);
    filesystemSharedFcns::handleDotDots(path);
    EXPECT_EQ(path, u"/a/c\\d /");
    filesystemSharedFcns::trimTrailingSlash(path);
    filesystemSharedFcns::replaceSlashesOnWindows(path);
    EXPECT_EQ(path, isWindows ? u"\\a\\c\\d " : u"/a/c\\d ");
    foundation::storage::utility::handleWindowsTrailingDotsAndSpaces(path);
    foundation::storage::utility::convertWindowsBackslashes(path);
    EXPECT_EQ(path, isWindows ? u"/a/c/d" : u"/a/c\\d ");

    EXPECT_TRUE(filesystemSharedFcns::isPathSeparator(u'/'));
    EXPECT_EQ(filesystemSharedFcns::isPathSeparator(u'\\'), isWindows);
    EXPECT_EQ(filesystemSharedFcns::startsWithSlashSlashOnWindows(u"//host/share"), isWindows);
    EXPECT_FALSE(filesystemSharedFcns::startsWithSlashSlashOnWindows(u"/a"));
}

TEST(DotExpressions, AreFoundInPathsAndLocations) {
    using filesystemSharedFcns::containsDotOrDotDotExpression;
    for (const char16_t* text :
         {u"..", u"a/./b", u"memory://box/../a", u"file:///a/.", u"http://host/a/../b"}) {
        EXPECT_TRUE(containsDotOrDotDotExpression(text));
    }
    for (const char16_t* text : {u"a.b", u"...", u"memory://box/a..b", u"http://www.host.org/a.txt", u""}) {
        EXPECT_FALSE(containsDotOrDotDotExpression(text));
    }
}

TEST(DotExpressions, MayBeEscapedInALocationButNotInAPath) {
    using filesystemSharedFcns::containsDotOrDotDotExpression;
    EXPECT_TRUE(containsDotOrDotDotExpression(u"file:///a/%2e%2E/b"));
    EXPECT_TRUE(containsDotOrDotDotExpression(u"file:///a%2F..%2fb"));
    EXPECT_FALSE(containsDotOrDotDotExpression(u"/a/%2e%2e/b"));
}

TEST(DotExpressions, OfAWebLocationAreThoseOfItsPath) {
    using filesystemSharedFcns::containsDotOrDotDotExpression;
    for (const char16_t* text : {u"http://host/a?from=../b", u"HTTPS://host/a#/../b", u"https://host/?a/./b",
                                 u"http://host/a?q=%2F..%2F", u"http://host?/../"}) {
        EXPECT_FALSE(containsDotOrDotDotExpression(text));
    }
    for (const char16_t* text : {u"http://host/../a?q", u"http://host/a/..?q", u"http://host/a/.#part",
                                 u"https://host/a%3F/../b", u"https://host/a%23/%2e%2e"}) {
        EXPECT_TRUE(containsDotOrDotDotExpression(text));
    }
}

TEST(DotExpressions, OfOtherLocationsMayStandBehindAQuestionMarkOrANumberSign) {
    using filesystemSharedFcns::containsDotOrDotDotExpression;
    for (const char16_t* text : {u"memory://box/a?/../b", u"file:///a#/./b", u"nobody://host/a?q=/.."}) {
        EXPECT_TRUE(containsDotOrDotDotExpression(text));
    }
    EXPECT_FALSE(containsDotOrDotDotExpression(u"memory://box/a?b=..c"));
}

struct NormalizedCase {
    const char16_t* typed;
    const char16_t* normalized;
};

TEST(NormalizeURL, WritesOneOfTheWaysThatMeanTheSame) {
    for (const auto& [typed, normalized] :
         {NormalizedCase{u"HTTP://Host.ORG:80/A%3fb//C", u"http://host.org:80/A%3Fb//C"},
          NormalizedCase{u"Memory://Box//a///b/", u"memory://box/a/b/"},
          NormalizedCase{u"FILE:///A/%c3%a4%zz", u"file:///A/%C3%A4%zz"},
          NormalizedCase{u"https://User@HOST/%", u"https://User@host/%"},
          NormalizedCase{u"memory://BOX", u"memory://box"}, NormalizedCase{u"FILE:/A//b", u"FILE:/A//b"},
          NormalizedCase{u"/A//%3f", u"/A//%3f"}, NormalizedCase{u"", u""}}) {
        std::u16string text = typed;
        foundation::storage::utility::normalizeURL(text);
        EXPECT_EQ(text, normalized);
    }
}

}  // namespace
}  // namespace korvex::runtime::paths
