// Widths of characters in a table, and the breaking of lines.
#include "host/kwsh/text_layout.h"

#include <algorithm>
#include <array>

namespace korvex::host {
namespace {

struct CharacterRange {
    char32_t first;
    char32_t last;
};

constexpr std::array combiningMarks = {
    CharacterRange{0x0300, 0x036F}, CharacterRange{0x1AB0, 0x1AFF}, CharacterRange{0x200B, 0x200F},
    CharacterRange{0x20D0, 0x20FF}, CharacterRange{0xFE00, 0xFE0F}, CharacterRange{0xFE20, 0xFE2F},
};

constexpr std::array wideCharacters = {
    CharacterRange{0x1100, 0x115F},   CharacterRange{0x2E80, 0x303E},   CharacterRange{0x3041, 0x4DBF},
    CharacterRange{0x4E00, 0xA4CF},   CharacterRange{0xA960, 0xA97C},   CharacterRange{0xAC00, 0xD7A3},
    CharacterRange{0xF900, 0xFAFF},   CharacterRange{0xFE30, 0xFE6F},   CharacterRange{0xFF00, 0xFF60},
    CharacterRange{0xFFE0, 0xFFE6},   CharacterRange{0x1F300, 0x1F64F}, CharacterRange{0x1F680, 0x1F6FF},
    CharacterRange{0x1F900, 0x1F9FF}, CharacterRange{0x20000, 0x3FFFD},
};

template <class Ranges>
bool isIn(const Ranges& ranges, char32_t character) noexcept {
    return std::ranges::any_of(ranges, [character](const CharacterRange& range) {
        return character >= range.first && character <= range.last;
    });
}

std::size_t widthOfCharacter(char32_t character) noexcept {
    if (isIn(combiningMarks, character)) return 0;
    return isIn(wideCharacters, character) ? 2 : 1;
}

bool isFirstOfPair(char16_t unit) noexcept { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isSecondOfPair(char16_t unit) noexcept { return unit >= 0xDC00 && unit <= 0xDFFF; }

bool isPairAt(std::u16string_view text, std::size_t at) noexcept {
    return isFirstOfPair(text[at]) && at + 1 < text.size() && isSecondOfPair(text[at + 1]);
}

/// Units of the character that begins at an offset.
std::size_t unitsAt(std::u16string_view text, std::size_t at) noexcept { return isPairAt(text, at) ? 2 : 1; }

char32_t characterAt(std::u16string_view text, std::size_t at) noexcept {
    if (!isPairAt(text, at)) return text[at];
    return 0x10000 + ((char32_t{text[at]} - 0xD800) << 10) + (char32_t{text[at + 1]} - 0xDC00);
}

}  // namespace

std::size_t widthOf(std::u16string_view text) noexcept {
    std::size_t width = 0;
    for (std::size_t at = 0; at < text.size(); at += unitsAt(text, at))
        width += widthOfCharacter(characterAt(text, at));
    return width;
}

std::u16string_view beginThatFits(std::u16string_view text, std::size_t columns) noexcept {
    std::size_t width = 0;
    std::size_t end = 0;
    while (end < text.size()) {
        width += widthOfCharacter(characterAt(text, end));
        if (width > columns) break;
        end += unitsAt(text, end);
    }
    return text.substr(0, end);
}

std::u16string_view endThatFits(std::u16string_view text, std::size_t columns) noexcept {
    std::size_t left = widthOf(text);
    std::size_t begin = 0;
    while (left > columns) {
        left -= widthOfCharacter(characterAt(text, begin));
        begin += unitsAt(text, begin);
    }
    return text.substr(begin);
}

std::vector<std::u16string> wrapped(std::u16string_view text, std::size_t columns) {
    std::vector<std::u16string> lines(1);
    std::size_t begin = text.find_first_not_of(u' ');
    while (begin != std::u16string_view::npos) {
        const std::size_t end = std::min(text.find(u' ', begin), text.size());
        const std::u16string_view word = text.substr(begin, end - begin);
        if (!lines.back().empty() && widthOf(lines.back()) + 1 + widthOf(word) > columns) {
            lines.emplace_back();
        }
        if (!lines.back().empty()) lines.back() += u' ';
        lines.back() += word;
        begin = text.find_first_not_of(u' ', end);
    }
    return lines;
}

std::u16string inColumns(const std::vector<std::u16string>& texts, std::size_t columns) {
    constexpr std::size_t gap = 2;
    std::size_t widest = 0;
    for (const std::u16string& text : texts)
        widest = std::max(widest, widthOf(text));
    const std::size_t across = std::max<std::size_t>(1, (columns + gap) / (widest + gap));
    const std::size_t rows = (texts.size() + across - 1) / across;
    std::u16string lines;
    for (std::size_t row = 0; row < rows; ++row) {
        std::size_t padding = 0;
        for (std::size_t at = row; at < texts.size(); at += rows) {
            lines.append(padding, u' ');
            lines += texts[at];
            padding = widest + gap - widthOf(texts[at]);
        }
        lines += u'\n';
    }
    return lines;
}

}  // namespace korvex::host
