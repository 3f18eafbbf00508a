// Letters and digits of the interpreter's names.
#include <gtest/gtest.h>

#include <string_view>

#include "platform/character_classes.h"

namespace {

TEST(CharacterClassesTest, LettersAreThoseOfAscii) {
    for (const char16_t letter : std::u16string_view(u"azAZmM"))
        EXPECT_TRUE(kwu_isalpha(letter) && kwu_isalnum(letter));
    for (const char16_t other : std::u16string_view(u"@[`{_-. 09äßЖ\xDC41\xFF21"))
        EXPECT_FALSE(kwu_isalpha(other));
    EXPECT_FALSE(kwu_isalpha(u'\0'));
}

TEST(CharacterClassesTest, DigitsAreThoseOfAscii) {
    for (const char16_t digit : std::u16string_view(u"059"))
        EXPECT_TRUE(kwu_isalnum(digit));
    for (const char16_t other : std::u16string_view(u"/:_²٣\xFF11"))
        EXPECT_FALSE(kwu_isalnum(other));
    EXPECT_FALSE(kwu_isalnum(u'\0'));
}

}  // namespace
