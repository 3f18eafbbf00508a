// How wide text is on a terminal, and how it is laid out in lines and columns.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::host {

/// Places on the screen: a surrogate pair is one character, ideographs and pictures take two places, marks
/// that combine take none.
std::size_t widthOf(std::u16string_view text) noexcept;

/// The longest beginning, or end, that is at most `columns` wide; no character is cut.
std::u16string_view beginThatFits(std::u16string_view text, std::size_t columns) noexcept;
std::u16string_view endThatFits(std::u16string_view text, std::size_t columns) noexcept;

/// The words of the text in lines of at most `columns`; a wider word stands in a line of its own. At least
/// one line.
std::vector<std::u16string> wrapped(std::u16string_view text, std::size_t columns);

/// The texts in as many columns as fit, running down, each line with its end.
std::u16string inColumns(const std::vector<std::u16string>& texts, std::size_t columns);

}  // namespace korvex::host
