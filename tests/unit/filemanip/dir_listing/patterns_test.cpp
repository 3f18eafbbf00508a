// How `dir` prepares its pattern, by the rules of the running platform's paths.
#include "io/filesystem/filemanip/dir_listing_patterns.h"

#include <gtest/gtest.h>

#include "platform/user_exceptions.h"
#include "runtime/dispatcher/current_folder.h"
#include "tests/support/scratch_folder.h"

namespace korvex::filemanip::tests {
namespace {

using Text = std::u16string;

/// The identifier of what is raised for a pattern; nothing when it is accepted.
std::string judged(std::u16string_view pattern) {
    try {
        validateRecursiveGlobs(pattern);
        return "";
    } catch (const foundation::core::except::IMsgIDException& error) {
        return error.get_error_id();
    }
}

Text expanded(Text text) {
    expandRecursiveTail(text);
    return text;
}

constexpr const char* invalidGlob = "KORVEX:dir:invalidGlob";

TEST(ValidateRecursiveGlobsTest, TwoStarsThatAreAWholePartPass) {
    for (const auto* pattern :
         {u"**", u"a/**", u"**/a", u"a/**/b", u"/**", u"**/", u"**/**", u"", u"*", u"a*b*"}) {
        EXPECT_EQ(judged(pattern), "") << testing::PrintToString(Text(pattern));
    }
}

TEST(ValidateRecursiveGlobsTest, TwoStarsThatArePartOfANameAreRefused) {
    for (const auto* pattern : {u"a**", u"**a", u"a/**b", u"a/b**", u"***", u"**/***", u"**/a**"}) {
        EXPECT_EQ(judged(pattern), invalidGlob) << testing::PrintToString(Text(pattern));
    }
}

TEST(ValidateRecursiveGlobsTest, TwoStarsBehindADrivePassWhateverFollows) {
    EXPECT_EQ(judged(u"C:**"), "");
    EXPECT_EQ(judged(u"C:**x"), "");
    EXPECT_EQ(judged(u"1:**"), invalidGlob);
    EXPECT_EQ(judged(u"é:**"), invalidGlob);
    EXPECT_EQ(judged(u"CC:**"), invalidGlob);
    // The third star is looked at by itself, and stands behind no separator.
    EXPECT_EQ(judged(u"C:***"), invalidGlob);
}

TEST(ExpandRecursiveTailTest, LastPartOfTwoStarsGetsAStarBehindIt) {
    EXPECT_EQ(expanded(u"a/**"), u"a/**/*");
    EXPECT_EQ(expanded(u"**"), u"**/*");
    EXPECT_EQ(expanded(u"memory://box/**"), u"memory://box/**/*");
}

TEST(ExpandRecursiveTailTest, EverythingElseStays) {
    for (const auto* text : {u"", u"a", u"a/**/*", u"a/**/", u"**/b", u"a/b**"}) {
        EXPECT_EQ(expanded(text), text);
    }
}

TEST(DisplayFolderPrefixTest, TextWithoutWildcardIsThePrefix) {
    EXPECT_EQ(displayFolderPrefix(u"sub/name"), u"sub/name");
    EXPECT_EQ(displayFolderPrefix(u"/a/b/"), u"/a/b/");
    EXPECT_EQ(displayFolderPrefix(u""), u"");
}

TEST(DisplayFolderPrefixTest, WildcardCutsThePrefixAndTheUnitBeforeIt) {
    EXPECT_EQ(displayFolderPrefix(u"sub/*"), u"sub");
    EXPECT_EQ(displayFolderPrefix(u"sub/**/*.txt"), u"sub");
    EXPECT_EQ(displayFolderPrefix(u"foo*"), u"fo");
    EXPECT_EQ(displayFolderPrefix(u"/*"), u"");
    EXPECT_EQ(displayFolderPrefix(u"*"), u"");
    EXPECT_EQ(displayFolderPrefix(u"*/sub"), u"");
}

TEST(DisplayFolderPrefixTest, PathThroughARelativeFormHasNone) {
    for (const auto* text :
         {u".", u"..", u"~", u"./a", u"../a", u"~/a", u"a/./b", u"a/../b", u"a~/b", u"../*"}) {
        EXPECT_EQ(displayFolderPrefix(text), u"") << testing::PrintToString(Text(text));
    }
    EXPECT_EQ(displayFolderPrefix(u".a"), u".a");
    EXPECT_EQ(displayFolderPrefix(u"a/.."), u"a/..");
    EXPECT_EQ(displayFolderPrefix(u"~a"), u"~a");
}

class MakeAbsoluteTest : public testing::Test {
protected:
    MakeAbsoluteTest() { korvex::runtime::dispatcher::setCurrentFolderPath(scratch_.text()); }
    ~MakeAbsoluteTest() override { korvex::runtime::dispatcher::setCurrentFolderPath(u"/"); }

    Text made(const Text& text) const { return makeAbsoluteAroundWildcard(text, u"/current"); }
    /// Below the folder that relative paths are taken against.
    Text here(const Text& path) const {
        return korvex::runtime::dispatcher::currentFolderPath() + u'/' + path;
    }

