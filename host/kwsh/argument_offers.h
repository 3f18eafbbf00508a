// Which words, files or names the commands take as which argument.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::host {

enum class Offer { nothing, files, folders, sourceFiles, variables, helpTopics, helpParts, packages };

struct ArgumentOffer {
    std::string_view command;
    /// The argument right in front of it, in small letters; empty for any.
    std::u16string_view behind;
    /// Which arguments it is about, from 0.
    std::size_t first = 0;
    std::size_t last = 0;
    Offer offer = Offer::nothing;
    /// Words with blanks between them. Where files are offered, too, a word needs a beginning to be offered.
    std::u16string_view words = {};
    /// Words that are of use in brackets only, where a truth value can follow.
    std::u16string_view wordsInBrackets = {};
    /// Names that are written without quotes, and so in brackets only.
    std::u16string_view values = {};
    /// One text holds several words with blanks between them.
    bool isList = false;
};

/// The first offer that fits to what stands in front; null when nothing is known of the argument.
const ArgumentOffer* offerFor(std::string_view command,
                              const std::vector<std::optional<std::u16string>>& earlier);

}  // namespace korvex::host
