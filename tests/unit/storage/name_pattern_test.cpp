// Wildcards over names.
#include "runtime/storage/name_pattern.h"

#include <gtest/gtest.h>

#include <string>

namespace korvex::runtime::storage {
namespace {

bool matches(std::u16string_view pattern, std::u16string_view name) {
    return NamePattern(pattern).matches(name);
}

TEST(NamePattern, WithoutWildcardMatchesThatNameOnly) {
    EXPECT_TRUE(matches(u"name", u"name"));
    EXPECT_FALSE(matches(u"name", u"Name"));
    EXPECT_FALSE(matches(u"name", u"names"));
    EXPECT_FALSE(matches(u"name", u"nam"));
    EXPECT_FALSE(matches(u"name", u""));
}

TEST(NamePattern, EmptyMatchesEverything) {
    EXPECT_TRUE(matches(u"", u""));
    EXPECT_TRUE(matches(u"", u"name"));
}

TEST(NamePattern, StarStandsForAnyRun) {
    EXPECT_TRUE(matches(u"*", u""));
    EXPECT_TRUE(matches(u"*", u".hidden"));
    EXPECT_TRUE(matches(u"a*", u"a"));
    EXPECT_TRUE(matches(u"a*c", u"abbbc"));
    EXPECT_TRUE(matches(u"*.txt", u"a.txt.txt"));
    EXPECT_TRUE(matches(u"**a**", u"a"));
    EXPECT_FALSE(matches(u"a*c", u"abbbd"));
    EXPECT_FALSE(matches(u"*.txt", u"a.txt2"));
    EXPECT_FALSE(matches(u"a*", u"ba"));
}

TEST(NamePattern, StarGivesWayAsOftenAsItMust) {
    EXPECT_TRUE(matches(u"*ab*ab", u"aababxab"));
    EXPECT_TRUE(matches(u"a*b?c", u"abxbyc"));
    EXPECT_FALSE(matches(u"*ab*ab", u"aabx"));
}

TEST(NamePattern, QuestionMarkStandsForExactlyOneUnit) {
    EXPECT_TRUE(matches(u"?", u"a"));
    EXPECT_TRUE(matches(u"a?c", u"abc"));
    EXPECT_TRUE(matches(u"??", u"\U0001F600"));
    EXPECT_FALSE(matches(u"?", u""));
    EXPECT_FALSE(matches(u"a?", u"a"));
    EXPECT_FALSE(matches(u"a?", u"abc"));
    EXPECT_FALSE(matches(u"?", u"\U0001F600"));
}

TEST(NamePattern, KnowsNoOtherWildcards) {
    EXPECT_TRUE(matches(u"[ab]", u"[ab]"));
    EXPECT_FALSE(matches(u"[ab]", u"a"));
    EXPECT_FALSE(matches(u"a|b", u"a"));
    EXPECT_FALSE(matches(u"\\*", u"*"));
}

TEST(NamePattern, MatchesUnitsThatAreNoCharacters) {
    const std::u16string name{u'n', char16_t{0xDCE4}, char16_t{0xD800}};
    EXPECT_TRUE(matches(name, name));
    EXPECT_TRUE(matches(u"n??", name));
    EXPECT_TRUE(matches(u"n*", name));
}

TEST(NamePattern, TakesTheCaseOfLettersAsThePlatformsNamesDo) {
    constexpr auto windows = paths::PathStyle::windows;
    constexpr auto posix = paths::PathStyle::posix;
    for (const std::u16string pattern : {u"Name.TXT", u"*.TXT", u"n?ME.txt", u"\u00DCber*", u"\u03B4*"}) {
        const std::u16string name = pattern[0] == u'\u00DC'   ? u"\u00FCber"
                                    : pattern[0] == u'\u03B4' ? u"\u0394"
                                                              : u"name.txt";
        EXPECT_TRUE(NamePattern(pattern, windows).matches(name));
        EXPECT_FALSE(NamePattern(pattern, posix).matches(name));
    }
    EXPECT_FALSE(NamePattern(u"*.TXT", windows).matches(u"name.text"));
    EXPECT_EQ(NamePattern(u"A").matches(u"a"), paths::nativeStyle == windows);
}

TEST(NamePattern, TellsWhatItIs) {
    EXPECT_TRUE(NamePattern(u"").matchesEverything());
    EXPECT_TRUE(NamePattern(u"*").matchesEverything());
    EXPECT_FALSE(NamePattern(u"?").matchesEverything());
    EXPECT_TRUE(NamePattern(u"a?").hasWildcard());
    EXPECT_TRUE(NamePattern(u"*").hasWildcard());
    EXPECT_FALSE(NamePattern(u"").hasWildcard());
    EXPECT_FALSE(NamePattern(u"[a]").hasWildcard());
}

TEST(NamePattern, ManyStarsDoNotMakeALongNameExpensive) {
    std::u16string pattern;
    for (int star = 0; star < 100; ++star)
        pattern += u"*a";
    EXPECT_TRUE(matches(pattern, std::u16string(5000, u'a')));
    EXPECT_FALSE(matches(pattern + u"b", std::u16string(5000, u'a')));
}

}  // namespace
}  // namespace korvex::runtime::storage
