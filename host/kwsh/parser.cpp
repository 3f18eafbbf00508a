// A recursive-descent parser; the lexer bounds how deep brackets nest.
#include "host/kwsh/parser.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

namespace korvex::host {
namespace {

std::string narrowName(const Token& token) { return std::string(token.text.begin(), token.text.end()); }

class Parser {
public:
    explicit Parser(const std::vector<Token>& tokens) : tokens_(tokens) {}

    Statement parse() {
        if (isAssignment()) {
            Assignment assignment;
            assignment.targets = parseTargets();
            take();
            assignment.value = parseExpression();
            requireEnd();
            return assignment;
        }
        Expression shown = parseExpression();
        if (isAt(u'=')) {
            throw syntaxError(u"only a whole variable can be set, by its name.", peek().position);
        }
        requireEnd();
        return shown;
    }

private:
    // ------------------------------------------------------------------------------------- tokens

    const Token& peek(std::size_t ahead = 0) const {
        return tokens_[std::min(at_ + ahead, tokens_.size() - 1)];
    }
    const Token& take() { return tokens_[at_ + 1 < tokens_.size() ? at_++ : at_]; }
    static bool isSymbol(const Token& token, char16_t symbol) {
        return token.kind == TokenKind::symbol && token.text[0] == symbol;
    }
    bool isAt(char16_t symbol) const { return isSymbol(peek(), symbol); }

    [[noreturn]] void raiseUnexpected(std::u16string_view wanted) const {
        const Token& token = peek();
        if (token.kind == TokenKind::end) {
            throw syntaxError(u"the statement ends where " + std::u16string(wanted) + u" is needed.",
                              token.position);
        }
        constexpr std::u16string_view arithmetic = u"+-*/^<>&|";
        if (token.kind == TokenKind::symbol && arithmetic.find(token.text[0]) != std::u16string_view::npos) {
            throw syntaxError(u"there is no arithmetic here, so '" + token.text + u"' has no meaning.",
                              token.position);
        }
        throw syntaxError(std::u16string(wanted) + u" is needed here.", token.position);
    }

    void requireEnd() const {
        if (peek().kind != TokenKind::end) raiseUnexpected(u"the end of the statement");
    }

    // --------------------------------------------------------------------------------- assignments

    bool isAssignment() const {
        if (peek().kind == TokenKind::name) return isSymbol(peek(1), u'=');
        if (!isAt(u'[')) return false;
        std::size_t ahead = 1;
        while (peek(ahead).kind != TokenKind::end && !isSymbol(peek(ahead), u']'))
            ++ahead;
        return isSymbol(peek(ahead + 1), u'=');
    }

    std::vector<std::optional<std::string>> parseTargets() {
        std::vector<std::optional<std::string>> targets;
        if (!isAt(u'[')) {
            targets.emplace_back(narrowName(take()));
            return targets;
        }
        take();
        do {
            if (isAt(u'~')) {
                take();
                targets.emplace_back(std::nullopt);
            } else if (peek().kind == TokenKind::name) {
                targets.emplace_back(narrowName(take()));
            } else {
                raiseUnexpected(u"the name of a variable or '~'");
            }
        } while (hasNextElement(u']'));
        take();
        return targets;
    }

    /// Goes over what separates two elements inside of brackets. False in front of what ends the row; a comma
    /// there changes nothing.
    bool hasNextElement(char16_t closing) {
        const bool isBehindComma = isAt(u',');
        if (isBehindComma) take();
        if (isAt(closing) || isAt(u';') || peek().kind == TokenKind::rowEnd) return false;
        if (!isBehindComma && !peek().isAfterBlank)
            raiseUnexpected(u"a blank, ',', ';' or '" + std::u16string(1, closing) + u"'");
        return true;
    }

    // --------------------------------------------------------------------------------- expressions

