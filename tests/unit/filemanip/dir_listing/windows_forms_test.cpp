// How `dir` prepares its pattern where paths are those of Windows: the functions over stand-ins for the
// platform's path functions.
#include <gtest/gtest.h>

#include "io/filesystem/filemanip/dir_listing_patterns.h"
#include "platform/filesystem_core.h"
#include "platform/filesystem_shared.h"
#include "platform/foundation_filesystem.h"
#include "platform/user_exceptions.h"
#include "runtime/paths/path_style.h"
#include "runtime/paths/path_text.h"

namespace paths = korvex::runtime::paths;

namespace fl::filesystem {

namespace upath_constant {
const char16_t PATHNAME_SEPARATOR = u'\\';
}  // namespace upath_constant

namespace detail {

std::u16string make_native_form(const std::u16string& path, bool keepTrailing) {
    return paths::nativeForm(path, keepTrailing, paths::PathStyle::windows);
}

std::u16string extract_filename(const std::u16string& path) {
    return std::u16string(paths::fileNameOf(path, paths::PathStyle::windows));
}

}  // namespace detail
}  // namespace fl::filesystem

namespace filesystemSharedFcns {

bool isPathSeparator(const char16_t& unit) noexcept {
    return paths::isSeparator(unit, paths::PathStyle::windows);
}

}  // namespace filesystemSharedFcns

namespace korvex::io::filesystem::core {

void relativeToAbsolute(std::u16string& path, ResolveSymbolicLinks mode) {
    EXPECT_EQ(mode, KeepLinksAndDots);
    path = paths::joined(u"C:\\here", path, paths::PathStyle::windows);
}

}  // namespace korvex::io::filesystem::core

namespace korvex::filemanip::tests {
namespace {

using Text = std::u16string;

std::string judged(std::u16string_view pattern) {
    try {
        validateRecursiveGlobs(pattern);
        return "";
    } catch (const foundation::core::except::IMsgIDException& error) {
        return error.get_error_id();
    }
}

Text made(const Text& text) { return makeAbsoluteAroundWildcard(text, u"C:\\current"); }

TEST(WindowsPatternsTest, BothSlashesBoundAPart) {
    for (const auto* pattern : {u"a\\**", u"a/**\\b", u"**\\b", u"C:\\**", u"C:**"}) {
        EXPECT_EQ(judged(pattern), "") << testing::PrintToString(Text(pattern));
    }
    EXPECT_EQ(judged(u"a\\b**"), "KORVEX:dir:invalidGlob");
    EXPECT_EQ(judged(u"1:**"), "KORVEX:dir:invalidGlob");
}

TEST(WindowsPatternsTest, TailIsExpandedBehindEitherSlash) {
    for (const auto* text : {u"C:\\a\\**", u"C:/a/**", u"C:**"}) {
        Text expanded = text;
        expandRecursiveTail(expanded);
        EXPECT_EQ(expanded, Text(text) + u"/*");
    }
}

TEST(WindowsPatternsTest, DriveAloneIsCutFromTheWildcard) {
    EXPECT_EQ(made(u"C:*.txt"), u"C:\\here\\*.txt");
    EXPECT_EQ(made(u"D:*.txt"), u"D:\\*.txt");
}

TEST(WindowsPatternsTest, RootOfADriveStaysTheHead) {
    EXPECT_EQ(made(u"C:\\*.txt"), u"C:\\*.txt");
    EXPECT_EQ(made(u"\\*.txt"), u"C:\\*.txt");
    EXPECT_EQ(made(u"C:\\a\\b*\\c"), u"C:\\a\\b*\\c");
}

TEST(WindowsPatternsTest, RelativePatternIsMadeAbsolute) {
    EXPECT_EQ(made(u"*.txt"), u"C:\\here\\*.txt");
    EXPECT_EQ(made(u"sub\\*.txt"), u"C:\\here\\sub\\*.txt");
    EXPECT_EQ(made(u""), u"C:\\current");
}

TEST(WindowsPatternsTest, PrefixKnowsTheRelativeFormsOfThePlatform) {
    EXPECT_EQ(displayFolderPrefix(u"sub\\*"), u"sub");
    for (const auto* text : {u".\\a", u"..\\a", u"a\\.\\b", u"a\\..\\b", u"~\\a"}) {
        EXPECT_EQ(displayFolderPrefix(text), u"") << testing::PrintToString(Text(text));
    }
    EXPECT_EQ(displayFolderPrefix(u"a/../b"), u"a/../b");
}

TEST(WindowsPatternsTest, CutTakesEitherSlash) {
    const PatternCut cut = cutPattern(u"C:/a\\b*", 0, false, false, u"C:\\current");
    EXPECT_EQ(cut.folderPart, u"C:/a\\");
    EXPECT_EQ(cut.patternPart, u"b*");
    EXPECT_EQ(cutPattern(u"memory://box/a\\b*", 0, true, false, u"C:\\current").patternPart, u"a\\b*");
}

TEST(WindowsPatternsTest, CurrentFolderThatIsADriveGetsASeparator) {
    EXPECT_EQ(cutPattern(u"name", 0, false, false, u"C:").folderPart, u"C:\\");
    EXPECT_EQ(cutPattern(u"name", 0, false, false, u"memory:/box:").folderPart, u"memory:/box:/");
}

TEST(WindowsPatternsTest, HeadersAreForWildcardsBeforeEitherSlash) {
    EXPECT_TRUE(hasWildcardInFolderPart(u"C:\\*\\a", false));
    EXPECT_TRUE(hasWildcardInFolderPart(u"C:/*/a", false));
    EXPECT_FALSE(hasWildcardInFolderPart(u"C:\\*", false));
    EXPECT_FALSE(hasWildcardInFolderPart(u"memory://box/*\\a", true));
}

}  // namespace
}  // namespace korvex::filemanip::tests
