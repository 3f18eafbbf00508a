// Path text by the rules of both platforms, on whichever the tests run.
#include "runtime/paths/path_style.h"

#include <gtest/gtest.h>

namespace korvex::runtime::paths {
namespace {

constexpr PathStyle posix = PathStyle::posix;
constexpr PathStyle windows = PathStyle::windows;

TEST(PathStyleTest, BackSlashSeparatesOnWindowsOnly) {
    EXPECT_TRUE(isSeparator(u'/', posix));
    EXPECT_TRUE(isSeparator(u'/', windows));
    EXPECT_FALSE(isSeparator(u'\\', posix));
    EXPECT_TRUE(isSeparator(u'\\', windows));
}

TEST(PathStyleTest, PosixPathIsAbsoluteWhenItBeginsWithSlash) {
    EXPECT_TRUE(isAbsolute(u"/", posix));
    EXPECT_TRUE(isAbsolute(u"//a", posix));
    EXPECT_FALSE(isAbsolute(u"", posix));
    EXPECT_FALSE(isAbsolute(u"a/b", posix));
    EXPECT_FALSE(isAbsolute(u"C:\\a", posix));
    EXPECT_FALSE(isAbsolute(u"\\\\host\\share", posix));
}

TEST(PathStyleTest, WindowsPathIsAbsoluteWithDriveAndSeparatorOrTwoSeparators) {
    EXPECT_TRUE(isAbsolute(u"C:\\a", windows));
    EXPECT_TRUE(isAbsolute(u"c:/", windows));
    EXPECT_TRUE(isAbsolute(u"\\\\host\\share", windows));
    EXPECT_TRUE(isAbsolute(u"\\\\?\\C:\\a", windows));
    EXPECT_FALSE(isAbsolute(u"C:", windows));
    EXPECT_FALSE(isAbsolute(u"C:a", windows));
    EXPECT_FALSE(isAbsolute(u"\\a", windows));
    EXPECT_FALSE(isAbsolute(u"", windows));
}

TEST(PathStyleTest, NetworkAndLongPathsExistOnWindowsOnly) {
    EXPECT_TRUE(isUncPath(u"\\\\host\\share", windows));
    EXPECT_TRUE(isUncPath(u"//host/share", windows));
    EXPECT_FALSE(isUncPath(u"\\\\?\\C:\\a", windows));
    EXPECT_FALSE(isUncPath(u"\\\\", windows));
    EXPECT_FALSE(isUncPath(u"\\host", windows));
    EXPECT_FALSE(isUncPath(u"//host/share", posix));
    EXPECT_TRUE(isLongPath(u"\\\\?\\C:\\a", windows));
    EXPECT_FALSE(isLongPath(u"\\\\host\\share", windows));
    EXPECT_FALSE(isLongPath(u"\\\\?\\C:\\a", posix));
}

TEST(PathStyleTest, NativeFormWritesTheStylesSeparators) {
    EXPECT_EQ(nativeForm(u"C:/a/b/", true, windows), u"C:\\a\\b\\");
    EXPECT_EQ(nativeForm(u"a\\b", true, posix), u"a\\b");
    EXPECT_EQ(nativeForm(u"", true, posix), u"");
}

TEST(PathStyleTest, NativeFormDropsTrailingSeparatorsButNotTheRoot) {
    EXPECT_EQ(nativeForm(u"/a//", false, posix), u"/a");
    EXPECT_EQ(nativeForm(u"/", false, posix), u"/");
    EXPECT_EQ(nativeForm(u"C:/", false, windows), u"C:\\");
    EXPECT_EQ(nativeForm(u"C:/a/", false, windows), u"C:\\a");
    EXPECT_EQ(nativeForm(u"//host/share/", false, windows), u"\\\\host\\share\\");
    EXPECT_EQ(nativeForm(u"//host/share/a/", false, windows), u"\\\\host\\share\\a");
    EXPECT_EQ(nativeForm(u"\\\\?\\C:\\", false, windows), u"\\\\?\\C:\\");
}

TEST(PathStyleTest, JoiningPutsOneSeparatorBetween) {
    EXPECT_EQ(joined(u"/a", u"b", posix), u"/a/b");
    EXPECT_EQ(joined(u"/a/", u"b", posix), u"/a/b");
    EXPECT_EQ(joined(u"/", u"b", posix), u"/b");
    EXPECT_EQ(joined(u"/a", u"", posix), u"/a");
    EXPECT_EQ(joined(u"/a", u"/b", posix), u"/b");
    EXPECT_EQ(joined(u"C:\\a", u"b", windows), u"C:\\a\\b");
}

TEST(PathStyleTest, JoiningOnWindowsKnowsDriveRelativeAndRootedPaths) {
    EXPECT_EQ(joined(u"C:\\a", u"\\b", windows), u"C:\\b");
    EXPECT_EQ(joined(u"C:\\a", u"c:b", windows), u"C:\\a\\b");
    EXPECT_EQ(joined(u"C:\\a", u"D:b", windows), u"D:\\b");
    EXPECT_EQ(joined(u"C:\\a", u"C:C:\\b", windows), u"C:\\a\\C:\\b");
    EXPECT_EQ(joined(u"C:\\a", u"D:\\b", windows), u"D:\\b");
}

TEST(PathStyleTest, JoiningOnWindowsKeepsTheVolumeOfNetworkAndLongPaths) {
    EXPECT_EQ(joined(u"\\\\host\\share\\a", u"\\b", windows), u"\\\\host\\share\\b");
    EXPECT_EQ(joined(u"//host/share/a", u"/b", windows), u"//host/share/b");
    EXPECT_EQ(joined(u"\\\\host\\share", u"\\b", windows), u"\\\\host\\share\\b");
    EXPECT_EQ(joined(u"\\\\?\\C:\\a", u"\\b", windows), u"\\\\?\\C:\\b");
    EXPECT_EQ(joined(u"\\\\?\\UNC\\host\\share\\a", u"\\b", windows), u"\\\\?\\UNC\\host\\share\\b");
    EXPECT_EQ(joined(u"\\\\host\\share\\a", u"b", windows), u"\\\\host\\share\\a\\b");
    EXPECT_EQ(joined(u"\\\\host\\share\\a", u"C:b", windows), u"C:\\b");
    EXPECT_EQ(joined(u"\\\\?\\C:\\a", u"c:b", windows), u"\\\\?\\C:\\a\\b");
}

TEST(PathStyleTest, FoldingDropsDoubledAndTrailingSeparators) {
    EXPECT_EQ(foldSeparators(u"/a//b///c/"), u"/a/b/c");
    EXPECT_EQ(foldSeparators(u"//"), u"/");
    EXPECT_EQ(foldSeparators(u"/"), u"/");
    EXPECT_EQ(foldSeparators(u"/a/../b"), u"/a/../b");
}

struct LocationPathCase {
    PathStyle style;
    const char16_t* native;
    const char16_t* host;
    const char16_t* path;
    const char16_t* nativeAgain;
};

class LocationPathTest : public testing::TestWithParam<LocationPathCase> {};

TEST_P(LocationPathTest, GoesToALocationAndBack) {
    const LocationPathCase& expected = GetParam();
    const LocationPath location = toLocationPath(expected.native, expected.style);
    EXPECT_EQ(location.host, expected.host);
    EXPECT_EQ(location.path, expected.path);
    EXPECT_EQ(toNativePath(location.host, location.path, expected.style), expected.nativeAgain);
}

INSTANTIATE_TEST_SUITE_P(Forms, LocationPathTest,
                         testing::Values(LocationPathCase{posix, u"/a/b", u"", u"/a/b", u"/a/b"},
                                         LocationPathCase{posix, u"//a//b/", u"", u"/a/b", u"/a/b"},
                                         LocationPathCase{posix, u"/", u"", u"/", u"/"},
                                         LocationPathCase{posix, u"/a\\b", u"", u"/a\\b", u"/a\\b"},
                                         LocationPathCase{windows, u"C:\\a\\b", u"", u"/C:/a/b", u"C:\\a\\b"},
                                         LocationPathCase{windows, u"C:\\", u"", u"/C:", u"C:\\"},
                                         LocationPathCase{windows, u"\\\\host\\share\\a\\", u"host",
                                                          u"/share/a", u"\\\\host\\share\\a"},
                                         LocationPathCase{windows, u"\\\\host", u"host", u"/", u"\\\\host"},
                                         LocationPathCase{windows, u"\\\\?\\C:\\a", u"", u"/C:/a", u"C:\\a"},
                                         LocationPathCase{windows, u"\\\\?\\UNC\\host\\share", u"host",
                                                          u"/share", u"\\\\host\\share"}));

}  // namespace
}  // namespace korvex::runtime::paths
