// Regular expressions: what the pieces stand for, what is found, and what a replacement leaves alone.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "platform/regular_expressions.h"

namespace {

using namespace RE_Builder_Space;
using testing::ElementsAre;
using testing::IsEmpty;

std::optional<RE_Match> found(const std::u16string& pattern, const std::u16string& text,
                              std::size_t from = 0) {
    return RE_Tree(pattern, false).match(text, from);
}

/// Each run of what is no word character becomes "_".
std::u16string joinedWords(const std::u16string& text) {
    return RE_Replace(u"_").replace(text, RE_Tree(kleene(set(nonWordCharacters, false), greedy)));
}

TEST(RegularExpressionsTest, TextIsSearchedFromThePositionOn) {
    EXPECT_EQ(found(u"b.", u"abcbd"), (RE_Match{1, 3}));
    EXPECT_EQ(found(u"b.", u"abcbd", 2), (RE_Match{3, 5}));
    EXPECT_EQ(found(u"b.", u"abcbd", 4), std::nullopt);
    EXPECT_EQ(found(u"b", u"abc", 4), std::nullopt) << "behind the end";
    EXPECT_EQ(found(u"$", u"abc", 3), (RE_Match{3, 3}));
}

TEST(RegularExpressionsTest, AnchorsMeanTheEndsOfTheWholeText) {
    EXPECT_EQ(found(u"b$", u"bab"), (RE_Match{2, 3}));
    EXPECT_EQ(found(u"^b", u"ab", 1), std::nullopt);
    EXPECT_EQ(found(u"^b", u"a\nb"), std::nullopt);
    EXPECT_EQ(found(u"a$", u"a\nb"), std::nullopt);
    EXPECT_EQ(found(u"a$", u"a\n\n"), std::nullopt);
}

TEST(RegularExpressionsTest, LineEndThatATextEndsWithMayStandBehindADollarSign) {
    EXPECT_EQ(found(u"b$", u"ab\n"), (RE_Match{1, 2}));
    EXPECT_EQ(found(u"b$", u"ab\r\n"), (RE_Match{1, 2}));
    EXPECT_EQ(found(u"b\\z", u"ab\n"), std::nullopt);
    EXPECT_EQ(found(u"b\\z", u"ab"), (RE_Match{1, 2}));
}

TEST(RegularExpressionsTest, CaseIsIgnoredOnlyWhenAskedFor) {
    EXPECT_EQ(RE_Tree(u"straße", false).match(u"Straße", 0), std::nullopt);
    EXPECT_EQ(RE_Tree(u"straße", true).match(u"eine Straße", 0), (RE_Match{5, 11}));
}

TEST(RegularExpressionsTest, WordsAreThoseOfUnicode) {
    EXPECT_EQ(found(u"\\w+", u"- Größe_2 -"), (RE_Match{2, 9}));
    EXPECT_EQ(found(u"\\w", u"\xDC80"), std::nullopt) << "a byte of a name that is no text";
}

TEST(RegularExpressionsTest, SetsHoldTheirKindOrAllOthers) {
    const std::u16string text = u"a1 -";
    EXPECT_EQ(RE_Tree(set(wordCharacters, false)).match(text, 0), (RE_Match{0, 1}));
    EXPECT_EQ(RE_Tree(set(wordCharacters, true)).match(text, 0), (RE_Match{2, 3}));
    EXPECT_EQ(RE_Tree(set(nonWordCharacters, false)).match(text, 0), (RE_Match{2, 3}));
    EXPECT_EQ(RE_Tree(set(nonWordCharacters, true)).match(text, 1), (RE_Match{1, 2}));
    EXPECT_EQ(RE_Tree(set(digits, false)).match(text, 0), (RE_Match{1, 2}));
    EXPECT_EQ(RE_Tree(set(digits, true)).match(text, 1), (RE_Match{2, 3}));
    EXPECT_EQ(RE_Tree(set(blanks, false)).match(text, 0), (RE_Match{2, 3}));
    EXPECT_EQ(RE_Tree(set(blanks, true)).match(text, 2), (RE_Match{3, 4}));
}

TEST(RegularExpressionsTest, ClosureTakesWhatItsQualifierSays) {
    const Builder words = set(wordCharacters, false);
    EXPECT_EQ(RE_Tree(kleene(words, greedy)).match(u"ab-", 0), (RE_Match{0, 2}));
    EXPECT_EQ(RE_Tree(kleene(words, reluctant)).match(u"ab-", 0), (RE_Match{0, 0}));
    const auto endingInB = [&](QuantifierQualifier qualifier) {
        return found(kleene(words, qualifier).syntax() + u'b', u"abb");
    };
    EXPECT_EQ(endingInB(greedy), (RE_Match{0, 3}));
    EXPECT_EQ(endingInB(reluctant), (RE_Match{0, 2}));
    EXPECT_EQ(endingInB(possessive), std::nullopt);
}

TEST(RegularExpressionsTest, ClosureRepeatsAllOfWhatWasBuilt) {
    const Builder pairs(u"ab", false);
    EXPECT_EQ(RE_Tree(kleene(pairs, greedy)).match(u"ababb", 0), (RE_Match{0, 4}));
    EXPECT_EQ(RE_Tree(kleene(kleene(pairs, greedy), greedy)).match(u"abab", 0), (RE_Match{0, 4}));
}

TEST(RegularExpressionsTest, ClosureFindsNothingBetweenWhatIsNotItsOwn) {
    const RE_Tree separators(kleene(set(nonWordCharacters, false), greedy));
    EXPECT_THAT(separators.matchAll(u"a--b"),
                ElementsAre(RE_Match{0, 0}, RE_Match{1, 3}, RE_Match{3, 3}, RE_Match{4, 4}));
    EXPECT_THAT(separators.matchAll(u""), ElementsAre(RE_Match{0, 0}));
    EXPECT_THAT(RE_Tree(u"x", false).matchAll(u"abc"), IsEmpty());
}

TEST(RegularExpressionsTest, ReplacementLeavesPlacesWithoutContentAlone) {
    EXPECT_EQ(joinedWords(u"ab"), u"ab");
    EXPECT_EQ(joinedWords(u"/a//b c.d-"), u"_a_b_c_d_");
    EXPECT_EQ(joinedWords(u""), u"");
    EXPECT_EQ(joinedWords(u"---"), u"_");
    EXPECT_EQ(joinedWords(u"a\xDC80"
                          u"b"),
              u"a_b");
    EXPECT_EQ(joinedWords(u"\U0001D4B6"), u"\U0001D4B6") << "a letter of two units";
}

TEST(RegularExpressionsTest, BackSlashInAReplacementTakesTheNextUnitAsItStands) {
    const RE_Tree letters(u"x", false);
    EXPECT_EQ(RE_Replace(u"\\\\W*").replace(u"axb", letters), u"a\\W*b");
    EXPECT_EQ(RE_Replace(u"\\n").replace(u"axb", letters), u"anb");
    EXPECT_EQ(RE_Replace(u"$1\\").replace(u"axb", letters), u"a$1\\b");
    EXPECT_EQ(RE_Replace(u"").replace(u"axxb", letters), u"ab");
}

TEST(RegularExpressionsTest, WhatIsNoExpressionIsRefused) {
    EXPECT_THROW(RE_Tree(u"(a", false), RE_Error);
    EXPECT_THROW(RE_Tree(u"*", false), RE_Error);
}

TEST(RegularExpressionsTest, SearchThatNeedsTooMuchMemoryIsRefused) {
    const RE_Tree nested(u"(?:a|ab)*c", false);
    EXPECT_THROW(nested.match(std::u16string(5'000'000, u'a'), 0), RE_Error);
}

TEST(RegularExpressionsTest, LongRunsAreNoBurden) {
    const std::u16string run(1'000'000, u'-');
    EXPECT_EQ(joinedWords(u"a" + run + u"b"), u"a_b");
}

TEST(RegularExpressionsTest, ThreadsMayShareOneExpression) {
    const RE_Tree words(u"\\w+", false);
    const std::u16string text = u"one two three";
    const auto search = [&] {
        for (int i = 0; i < 1000; ++i)
            ASSERT_EQ(words.matchAll(text).size(), 3U);
    };
    std::thread other(search);
    search();
    other.join();
}

}  // namespace
