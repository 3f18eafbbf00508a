// Ordering and equality of texts, with and without case.
#include <gtest/gtest.h>

#include <string_view>

#include "platform/message_catalog.h"

namespace {

using fl::i18n::detail::case_insensitive;
using fl::i18n::detail::case_sensitive;
using fl::i18n::detail::CaseSensitivity;

int compared(std::u16string_view a, std::u16string_view b, CaseSensitivity sensitivity) {
    return fl::i18n::detail::compare(a.data(), a.size(), b.data(), b.size(), sensitivity);
}

TEST(TextComparison, WithoutCaseLettersOfAnyScriptAreEqual) {
    EXPECT_EQ(compared(u"README.TXT", u"readme.txt", case_insensitive), 0);
    EXPECT_EQ(compared(u"\u00C4\u00D6\u00DC", u"\u00E4\u00F6\u00FC", case_insensitive), 0);
    EXPECT_EQ(compared(u"\u03A3\u0391\u03A3", u"\u03C3\u03B1\u03C2", case_insensitive), 0);
    EXPECT_EQ(compared(u"\U00010400", u"\U00010428", case_insensitive), 0);
}

TEST(TextComparison, FoldingIsUnicodesDefaultOne) {
    EXPECT_EQ(compared(u"stra\u00DFe", u"STRASSE", case_insensitive), 0);
    EXPECT_EQ(compared(u"I", u"i", case_insensitive), 0);
    EXPECT_NE(compared(u"\u0130", u"i", case_insensitive), 0);
}

TEST(TextComparison, WithCaseEveryUnitCounts) {
    EXPECT_EQ(compared(u"same", u"same", case_sensitive), 0);
    EXPECT_NE(compared(u"Same", u"same", case_sensitive), 0);
    EXPECT_LT(compared(u"Z", u"a", case_sensitive), 0);
    EXPECT_GT(compared(u"\uFFFF", u"\xD800\xDC00", case_sensitive), 0);
}

TEST(TextComparison, AShorterTextComesFirst) {
    for (const CaseSensitivity sensitivity : {case_sensitive, case_insensitive}) {
        EXPECT_LT(compared(u"ab", u"abc", sensitivity), 0);
        EXPECT_GT(compared(u"abc", u"ab", sensitivity), 0);
    }
}

TEST(TextComparison, AnEmptyTextMayHaveNoAddress) {
    for (const CaseSensitivity sensitivity : {case_sensitive, case_insensitive}) {
        EXPECT_EQ(compared({}, {}, sensitivity), 0);
        EXPECT_LT(compared({}, u"a", sensitivity), 0);
        EXPECT_GT(compared(u"a", {}, sensitivity), 0);
    }
}

TEST(TextComparison, UnpairedSurrogatesAndNulAreUnitsLikeOthers) {
    using namespace std::string_view_literals;
    EXPECT_NE(compared(u"a\xDCFF", u"a\xDCFE", case_insensitive), 0);
    EXPECT_EQ(compared(u"A\xDCFF", u"a\xDCFF", case_insensitive), 0);
    EXPECT_NE(compared(u"a\0b"sv, u"a\0c"sv, case_insensitive), 0);
}

}  // namespace
