// Typed bytes as characters.
#include "host/kwsh/typed_characters.h"

#include <gmock/gmock.h>

namespace korvex::host {
namespace {

using testing::ElementsAre;

std::vector<std::uint32_t> charactersTyped(std::string_view bytes) {
    TypedCharacters typed;
    std::vector<std::uint32_t> characters;
    for (const char byte : bytes) {
        typed.add(byte);
        while (const std::optional<char32_t> character = typed.take())
            characters.push_back(*character);
    }
    return characters;
}

TEST(TypedCharacters, ACharacterIsThereWithItsLastByte) {
    EXPECT_THAT(charactersTyped("a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"),
                ElementsAre('a', 0xE4, 0x20AC, 0x1F600));
    TypedCharacters typed;
    typed.add('\xC3');
    EXPECT_EQ(typed.take(), std::nullopt);
}

TEST(TypedCharacters, BytesThatAreNoTextAreUnitsOfTheirOwn) {
    EXPECT_THAT(charactersTyped("\xFF"
                                "a"),
                ElementsAre(0xDCFF, 'a'));
    EXPECT_THAT(charactersTyped("\xC3"
                                "a"),
                ElementsAre(0xDCC3, 'a'));
    EXPECT_THAT(charactersTyped("\xE2\x82\n"), ElementsAre(0xDCE2, 0xDC82, '\n'));
}

TEST(TypedCharacters, CharactersBecomeTheTextThatTheBytesAre) {
    const std::u32string characters = {U'a', 0xDCFF, 0x20AC, 0x1F480};
    const std::u16string units = {u'a', 0xDCFF, 0x20AC, 0xD83D, 0xDC80};
    EXPECT_EQ(textOf(characters), units);
    EXPECT_EQ(charactersOf(units), characters);
}

}  // namespace
}  // namespace korvex::host
