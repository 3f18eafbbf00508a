// Patterns over several parts: what they list of a folder, and where they go on below it.
#include "runtime/listing/glob_pattern.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/message_identifiers.h"
#include "platform/user_exceptions.h"

namespace {

using korvex::runtime::listing::EntryShape;
using korvex::runtime::listing::GlobPattern;
using korvex::runtime::paths::PathStyle;
using testing::ElementsAre;
using testing::IsEmpty;
using SuccessiveGlobs = foundation::core::except::Exception<KORVEX::dir::SuccessiveGlobs>;

GlobPattern glob(std::u16string_view pattern) { return {pattern, u"/", PathStyle::posix}; }

/// Whether a path below the top folder is listed: each component a folder but for the last, a file.
bool lists(const GlobPattern& pattern, const std::vector<std::u16string>& path) {
    GlobPattern::Positions positions = pattern.start();
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
        positions = pattern.match(positions, path[i], EntryShape::folder).next;
        if (positions.empty()) return false;
    }
    return pattern.listsFile(positions, path.back());
}

TEST(GlobPatternTest, StarMatchesAnyRunWithinOnePart) {
    EXPECT_TRUE(lists(glob(u"*"), {u"a"}));
    EXPECT_TRUE(lists(glob(u"*"), {u".hidden"}));
    EXPECT_TRUE(lists(glob(u"a*c"), {u"ac"}));
    EXPECT_TRUE(lists(glob(u"a*c"), {u"abbc"}));
    EXPECT_FALSE(lists(glob(u"a*c"), {u"abd"}));
    EXPECT_FALSE(lists(glob(u"*"), {u"a", u"b"}));
}

TEST(GlobPatternTest, QuestionMarkMatchesOneUnit) {
    EXPECT_TRUE(lists(glob(u"a?"), {u"ab"}));
    EXPECT_FALSE(lists(glob(u"a?"), {u"a"}));
    EXPECT_FALSE(lists(glob(u"?"), {u"\U0001F600"}));
    EXPECT_TRUE(lists(glob(u"??"), {u"\U0001F600"}));
}

TEST(GlobPatternTest, BracketsAreOrdinaryUnits) {
    EXPECT_TRUE(lists(glob(u"[ab]*"), {u"[ab]c"}));
    EXPECT_FALSE(lists(glob(u"[ab]*"), {u"ac"}));
}

TEST(GlobPatternTest, TwoStarsMatchAnyNumberOfFoldersNoneIncluded) {
    for (const auto& path :
         std::vector<std::vector<std::u16string>>{{u"x"}, {u"a", u"x"}, {u"a", u"b", u"x"}}) {
        EXPECT_TRUE(lists(glob(u"**/x*"), path));
        EXPECT_FALSE(lists(glob(u"**/y*"), path));
    }
    EXPECT_TRUE(lists(glob(u"a*/**/x*"), {u"a", u"x"}));
    EXPECT_TRUE(lists(glob(u"a*/**/x*"), {u"a", u"b", u"c", u"x"}));
    EXPECT_FALSE(lists(glob(u"a*/**/x*"), {u"b", u"x"}));
    EXPECT_FALSE(lists(glob(u"a*/**/x*"), {u"x"}));
}

TEST(GlobPatternTest, TwoStarsAtTheEndMatchEverythingBelow) {
    EXPECT_TRUE(lists(glob(u"**"), {u"x"}));
    EXPECT_TRUE(lists(glob(u"**"), {u"a", u"b", u"x"}));
}

TEST(GlobPatternTest, TwoStarsTwiceGoOnFromWhereverTheyMatch) {
    const GlobPattern pattern = glob(u"**/a/**/x");
    EXPECT_TRUE(lists(pattern, {u"a", u"x"}));
    EXPECT_TRUE(lists(pattern, {u"b", u"a", u"c", u"x"}));
    EXPECT_TRUE(lists(pattern, {u"a", u"a", u"a", u"x"}));
    EXPECT_FALSE(lists(pattern, {u"b", u"c", u"x"}));
}

TEST(GlobPatternTest, TwoPartsOfTwoStarsInARowAreRefused) {
    for (const auto* pattern : {u"**/**", u"a/**/**/b", u"a/**//**", u"**/**/*"}) {
        EXPECT_THROW(glob(pattern), SuccessiveGlobs);
    }
    EXPECT_NO_THROW(glob(u"**/a/**"));
    EXPECT_NO_THROW(glob(u"**/*/**"));
}

TEST(GlobPatternTest, NamesInFrontOfTheFirstWildcardAreNoParts) {
    const GlobPattern pattern = glob(u"a/b/c*/d");
    EXPECT_THAT(pattern.leadingNames(), ElementsAre(u"a", u"b"));
    EXPECT_FALSE(pattern.isPath());
    EXPECT_TRUE(lists(pattern, {u"cc", u"d"}));
    EXPECT_TRUE(glob(u"a/b").isPath());
    EXPECT_TRUE(glob(u"").isPath());
}

