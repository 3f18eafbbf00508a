// What is being typed at the cursor: a name, or a text and which argument of which command it is.
//
// The statements are read as the statement reader reads them, but what is not finished is no error.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::host {

/// How an argument is written where the cursor is.
enum class ArgumentForm {
    bare,    ///< in an expression, without a quote so far
    quoted,  ///< in an expression, behind its opening quote
    word,    ///< behind a command's name, as in `copyfile a b`
};

struct CompletionPlace {
    ArgumentForm form = ArgumentForm::bare;
    /// Where it begins, its opening quote included, in the text that was looked at.
    std::size_t begin = 0;
    /// What is typed of it, without quotes.
    std::u16string typed;
    /// The quote that is open at the cursor; 0 when there is none.
    char16_t quote = u'\0';
    /// Whose argument it is; empty where it is none, or only a part of one.
    std::string command;
    /// The arguments in front of it; nothing for one that is no plain text.
    std::vector<std::optional<std::u16string>> earlier;
    /// Whether nothing of the statement stands in front of it.
    bool isStatementBegin = false;
};

/// What ends at the end of `text`: the lines of a statement up to the cursor, with line feeds between them.
/// Nothing in comments, in commands of the system's shell, and where no name or argument can begin.
/// `isCommand` tells names that have the command form.
std::optional<CompletionPlace> placeAtEnd(std::u16string_view text,
                                          const std::function<bool(std::string_view)>& isCommand);

}  // namespace korvex::host
