// Names and texts of completions: what there is by itself, and how a text is written.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace korvex::host {

enum class Case { counts, isIgnored };

/// Whether a text begins so; of ASCII letters the case may be ignored.
bool beginsWith(std::u16string_view text, std::u16string_view begin, Case letters);

/// The words between the blanks.
std::vector<std::u16string_view> wordsOf(std::u16string_view words);

/// Commands and functions, in the order of their names.
const std::vector<std::u16string>& calledNames();
/// What `help` knows.
const std::vector<std::u16string>& helpTopics();
/// What can be asked for of one of these.
std::vector<std::u16string> helpParts(std::u16string_view topic);
/// The words that begin a part of a block.
const std::vector<std::u16string>& blockNames();

/// Units of a path, or a location, up to and with its last separator.
std::size_t folderLength(std::u16string_view path) noexcept;
/// The separator that is written behind a folder in this one.
char16_t separatorBehind(const std::u16string& folder);

/// Whether a word behind a command's name means itself only in quotes.
bool needsQuotes(std::u16string_view word, bool isFirst) noexcept;
/// The text behind a quote, with this quote doubled inside, and with the closing one when wanted.
std::u16string quoted(std::u16string_view text, char16_t quote, bool isClosed);

}  // namespace korvex::host
