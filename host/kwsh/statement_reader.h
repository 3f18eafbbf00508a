// Cuts a stream of lines into statements.
//
// A statement ends with its line, `;` or `,`, outside of brackets and quotes, and in front of `end`. Inside
// of [ ] and { } a line end begins the next row, inside of ( ) a line goes on behind a comma, && and ||.
// `...` continues any line, and what stands behind it is a comment, as behind `%`. Three forms are read here
// and not as expressions:
//
//   name word 'two words'   a command's name, a blank, and something that is neither ( nor = nor an operator
//                           with a blank behind it: words up to the end of the statement. A quote, ' or ",
//                           keeps blanks and separators; doubled inside it is itself. Brackets that close
//                           keep separators. `%` behind a blank starts a comment.
//   !command                everything up to the end of the line is for the system's shell.
//   if, for, try ... end    a block: one statement that is made of others. It is read to its end before
//                           anything in it is run, so that a mistake in it leaves everything as it is.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "host/kwsh/line_buffer.h"
#include "host/kwsh/statement.h"

namespace korvex::host {

struct BlockStatement;

struct CommandWords {
    std::string name;
    std::vector<std::u16string> words;
};

struct ShellCommand {
    std::u16string command;
};

/// One of the words that blocks are made of, with what belongs to it.
struct BlockPart {
    BlockWord word = BlockWord::endWord;
    Position position;
    std::vector<Token> tokens;
    /// What is wrong with the tokens, where they cannot be read.
    std::optional<Failure> failure;
};

struct SourceStatement {
    std::size_t line = 1;
    /// As typed, without what separates it from the next one and without a comment behind it.
    std::u16string text;
    /// The same with its `;` and the comment behind it.
    std::u16string typedText;
    bool isDisplaySuppressed = false;
    /// A failure when the statement cannot be read. A part stands for itself only inside of a block.
    std::variant<std::vector<Token>, CommandWords, ShellCommand, Failure, BlockPart,
                 std::shared_ptr<const BlockStatement>>
        content;
};

/// Whether it is a part of a block, as `if x`, and no statement of its own.
bool isBlockHead(const SourceStatement& statement);

/// A line without a statement: empty, or a comment. Those inside of a block belong to it.
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
    /// Where a statement stands in the text that is there, without and with what `typedText` has more.
    struct Extent {
        std::size_t begin = 0;
        std::size_t end = 0;
        std::size_t typedEnd = 0;
    };

    std::optional<ScriptItem> nextItem(bool isInsideBlock);
    SourceStatement readBlock(SourceStatement head);
    SourceStatement readStatement(bool isInsideBlock);
    void readContent(SourceStatement& statement);
    BlockPart readPart(BlockWord word, const Position& position);
    /// Behind what cannot be read in a block, to where the line may go on, so that an `end` there is seen.
    void skipBrokenStatement();
    std::size_t blanksHere() const;
    bool isAssigned() const;
    bool isCommandForm(std::string_view name) const;
    bool isAtOperator(std::size_t ahead) const;
    void finish(SourceStatement& statement);
    void setTexts(SourceStatement& statement, const Extent& extent) const;

    LineBuffer source_;
    CommandTest isCommand_;
    /// Of the statement that was read last.
    Extent extent_;
};

/// The tokens of the statement at the present place, an `end` token behind them. Stops in front of what ends
/// the statement. Raises the syntax error.
std::vector<Token> readTokens(LineBuffer& source);

/// The words up to the end of the statement. Raises the syntax error.
std::vector<std::u16string> readWords(LineBuffer& source);

}  // namespace korvex::host
