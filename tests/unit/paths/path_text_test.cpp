// Clean-ups of path text by the rules of both platforms, on whichever the tests run.
#include "runtime/paths/path_text.h"

#include <gtest/gtest.h>

namespace korvex::runtime::paths {
namespace {

constexpr PathStyle posix = PathStyle::posix;
constexpr PathStyle windows = PathStyle::windows;

template <class CleanUp>
std::u16string after(CleanUp cleanUp, std::u16string path, PathStyle style) {
    cleanUp(path, style);
    return path;
}

TEST(PathRoot, HasItsSeparator) {
    EXPECT_EQ(rootLength(u"/a", posix), 1U);
    EXPECT_EQ(rootLength(u"a/b", posix), 0U);
    EXPECT_EQ(rootLength(u"\\a", posix), 0U);
    EXPECT_EQ(rootLength(u"C:\\a", windows), 3U);
    EXPECT_EQ(rootLength(u"C:a", windows), 2U);
    EXPECT_EQ(rootLength(u"\\a", windows), 1U);
    EXPECT_EQ(rootLength(u"", windows), 0U);
}

TEST(PathRoot, OfNetworkAndLongPathsHoldsTheVolume) {
    EXPECT_EQ(rootLength(u"\\\\host\\share\\a", windows), 13U);
    EXPECT_EQ(rootLength(u"\\\\host\\share", windows), 12U);
    EXPECT_EQ(rootLength(u"\\\\host", windows), 6U);
    EXPECT_EQ(rootLength(u"\\\\?\\C:\\a", windows), 7U);
    EXPECT_EQ(rootLength(u"\\\\?\\UNC\\host\\share\\a", windows), 19U);
    EXPECT_EQ(rootLength(u"\\\\?\\Volume{1}\\a", windows), 14U);
}

TEST(DotComponents, AreFoundAsWholeComponentsOnly) {
    for (const char16_t* text : {u".", u"..", u"./a", u"a/.", u"a/../b", u"/..", u"memory://box/a/.."}) {
        EXPECT_TRUE(hasDotComponent(text, posix));
        EXPECT_TRUE(hasDotComponent(text, windows));
    }
    for (const char16_t* text : {u"", u"a", u".a", u"a.", u"...", u"/a..b/.c", u"http://host/a.b"}) {
        EXPECT_FALSE(hasDotComponent(text, posix));
        EXPECT_FALSE(hasDotComponent(text, windows));
    }
}

TEST(DotComponents, AreSeparatedByBackSlashesAndDrivesOnWindowsOnly) {
    for (const char16_t* text : {u"a\\..\\b", u"C:..", u"C:.\\a"}) {
        EXPECT_TRUE(hasDotComponent(text, windows));
        EXPECT_FALSE(hasDotComponent(text, posix));
    }
}

TEST(SingleDots, GoWithTheirSeparator) {
    EXPECT_EQ(after(removeSingleDots, u"/a/./b", posix), u"/a/b");
    EXPECT_EQ(after(removeSingleDots, u"/a/.", posix), u"/a");
    EXPECT_EQ(after(removeSingleDots, u"/a/./", posix), u"/a/");
    EXPECT_EQ(after(removeSingleDots, u"/./a/././b", posix), u"/a/b");
    EXPECT_EQ(after(removeSingleDots, u"./a", posix), u"a");
    EXPECT_EQ(after(removeSingleDots, u"C:\\.\\a", windows), u"C:\\a");
    EXPECT_EQ(after(removeSingleDots, u"\\\\host\\share\\.\\a", windows), u"\\\\host\\share\\a");
}

TEST(SingleDots, LeaveARootOrOneDotBehind) {
    EXPECT_EQ(after(removeSingleDots, u"/.", posix), u"/");
    EXPECT_EQ(after(removeSingleDots, u"/./", posix), u"/");
    EXPECT_EQ(after(removeSingleDots, u"C:\\.", windows), u"C:\\");
    EXPECT_EQ(after(removeSingleDots, u".", posix), u".");
    EXPECT_EQ(after(removeSingleDots, u"./.", posix), u".");
    EXPECT_EQ(after(removeSingleDots, u"", posix), u"");
}

TEST(SingleDots, ARelativePathNeverTurnsIntoOneWithADrive) {
    EXPECT_EQ(after(removeSingleDots, u".\\C:\\a", windows), u".\\C:\\a");
    EXPECT_EQ(after(removeSingleDots, u"./.\\C:a\\.", windows), u".\\C:a");
    EXPECT_EQ(after(removeSingleDots, u"\\.\\C:\\a", windows), u"\\C:\\a");
    EXPECT_EQ(after(removeSingleDots, u"./C:/a", posix), u"C:/a");
}

TEST(SingleDots, OtherTextStaysAsItIs) {
    for (const char16_t* path : {u"/a//b/", u"/.a/b./...", u"/a/../b", u"a\\.\\b"}) {
        EXPECT_EQ(after(removeSingleDots, path, posix), path);
    }
}

TEST(DoubleDots, ARelativePathNeverTurnsIntoOneWithADrive) {
    EXPECT_EQ(after(resolveDoubleDots, u"a\\..\\C:\\b", windows), u".\\C:\\b");
    EXPECT_EQ(after(resolveDoubleDots, u"a\\..\\b\\..\\C:", windows), u".\\C:");
    EXPECT_EQ(after(resolveDoubleDots, u"C:a\\..\\D:b", windows), u"C:D:b");
    EXPECT_EQ(after(resolveDoubleDots, u".\\C:a\\..\\b", windows), u"b");
}

TEST(DoubleDots, StayNowhereInAnAbsolutePath) {
    EXPECT_EQ(after(resolveDoubleDots, u"\\\\?\\C:a\\..\\..\\b", windows), u"\\\\?\\C:b");
    EXPECT_EQ(after(resolveDoubleDots, u"\\\\?\\C:..", windows), u"\\\\?\\C:");
}

TEST(DoubleDots, TakeTheComponentInFrontAlong) {
    EXPECT_EQ(after(resolveDoubleDots, u"/a/../b", posix), u"/b");
    EXPECT_EQ(after(resolveDoubleDots, u"/a/b/..", posix), u"/a");
    EXPECT_EQ(after(resolveDoubleDots, u"/a/b/../", posix), u"/a/");
    EXPECT_EQ(after(resolveDoubleDots, u"/a/b/../../c", posix), u"/c");
    EXPECT_EQ(after(resolveDoubleDots, u"/a//../b", posix), u"/b");
    EXPECT_EQ(after(resolveDoubleDots, u"/a/b/./../c", posix), u"/a/c");
    EXPECT_EQ(after(resolveDoubleDots, u"C:\\a\\..\\b", windows), u"C:\\b");
}

TEST(DoubleDots, NeverLeaveTheRoot) {
    EXPECT_EQ(after(resolveDoubleDots, u"/..", posix), u"/");
    EXPECT_EQ(after(resolveDoubleDots, u"/../../a", posix), u"/a");
    EXPECT_EQ(after(resolveDoubleDots, u"/a/../..", posix), u"/");
    EXPECT_EQ(after(resolveDoubleDots, u"C:\\..\\a", windows), u"C:\\a");
    EXPECT_EQ(after(resolveDoubleDots, u"\\\\host\\share\\..\\..\\a", windows), u"\\\\host\\share\\a");
    EXPECT_EQ(after(resolveDoubleDots, u"\\\\?\\C:\\..\\a", windows), u"\\\\?\\C:\\a");
}

TEST(DoubleDots, StayInFrontOfARelativePath) {
    EXPECT_EQ(after(resolveDoubleDots, u"../a", posix), u"../a");
    EXPECT_EQ(after(resolveDoubleDots, u"a/../../b", posix), u"../b");
    EXPECT_EQ(after(resolveDoubleDots, u"../../a", posix), u"../../a");
    EXPECT_EQ(after(resolveDoubleDots, u"a/..", posix), u".");
    EXPECT_EQ(after(resolveDoubleDots, u"C:..\\a", windows), u"C:..\\a");
}

TEST(DoubledSeparators, FoldBehindTheRoot) {
    EXPECT_EQ(after(foldDoubledSeparators, u"//a///b//", posix), u"/a/b/");
    EXPECT_EQ(after(foldDoubledSeparators, u"a//b", posix), u"a/b");
    EXPECT_EQ(after(foldDoubledSeparators, u"//", posix), u"/");
    EXPECT_EQ(after(foldDoubledSeparators, u"C:\\\\a\\\\b", windows), u"C:\\a\\b");
    EXPECT_EQ(after(foldDoubledSeparators, u"\\\\host\\share\\\\a", windows), u"\\\\host\\share\\a");
    EXPECT_EQ(after(foldDoubledSeparators, u"a\\\\b", posix), u"a\\\\b");
}

TEST(TrailingSeparators, AllGoButTheRoots) {
    EXPECT_EQ(after(dropTrailingSeparators, u"/a//", posix), u"/a");
    EXPECT_EQ(after(dropTrailingSeparators, u"/", posix), u"/");
    EXPECT_EQ(after(dropTrailingSeparators, u"a\\", posix), u"a\\");
    EXPECT_EQ(after(dropTrailingSeparators, u"C:\\a\\/", windows), u"C:\\a");
    EXPECT_EQ(after(dropTrailingSeparators, u"C:\\", windows), u"C:\\");
    EXPECT_EQ(after(dropTrailingSeparators, u"\\\\host\\share\\", windows), u"\\\\host\\share\\");
    EXPECT_EQ(after(dropTrailingSeparators, u"\\\\host\\share\\a\\", windows), u"\\\\host\\share\\a");
}

TEST(Slashes, TurnRoundOnWindowsOnly) {
    EXPECT_EQ(after(replaceSlashes, u"C:/a\\b/", windows), u"C:\\a\\b\\");
    EXPECT_EQ(after(replaceSlashes, u"/a\\b/", posix), u"/a\\b/");
    EXPECT_EQ(after(replaceBackslashes, u"C:\\a/b\\", windows), u"C:/a/b/");
    EXPECT_EQ(after(replaceBackslashes, u"/a\\b", posix), u"/a\\b");
}

TEST(TrailingDotsAndSpaces, GoFromTheEndOfAWindowsPath) {
    EXPECT_EQ(after(dropTrailingDotsAndSpaces, u"C:\\a.txt. . ", windows), u"C:\\a.txt");
    EXPECT_EQ(after(dropTrailingDotsAndSpaces, u"a ", windows), u"a");
    EXPECT_EQ(after(dropTrailingDotsAndSpaces, u"...", windows), u"");
    EXPECT_EQ(after(dropTrailingDotsAndSpaces, u"  ", windows), u"");
    EXPECT_EQ(after(dropTrailingDotsAndSpaces, u" a", windows), u" a");
}

TEST(TrailingDotsAndSpaces, OfAnInnerComponentOnlyASingleDotGoes) {
    EXPECT_EQ(after(dropTrailingDotsAndSpaces, u"C:\\a.\\b", windows), u"C:\\a\\b");
    EXPECT_EQ(after(dropTrailingDotsAndSpaces, u"C:\\a..\\b ..\\c", windows), u"C:\\a..\\b ..\\c");
    EXPECT_EQ(after(dropTrailingDotsAndSpaces, u"C:\\a \\b", windows), u"C:\\a \\b");
    EXPECT_EQ(after(dropTrailingDotsAndSpaces, u"C:\\a.\\", windows), u"C:\\a\\");
}

TEST(TrailingDotsAndSpaces, DotComponentsLongPathsAndPosixPathsStay) {
    for (const char16_t* path : {u".", u"..", u"C:\\a\\..", u".\\a", u"..\\a", u"\\\\?\\C:\\a. "}) {
        EXPECT_EQ(after(dropTrailingDotsAndSpaces, path, windows), path);
    }
    for (const char16_t* path : {u"/a.", u"/a ", u"a./b", u"..."}) {
        EXPECT_EQ(after(dropTrailingDotsAndSpaces, path, posix), path);
    }
}

TEST(PartsOfAPath, FileNameStandsBehindTheLastSeparator) {
    EXPECT_EQ(fileNameOf(u"/a/b.c", posix), u"b.c");
    EXPECT_EQ(fileNameOf(u"b", posix), u"b");
    EXPECT_EQ(fileNameOf(u"/a/", posix), u"");
    EXPECT_EQ(fileNameOf(u"/", posix), u"");
    EXPECT_EQ(fileNameOf(u"a\\b", posix), u"a\\b");
    EXPECT_EQ(fileNameOf(u"C:\\a\\b", windows), u"b");
    EXPECT_EQ(fileNameOf(u"C:b", windows), u"b");
    EXPECT_EQ(fileNameOf(u"/a/**", posix), u"**");
}

struct NameParts {
    const char16_t* path;
    const char16_t* stem;
    const char16_t* extension;
};

TEST(PartsOfAPath, ExtensionStandsBehindTheLastDot) {
    for (const auto& [path, stem, extension] :
         {NameParts{u"/a.d/b.c.k", u"b.c", u"k"}, NameParts{u"b", u"b", u""}, NameParts{u"b.", u"b", u""},
          NameParts{u".k", u"", u"k"}, NameParts{u"a..k", u"a.", u"k"}, NameParts{u"/a.k/", u"", u""},
          NameParts{u"/a/.", u".", u""}, NameParts{u"..", u"..", u""}, NameParts{u"/a.d/b", u"b", u""}}) {
        EXPECT_EQ(stemOf(path, posix), stem);
        EXPECT_EQ(extensionOf(path, posix), extension);
    }
    EXPECT_EQ(extensionOf(u"C:\\a.d\\b", windows), u"");
    EXPECT_EQ(extensionOf(u"a.d\\b", posix), u"d\\b");
}

}  // namespace
}  // namespace korvex::runtime::paths
