// 16-bit text in JSON documents.
//
// A JSON string holds what UTF-8 can hold. File names may hold more: a byte that is no valid UTF-8 reads as
// an unpaired surrogate. So a text with unpaired surrogates becomes an array of its pieces in order: strings,
// and the number of each unpaired unit. Any other text is a plain string.
//
//     "/home/ann"                      the text /home/ann
//     ["/home/caf", 56553, "/x"]       the text /home/caf, the unit 0xDCE9, /x
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace korvex::runtime::configuration {

/// Never fails; `fromJson` gives exactly the same text back.
nlohmann::json toJson(std::u16string_view text);

/// Nothing when the value is no text.
std::optional<std::u16string> fromJson(const nlohmann::json& value);

}  // namespace korvex::runtime::configuration
