// Web locations: how a text is told to be one, and how it is made to parse.
#pragma once

#include <string>
#include <string_view>

namespace korvex::filemanip {

/// Begins with "http://" or "https://", whatever the case of the letters.
bool isHttpLocation(std::u16string_view text);

/// A text that parses as a location: `text` itself, or with a slash at its end if that is what it takes.
/// Raises `InvalidIRIException` when neither parses; a text that ends in `/` or `*` is tried as it is only.
std::u16string normalizeHttpLocation(std::u16string_view text);

}  // namespace korvex::filemanip
