// Cuts a stream of lines into statements.
//
// A statement ends with its line, `;` or `,`, outside of brackets and quotes. Inside of [ ] and { } a line
// end begins the next row, inside of ( ) a line goes on behind a comma. `...` continues any line, and what
// stands behind it is a comment, as behind `%`. Two forms are read here and not as expressions:
//
//   name word 'two words'   a command's name, a blank, and something that is neither ( nor = : words up to
//   the
//                           end of the statement. A quote, ' or ", keeps blanks and separators; doubled
//                           inside it is itself. Brackets that close keep separators. `%` behind a blank
//                           starts a comment.
//   !command                everything up to the end of the line is for the system's shell.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "host/kwsh/line_buffer.h"
#include "host/kwsh/statement.h"

namespace korvex::host {

struct CommandWords {
    std::string name;
    std::vector<std::u16string> words;
};

struct ShellCommand {
    std::u16string command;
};

struct SourceStatement {
    std::size_t line = 1;
    /// As typed, without what separates it from the next one and without a comment behind it.
    std::u16string text;
    /// The same with its `;` and the comment behind it.
    std::u16string typedText;
    bool isDisplaySuppressed = false;
    /// A failure when the statement cannot be read.
    std::variant<std::vector<Token>, CommandWords, ShellCommand, Failure> content;
};

/// A line without a statement: empty, or a comment.
struct PlainLine {
    std::u16string text;
};

using ScriptItem = std::variant<SourceStatement, PlainLine>;

class StatementReader {
public:
    using CommandTest = std::function<bool(std::string_view name)>;

    StatementReader(LineSource& lines, CommandTest isCommand);

    /// The next statement or plain line; nothing at the end. Asks for a line only when it needs one.
    std::optional<ScriptItem> next();

    /// Forgets what is left of the present line, and of a statement that was begun.
    void dropLine();

private:
    SourceStatement readStatement();
    void readContent(SourceStatement& statement, std::size_t begin);
    bool isCommandForm(std::string_view name) const;
    void finish(SourceStatement& statement, std::size_t begin, std::size_t end);

    LineBuffer source_;
    CommandTest isCommand_;
};

/// The tokens of the statement at the present place, an `end` token behind them. Stops in front of what ends
/// the statement. Raises the syntax error.
std::vector<Token> readTokens(LineBuffer& source);

/// The words up to the end of the statement. Raises the syntax error.
std::vector<std::u16string> readWords(LineBuffer& source);

}  // namespace korvex::host
