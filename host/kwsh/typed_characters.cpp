// Units to characters and back.
#include "host/kwsh/typed_characters.h"

namespace korvex::host {
namespace {

constexpr char32_t firstOfPairs = 0x10000;

bool isPair(std::u16string_view units) {
    return units.size() > 1 && units[0] >= 0xD800 && units[0] <= 0xDBFF && units[1] >= 0xDC00 &&
           units[1] <= 0xDFFF;
}

char32_t firstCharacter(std::u16string_view text) {
    if (!isPair(text)) return text[0];
    return firstOfPairs + ((char32_t{text[0]} - 0xD800) << 10) + (char32_t{text[1]} - 0xDC00);
}

}  // namespace

void TypedCharacters::add(char byte) { units_ += bytes_.complete({&byte, 1}); }

std::optional<char32_t> TypedCharacters::take() {
    if (units_.empty()) return std::nullopt;
    const char32_t character = firstCharacter(units_);
    units_.erase(0, character < firstOfPairs ? 1 : 2);
    return character;
}

std::u32string charactersOf(std::u16string_view text) {
    std::u32string characters;
    while (!text.empty()) {
        characters += firstCharacter(text);
        text.remove_prefix(characters.back() < firstOfPairs ? 1 : 2);
    }
    return characters;
}

std::u16string textOf(std::u32string_view characters) {
    std::u16string text;
    for (const char32_t character : characters) {
        if (character < firstOfPairs) {
            text += static_cast<char16_t>(character);
        } else {
            text += static_cast<char16_t>(0xD800 + ((character - firstOfPairs) >> 10));
            text += static_cast<char16_t>(0xDC00 + ((character - firstOfPairs) & 0x3FF));
        }
    }
    return text;
}

}  // namespace korvex::host
