// Texts as strings, or as arrays of strings and units.
#include "runtime/configuration/json_text.h"

#include <cstdint>

#include "runtime/text/encoding.h"

namespace korvex::runtime::configuration {

using nlohmann::json;

namespace {

bool isHighSurrogate(char16_t unit) noexcept { return (unit & 0xFC00) == 0xD800; }
bool isLowSurrogate(char16_t unit) noexcept { return (unit & 0xFC00) == 0xDC00; }

/// Units from the start up to the first unpaired surrogate, or all.
std::size_t lengthOfWellFormed(std::u16string_view text) noexcept {
    std::size_t position = 0;
    while (position < text.size()) {
        const char16_t unit = text[position];
        const bool isPair =
            isHighSurrogate(unit) && position + 1 < text.size() && isLowSurrogate(text[position + 1]);
        if (!isPair && (isHighSurrogate(unit) || isLowSurrogate(unit))) break;
        position += isPair ? 2 : 1;
    }
    return position;
}

bool isUnit(const json& value) noexcept {
    return value.is_number_unsigned() && value.get<std::uint64_t>() <= 0xFFFF;
}

}  // namespace

json toJson(std::u16string_view text) {
    std::size_t wellFormed = lengthOfWellFormed(text);
    if (wellFormed == text.size()) return text::toDisplayBytes(text);
    json pieces = json::array();
    for (;;) {
        if (wellFormed > 0) pieces.push_back(text::toDisplayBytes(text.substr(0, wellFormed)));
        if (wellFormed == text.size()) return pieces;
        pieces.push_back(static_cast<std::uint16_t>(text[wellFormed]));
        text.remove_prefix(wellFormed + 1);
        wellFormed = lengthOfWellFormed(text);
    }
}

std::optional<std::u16string> fromJson(const json& value) {
    if (value.is_string()) return text::fromBytes(value.get_ref<const std::string&>());
    if (!value.is_array()) return std::nullopt;
    std::u16string text;
    for (const json& piece : value) {
        if (piece.is_string()) {
            text += text::fromBytes(piece.get_ref<const std::string&>());
        } else if (isUnit(piece)) {
            text += static_cast<char16_t>(piece.get<std::uint16_t>());
        } else {
            return std::nullopt;
        }
    }
    return text;
}

}  // namespace korvex::runtime::configuration