    Expression parseExpression() {
        const Token& token = peek();
        switch (token.kind) {
            case TokenKind::number: return {NumberLiteral{take().number}};
            case TokenKind::charText: return {CharLiteral{take().text}};
            case TokenKind::stringText: return {StringLiteral{take().text}};
            case TokenKind::name: return {parseReference()};
            case TokenKind::symbol: return parseSymbol();
            default: raiseUnexpected(u"a value");
        }
    }

    Expression parseSymbol() {
        if (isAt(u'[') || isAt(u'{')) return {parseArray()};
        if (isAt(u'(')) return parseParenthesised();
        if (isAt(u'-') || isAt(u'+')) return {parseSignedNumber()};
        raiseUnexpected(u"a value");
    }

    Expression parseParenthesised() {
        take();
        const bool outer = std::exchange(blanksSeparate_, false);
        Expression inner = parseExpression();
        blanksSeparate_ = outer;
        if (!isAt(u')')) raiseUnexpected(u"')'");
        take();
        return inner;
    }

    NumberLiteral parseSignedNumber() {
        const double sign = isSymbol(peek(), u'-') ? -1 : 1;
        const Token& number = peek(1);
        if (number.isAfterBlank) raiseUnexpected(u"a value");
        double value = number.number;
        if (number.kind == TokenKind::name && number.text == u"Inf") {
            value = std::numeric_limits<double>::infinity();
        } else if (number.kind == TokenKind::name && number.text == u"NaN") {
            value = std::numeric_limits<double>::quiet_NaN();
        } else if (number.kind != TokenKind::number) {
            raiseUnexpected(u"a value");
        }
        take();
        take();
        return {sign * value};
    }

    ArrayLiteral parseArray() {
        ArrayLiteral array;
        array.isCell = isAt(u'{');
        const char16_t closing = array.isCell ? u'}' : u']';
        take();
        const bool outer = std::exchange(blanksSeparate_, true);
        while (!isAt(closing)) {
            if (isAt(u';') || peek().kind == TokenKind::rowEnd) {
                take();
            } else {
                array.rows.push_back(parseRow(closing));
            }
        }
        blanksSeparate_ = outer;
        take();
        return array;
    }

    std::vector<Expression> parseRow(char16_t closing) {
        std::vector<Expression> row;
        do {
            row.push_back(parseExpression());
        } while (hasNextElement(closing));
        return row;
    }

    // ---------------------------------------------------------------------------------- references

    Reference parseReference() {
        Reference reference{narrowName(take()), {}};
        while (!(blanksSeparate_ && peek().isAfterBlank)) {
            if (isAt(u'(')) {
                reference.accesses.push_back({AccessKind::parentheses, parseArguments(u')'), {}});
            } else if (isAt(u'{')) {
                reference.accesses.push_back({AccessKind::braces, parseArguments(u'}'), {}});
            } else if (isAt(u'.')) {
                reference.accesses.push_back({AccessKind::field, {}, parseField()});
            } else {
                break;
            }
        }
        return reference;
    }

    std::vector<Expression> parseArguments(char16_t closing) {
        take();
        std::vector<Expression> arguments;
        const bool outer = std::exchange(blanksSeparate_, false);
        while (!isAt(closing)) {
            if (!arguments.empty()) {
                if (!isAt(u',')) raiseUnexpected(u"',' or '" + std::u16string(1, closing) + u"'");
                take();
            }
            arguments.push_back(parseExpression());
        }
        blanksSeparate_ = outer;
        take();
        return arguments;
    }

    std::string parseField() {
        take();
        if (peek().kind != TokenKind::name || peek().isAfterBlank) raiseUnexpected(u"the name of a field");
        return narrowName(take());
    }

    const std::vector<Token>& tokens_;
    std::size_t at_ = 0;
    bool blanksSeparate_ = false;
};

}  // namespace

Statement parseStatement(const std::vector<Token>& tokens) { return Parser(tokens).parse(); }

}  // namespace korvex::host