    korvex::tests::ScratchFolder scratch_;
};

TEST_F(MakeAbsoluteTest, TextWithoutWildcardIsMadeAbsoluteWhole) {
    EXPECT_EQ(made(u"sub/name"), here(u"sub/name"));
    EXPECT_EQ(made(u"/sub/name"), u"/sub/name");
    EXPECT_EQ(made(u"sub/"), here(u"sub/"));
    EXPECT_EQ(made(u"."), here(u"."));
    EXPECT_EQ(made(u"../a"), here(u"../a"));
}

TEST_F(MakeAbsoluteTest, OnlyWhatStandsBeforeTheWildcardIsTouched) {
    EXPECT_EQ(made(u"sub/*"), here(u"sub/*"));
    EXPECT_EQ(made(u"sub/a*/../b"), here(u"sub/a*/../b"));
    EXPECT_EQ(made(u"/sub/*"), u"/sub/*");
    EXPECT_EQ(made(u"/sub/a*b/c"), u"/sub/a*b/c");
}

TEST_F(MakeAbsoluteTest, SinglePartIsMadeAbsoluteWithItsWildcard) {
    EXPECT_EQ(made(u"*.txt"), here(u"*.txt"));
}

TEST_F(MakeAbsoluteTest, RootStaysTheHead) {
    EXPECT_EQ(made(u"/*.txt"), u"/*.txt");
    EXPECT_EQ(made(u"//*.txt"), u"/*.txt");
}

TEST_F(MakeAbsoluteTest, NoHeadIsTheCurrentFolder) { EXPECT_EQ(made(u""), u"/current"); }

TEST(JoinPathPartsTest, OneSeparatorComesBetweenIfNeitherBringsOne) {
    EXPECT_EQ(joinPathParts(u"/a", u"b"), u"/a/b");
    EXPECT_EQ(joinPathParts(u"/a/", u"b"), u"/a/b");
    EXPECT_EQ(joinPathParts(u"/a", u"/b"), u"/a/b");
    EXPECT_EQ(joinPathParts(u"/a/", u"/b"), u"/a//b");
    EXPECT_EQ(joinPathParts(u"", u"b"), u"b");
    EXPECT_EQ(joinPathParts(u"/a", u""), u"/a");
}

TEST(HasWildcardInFolderPartTest, StarInFrontOfTheLastSeparatorCounts) {
    EXPECT_TRUE(hasWildcardInFolderPart(u"/a/*/b", false));
    EXPECT_TRUE(hasWildcardInFolderPart(u"/a/**/*", false));
    EXPECT_FALSE(hasWildcardInFolderPart(u"/a/*", false));
    EXPECT_FALSE(hasWildcardInFolderPart(u"/a/?/b", false));
    EXPECT_TRUE(hasWildcardInFolderPart(u"memory://box/*/b", true));
    EXPECT_FALSE(hasWildcardInFolderPart(u"memory://box/*", true));
}

TEST(HasWildcardInFolderPartTest, WithoutASeparatorTheEndDecides) {
    EXPECT_TRUE(hasWildcardInFolderPart(u"**", false));
    EXPECT_FALSE(hasWildcardInFolderPart(u"*", false));
    EXPECT_FALSE(hasWildcardInFolderPart(u"a", false));
}

struct CutCase {
    const char* name;
    Text text;
    std::size_t searchStart;
    bool isIri;
    std::size_t firstStar;
    Text folderPart;
    Text patternPart;
};

void PrintTo(const CutCase& row, std::ostream* stream) { *stream << row.name; }

class CutPatternTest : public testing::TestWithParam<CutCase> {};

TEST_P(CutPatternTest, CutsBehindTheLastSeparatorBeforeTheFirstWildcard) {
    const CutCase& row = GetParam();
    const PatternCut cut = cutPattern(row.text, row.searchStart, row.isIri, false, u"/current");
    EXPECT_EQ(cut.firstStar, row.firstStar);
    EXPECT_EQ(cut.folderPart, row.folderPart);
    EXPECT_EQ(cut.patternPart, row.patternPart);
}

constexpr std::size_t none = PatternCut::none;

INSTANTIATE_TEST_SUITE_P(
    Texts, CutPatternTest,
    testing::Values(
        CutCase{"Name", u"/a/sub/name", 0, false, none, u"/a/sub/", u"name"},
        CutCase{"Star", u"/a/b*", 0, false, 4, u"/a/", u"b*"},
        CutCase{"StarInTheMiddle", u"/a*/b", 0, false, 2, u"/", u"a*/b"},
        CutCase{"SeveralStars", u"/a/**/*.txt", 0, false, 3, u"/a/", u"**/*.txt"},
        CutCase{"QuestionMark", u"/a/?/b", 0, false, none, u"/a/?/", u"b"},
        CutCase{"NoSeparator", u"name", 0, false, none, u"/current", u"name"},
        CutCase{"StarBeforeTheSearch", u"/a*b/*", 4, false, 5, u"/a*b/", u"*"},
        CutCase{"SearchBehindTheEnd", u"/a/*", 9, false, none, u"/a/", u"*"},
        CutCase{"NoSearch", u"*", none, false, none, u"/current", u"*"},
        CutCase{"ColonAtTheEnd", u"a:/x", 0, false, none, u"a:/", u"x"},
        CutCase{"Location", u"memory://box/a/*", 0, true, 15, u"memory://box/a/", u"*"},
        CutCase{"DecodedPattern", u"memory://box/a%20b/c%20*", 0, true, 23, u"memory://box/a%20b/", u"c *"},
        CutCase{"NotDecodedPath", u"/a/c%20*", 0, false, 7, u"/a/", u"c%20*"},
        CutCase{"LocationWithBackSlash", u"memory://box/a\\b", 0, true, none, u"memory://box/", u"a\\b"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(CutPatternExampleTest, WebLocationIsAFolderPartAsAWhole) {
    const PatternCut cut = cutPattern(u"http://host/a/*%20", 0, true, true, u"/current");
    EXPECT_EQ(cut.folderPart, u"http://host/a/*%20");
    EXPECT_EQ(cut.patternPart, u"");
    EXPECT_EQ(cut.firstStar, 14U);
}

}  // namespace
}  // namespace korvex::filemanip::tests