TEST(GlobPatternTest, EmptyPartsDoNotCount) {
    EXPECT_TRUE(lists(glob(u"a*//b"), {u"a", u"b"}));
    EXPECT_TRUE(lists(glob(u"*/"), {u"a"}));
    EXPECT_THAT(glob(u"/a/").leadingNames(), ElementsAre(u"a"));
}

TEST(GlobPatternTest, FolderNamedByTheLastPartIsOpenedInsteadOfListed) {
    const GlobPattern pattern = glob(u"*/b");
    const auto positions = pattern.match(pattern.start(), u"a", EntryShape::folder).next;
    const GlobPattern::Match opened = pattern.match(positions, u"b", EntryShape::folder);
    EXPECT_FALSE(opened.isListed);
    EXPECT_TRUE(pattern.listsEverything(opened.next));
    EXPECT_TRUE(pattern.listsFile(opened.next, u"anything"));
    EXPECT_TRUE(pattern.match(opened.next, u"folder", EntryShape::folder).isListed);
    EXPECT_THAT(pattern.match(opened.next, u"folder", EntryShape::folder).next, IsEmpty());
}

TEST(GlobPatternTest, FolderMatchedByAWildcardAtTheEndIsListedAndNotOpened) {
    const GlobPattern pattern = glob(u"a*");
    const GlobPattern::Match match = pattern.match(pattern.start(), u"ab", EntryShape::folder);
    EXPECT_TRUE(match.isListed);
    EXPECT_THAT(match.next, IsEmpty());
}

TEST(GlobPatternTest, LinkToAFolderIsWalkedIntoOnlyWhereAPartNamesIt) {
    const GlobPattern pattern = glob(u"**/link/*");
    EXPECT_THAT(pattern.match(pattern.start(), u"other", EntryShape::linkToFolder).next, IsEmpty());
    EXPECT_EQ(pattern.match(pattern.start(), u"link", EntryShape::linkToFolder).next,
              (GlobPattern::Positions{2}));
    EXPECT_EQ(pattern.match(pattern.start(), u"link", EntryShape::folder).next,
              (GlobPattern::Positions{0, 1, 2}));
    const GlobPattern wildcards = glob(u"*/x*");
    EXPECT_THAT(wildcards.match(wildcards.start(), u"link", EntryShape::linkToFolder).next, IsEmpty());
}

TEST(GlobPatternTest, EverythingOfAFolderIsAskedForByAStarAloneOrByOpeningIt) {
    const auto asksForEverything = [](std::u16string_view pattern) {
        return glob(pattern).listsEverything(glob(pattern).start());
    };
    EXPECT_TRUE(asksForEverything(u"*"));
    EXPECT_TRUE(asksForEverything(u"**"));
    EXPECT_TRUE(asksForEverything(u"**/*"));
    EXPECT_TRUE(asksForEverything(u"name"));
    EXPECT_FALSE(asksForEverything(u"**/*.txt"));
    EXPECT_FALSE(asksForEverything(u"*/x"));
}

TEST(GlobPatternTest, CaseCountsWithThePosixStyle) {
    EXPECT_FALSE(lists(glob(u"A*"), {u"abc"}));
    EXPECT_FALSE(lists(glob(u"*/b"), {u"a", u"B"}));
}

TEST(GlobPatternTest, CaseDoesNotCountWithTheWindowsStyle) {
    const GlobPattern pattern(u"A*\\Über/?.TXT", u"/\\", PathStyle::windows);
    EXPECT_TRUE(lists(pattern, {u"abc", u"üBER", u"x.txt"}));
    EXPECT_FALSE(lists(pattern, {u"bbc", u"über", u"x.txt"}));
}

TEST(GlobPatternTest, BackSlashIsPartOfANameWhereItDoesNotSeparate) {
    EXPECT_TRUE(lists(glob(u"a\\*"), {u"a\\b"}));
}

TEST(GlobPatternTest, PatternOverNamesOpensNothing) {
    const auto listsFolder = [](std::u16string_view pattern, std::u16string_view name) {
        const GlobPattern names = GlobPattern::overNames(pattern, PathStyle::posix);
        const GlobPattern::Match match = names.match(names.start(), name, EntryShape::folder);
        EXPECT_THAT(match.next, IsEmpty());
        return match.isListed;
    };
    EXPECT_TRUE(listsFolder(u"name", u"name"));
    EXPECT_FALSE(listsFolder(u"name", u"other"));
    EXPECT_TRUE(listsFolder(u"", u"other"));
    EXPECT_TRUE(listsFolder(u"**", u"other"));
    EXPECT_TRUE(listsFolder(u"o*", u"other"));
}

}  // namespace
