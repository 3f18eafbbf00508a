// Statements on their way from text to action: tokens, and the syntax tree that the parser makes of them.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "host/kwsh/failure.h"

namespace korvex::host {

/// Line and column in a script, both from 1, columns in 16-bit units.
struct Position {
    std::size_t line = 1;
    std::size_t column = 1;
};
/// "line 1, column 9".
std::u16string positionText(const Position& position);
/// The error of a statement that cannot be read: "KORVEX:host:syntax".
HostError syntaxError(std::u16string text, const Position& position);

enum class TokenKind { name, number, charText, stringText, symbol, rowEnd, end };

struct Token {
    TokenKind kind = TokenKind::end;
    Position position;
    bool isAfterBlank = false;  ///< a blank, a line end or nothing stands before it
    std::u16string text;        ///< name, symbol, or the text without its quotes
    double number = 0;
};

struct Expression;

struct NumberLiteral {
    double value = 0;
};
struct CharLiteral {
    std::u16string text;
};
struct StringLiteral {
    std::u16string text;
};
/// [...] or {...}, by rows.
struct ArrayLiteral {
    bool isCell = false;
    std::vector<std::vector<Expression>> rows;
};

enum class AccessKind { parentheses, braces, field };

/// What stands behind a name: (arguments), {arguments}, .field
struct Access {
    AccessKind kind = AccessKind::parentheses;
    std::vector<Expression> arguments;
    std::string field;
};

/// A variable with its indexes, or a call with its arguments: the two read alike.
struct Reference {
    std::string name;
    std::vector<Access> accesses;
};

struct Expression {
    std::variant<NumberLiteral, CharLiteral, StringLiteral, ArrayLiteral, Reference> content;
};

/// A target without name is `~`: an output that is asked for and dropped.
struct Assignment {
    std::vector<std::optional<std::string>> targets;
    Expression value;
};

using Statement = std::variant<Assignment, Expression>;

}  // namespace korvex::host
