// Words of options, and what their matching hands back.
#include <gtest/gtest.h>

#include "platform/filesystem_core.h"

namespace korvex::io::filesystem::core {
namespace {

const std::u16string rule = u"resolvesymboliclinks";
const std::vector<std::u16string> values{u"osdefault", u"resolve", u"preserve"};

TEST(RuleNames, MatchWhateverTheCaseAndAreRewritten) {
    for (const char16_t* typed :
         {u"resolvesymboliclinks", u"ResolveSymbolicLinks", u"RESOLVESYMBOLICLINKS"}) {
        std::u16string text = typed;
        EXPECT_TRUE(validateRuleName(text, rule));
        EXPECT_EQ(text, rule);
    }
}

TEST(RuleNames, ShortenedOrOtherWordsDoNotMatchAndStay) {
    for (const char16_t* typed : {u"", u"resolve", u"resolvesymboliclink", u"resolvesymboliclinks ", u"s"}) {
        std::u16string text = typed;
        EXPECT_FALSE(validateRuleName(text, rule));
        EXPECT_EQ(text, typed);
    }
}

TEST(RuleValues, GiveTheAllowedWord) {
    std::u16string value = u"Preserve";
    EXPECT_EQ(validateRuleValues(value, values), u"preserve");
    EXPECT_EQ(value, u"preserve");
}

TEST(RuleValues, OtherWordsGiveAnEmptyTextAndStay) {
    for (const char16_t* typed : {u"", u"preserv", u"preserves", u"memory://box/"}) {
        std::u16string value = typed;
        EXPECT_EQ(validateRuleValues(value, values), u"");
        EXPECT_EQ(value, typed);
    }
    std::u16string value = u"osdefault";
    EXPECT_EQ(validateRuleValues(value, {u"preserve", u"resolve"}), u"");
}

}  // namespace
}  // namespace korvex::io::filesystem::core
