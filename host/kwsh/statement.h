// Statements on their way from text to action: tokens, and the syntax tree that the parser makes of them.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "host/kwsh/failure.h"

namespace korvex::host {

/// Line and column in a script, both from 1, columns in 16-bit units.
struct Position {
    std::size_t line = 1;
    std::size_t column = 1;
};
/// The error of a statement that cannot be read: "KORVEX:host:syntax".
HostError syntaxError(const resource_core::BaseMsgID& message, const Position& position);

/// The words that blocks are made of. They are no names of variables.
enum class BlockWord { ifWord, elseifWord, elseWord, forWord, tryWord, catchWord, endWord };

struct SpelledBlockWord {
    std::string_view spelling;
    BlockWord word;
};
inline constexpr std::array blockWords = {
    SpelledBlockWord{"if", BlockWord::ifWord},     SpelledBlockWord{"elseif", BlockWord::elseifWord},
    SpelledBlockWord{"else", BlockWord::elseWord}, SpelledBlockWord{"for", BlockWord::forWord},
    SpelledBlockWord{"try", BlockWord::tryWord},   SpelledBlockWord{"catch", BlockWord::catchWord},
    SpelledBlockWord{"end", BlockWord::endWord},
};
/// Nothing for any other name.
constexpr std::optional<BlockWord> blockWordOf(std::string_view name) {
    for (const SpelledBlockWord& candidate : blockWords) {
        if (candidate.spelling == name) return candidate.word;
    }
    return std::nullopt;
}

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

/// ~x, and the signs of the names Inf and NaN.
struct Prefix {
    char16_t sign = u'~';
    std::unique_ptr<Expression> operand;
};

enum class Operator { equal, notEqual, less, lessOrEqual, greater, greaterOrEqual, bothTrue, eitherTrue };

struct SpelledOperator {
    std::u16string_view spelling;
    Operator meaning;
};
inline constexpr std::array operators = {
    SpelledOperator{u"==", Operator::equal},    SpelledOperator{u"~=", Operator::notEqual},
    SpelledOperator{u"<", Operator::less},      SpelledOperator{u"<=", Operator::lessOrEqual},
    SpelledOperator{u">", Operator::greater},   SpelledOperator{u">=", Operator::greaterOrEqual},
    SpelledOperator{u"&&", Operator::bothTrue}, SpelledOperator{u"||", Operator::eitherTrue},
};
constexpr std::u16string_view spellingOf(Operator meaning) {
    return operators[static_cast<std::size_t>(meaning)].spelling;
}

/// Operands with operators of one rank between them, which are one fewer; taken from the left.
struct Operation {
    std::vector<Expression> operands;
    std::vector<Operator> operators;
};

struct Expression {
    std::variant<NumberLiteral, CharLiteral, StringLiteral, ArrayLiteral, Reference, Prefix, Operation>
        content;
};

/// A target without name is `~`: an output that is asked for and dropped.
struct Assignment {
    std::vector<std::optional<std::string>> targets;
    Expression value;
};

using Statement = std::variant<Assignment, Expression>;

/// Behind `for`: the variable and what it runs over.
struct LoopHead {
    std::string variable;
    Expression values;
};

}  // namespace korvex::host
