// A recursive-descent parser; the lexer bounds how deep brackets nest, and no other rule calls itself.
#include "host/kwsh/parser.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <utility>

namespace korvex::host {
namespace {

using resource_core::BaseMsgID;

std::string narrowName(const Token& token) { return std::string(token.text.begin(), token.text.end()); }

std::optional<BlockWord> blockWordOf(const Token& token) {
    return token.kind == TokenKind::name ? host::blockWordOf(narrowName(token)) : std::nullopt;
}

constexpr std::array comparisons = {Operator::equal,       Operator::notEqual, Operator::less,
                                    Operator::lessOrEqual, Operator::greater,  Operator::greaterOrEqual};
constexpr std::array conjunctions = {Operator::bothTrue};
constexpr std::array alternatives = {Operator::eitherTrue};

struct Refusal {
    std::u16string_view symbols;
    BaseMsgID (*message)(const std::u16string& symbol);
};
/// Symbols of which a person would expect something else than that they are misplaced.
constexpr std::array refusals = {
    Refusal{u"+-*/^",
            [](const std::u16string& symbol) -> BaseMsgID { return messages::noArithmetic(symbol); }},
    Refusal{u"&|",
            [](const std::u16string& symbol) -> BaseMsgID {
                return messages::singleOperator(symbol, symbol + symbol);
            }},
    Refusal{u":", [](const std::u16string&) -> BaseMsgID { return messages::noRanges(); }},
};

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
        if (isAt(u"=")) throw syntaxError(messages::onlyWholeVariables(), peek().position);
        refuseWords();
        requireEnd();
        return shown;
    }

    Expression parseCondition() {
        Expression condition = parseExpression();
        if (isAt(u"=")) throw syntaxError(messages::equalSignIsNoComparison(), peek().position);
        if (peek().kind != TokenKind::end) raiseUnexpected(messages::nounConditionEnd());
        return condition;
    }

    LoopHead parseLoopHead() {
        if (peek().kind != TokenKind::name) raiseUnexpected(messages::nounLoopHead());
        LoopHead head;
        head.variable = takeVariable();
        if (!isAt(u"=")) raiseUnexpected(messages::nounLoopHead());
        take();
        head.values = parseExpression();
        requireEnd();
        return head;
    }

    std::optional<std::string> parseCatchHead() {
        if (peek().kind == TokenKind::end) return std::nullopt;
        if (peek().kind != TokenKind::name) raiseUnexpected(messages::nounVariable());
        std::string variable = takeVariable();
        requireEnd();
        return variable;
    }

    void requireEnd() const {
        if (peek().kind != TokenKind::end) raiseUnexpected(messages::nounStatementEnd());
    }

private:
    // ------------------------------------------------------------------------------------- tokens

    const Token& peek(std::size_t ahead = 0) const {
        return tokens_[std::min(at_ + ahead, tokens_.size() - 1)];
    }
    const Token& take() { return tokens_[at_ + 1 < tokens_.size() ? at_++ : at_]; }
    static bool isSymbol(const Token& token, std::u16string_view symbol) {
        return token.kind == TokenKind::symbol && token.text == symbol;
    }
    bool isAt(std::u16string_view symbol) const { return isSymbol(peek(), symbol); }
    bool isAt(char16_t symbol) const { return isAt(std::u16string_view(&symbol, 1)); }

    /// The symbol here is one that `refusals` knows; their end when it is none.
    auto refusalHere() const {
        const Token& token = peek();
        return std::ranges::find_if(refusals, [&](const Refusal& candidate) {
            return token.kind == TokenKind::symbol && token.text.size() == 1 &&
                   candidate.symbols.find(token.text) != std::u16string_view::npos;
        });
    }

    /// `name word` and `name -word` look like the command form of what is no command. With a blank on both
    /// sides a symbol is meant as an operator.
    void refuseWords() const {
        if (at_ != 1 || tokens_[0].kind != TokenKind::name || !peek().isAfterBlank) return;
        const TokenKind kind = peek().kind;
        const bool isWord = kind == TokenKind::name || kind == TokenKind::number ||
                            kind == TokenKind::charText || kind == TokenKind::stringText;
        if (isWord || (refusalHere() != refusals.end() && !peek(1).isAfterBlank))
            throw syntaxError(messages::wordsBehindNoCommand(tokens_[0].text), peek().position);
    }

    [[noreturn]] void raiseUnexpected(const BaseMsgID& wanted) const { raiseUnexpected(catalogText(wanted)); }

    [[noreturn]] void raiseUnexpected(const std::u16string& wanted) const {
        const Token& token = peek();
        if (token.kind == TokenKind::end) throw syntaxError(messages::neededAtEnd(wanted), token.position);
        const auto refusal = refusalHere();
        if (refusal != refusals.end()) throw syntaxError(refusal->message(token.text), token.position);
        throw syntaxError(messages::needed(wanted), token.position);
    }

    std::string takeVariable() {
        if (blockWordOf(peek())) throw syntaxError(messages::wordIsNoVariable(peek().text), peek().position);
        return narrowName(take());
    }

    // --------------------------------------------------------------------------------- assignments

    bool isAssignment() const {
        if (peek().kind == TokenKind::name) return isSymbol(peek(1), u"=");
        if (!isAt(u"[")) return false;
        std::size_t ahead = 1;
        while (peek(ahead).kind != TokenKind::end && !isSymbol(peek(ahead), u"]"))
            ++ahead;
        return isSymbol(peek(ahead + 1), u"=");
    }

    std::vector<std::optional<std::string>> parseTargets() {
        std::vector<std::optional<std::string>> targets;
        if (!isAt(u"[")) {
            targets.emplace_back(takeVariable());
            return targets;
        }
        take();
        do {
            if (isAt(u"~")) {
                take();
                targets.emplace_back(std::nullopt);
            } else if (peek().kind == TokenKind::name) {
                targets.emplace_back(takeVariable());
            } else {
                raiseUnexpected(messages::nounTarget());
            }
        } while (hasNextElement(u']'));
        take();
        return targets;
    }

    /// Goes over what separates two elements inside of brackets. False in front of what ends the row; a comma
    /// there changes nothing.
    bool hasNextElement(char16_t closing) {
        const bool isBehindComma = isAt(u",");
        if (isBehindComma) take();
        if (isAt(closing) || isAt(u";") || peek().kind == TokenKind::rowEnd) return false;
        if (!isBehindComma && !peek().isAfterBlank)
            raiseUnexpected(messages::nounElementSeparator(std::u16string(1, closing)));
        return true;
    }

    // --------------------------------------------------------------------------------- expressions

    using Rule = Expression (Parser::*)();

    Expression parseExpression() { return parseOperation(alternatives, &Parser::parseConjunction); }
    Expression parseConjunction() { return parseOperation(conjunctions, &Parser::parseComparison); }
    Expression parseComparison() { return parseOperation(comparisons, &Parser::parseOperand); }

    Expression parseOperation(std::span<const Operator> rank, Rule parseNext) {
        Expression first = (this->*parseNext)();
        std::optional<Operator> next = operatorOf(rank);
        if (!next) return first;
        Operation operation;
        operation.operands.push_back(std::move(first));
        for (; next; next = operatorOf(rank)) {
            take();
            operation.operators.push_back(*next);
            operation.operands.push_back((this->*parseNext)());
        }
        return {std::move(operation)};
    }

    /// The operator here, when it is of this rank.
    std::optional<Operator> operatorOf(std::span<const Operator> rank) const {
        if (peek().kind != TokenKind::symbol) return std::nullopt;
        const auto isHere = [this](Operator candidate) { return isAt(spellingOf(candidate)); };
        const auto found = std::ranges::find_if(rank, isHere);
        return found == rank.end() ? std::nullopt : std::optional(*found);
    }

    /// However many ~ stand here, one or two do the same.
    Expression parseOperand() {
        std::size_t negations = 0;
        for (; isAt(u"~"); take())
            ++negations;
        Expression operand = parseValue();
        for (std::size_t left = negations == 0 ? 0 : 2 - negations % 2; left > 0; --left)
            operand = prefixed(u'~', std::move(operand));
        return operand;
    }

    static Expression prefixed(char16_t sign, Expression operand) {
        return {Prefix{sign, std::make_unique<Expression>(std::move(operand))}};
    }

    Expression parseValue() {
        const Token& token = peek();
        switch (token.kind) {
            case TokenKind::number: return {NumberLiteral{take().number}};
            case TokenKind::charText: return {CharLiteral{take().text}};
            case TokenKind::stringText: return {StringLiteral{take().text}};
            case TokenKind::name: return {parseReference()};
            case TokenKind::symbol: return parseSymbol();
            default: raiseUnexpected(messages::nounValue());
        }
    }

    Expression parseSymbol() {
        if (isAt(u"[") || isAt(u"{")) return {parseArray()};
        if (isAt(u"(")) return parseParenthesised();
        if (isAt(u"-") || isAt(u"+")) return parseSigned();
        raiseUnexpected(messages::nounValue());
    }

    Expression parseParenthesised() {
        take();
        const bool outer = std::exchange(blanksSeparate_, false);
        Expression inner = parseExpression();
        blanksSeparate_ = outer;
        if (!isAt(u")")) raiseUnexpected(u"')'");
        take();
        return inner;
    }

    /// A number, or one of the names that are numbers: a variable may hide these.
    Expression parseSigned() {
        const Token& operand = peek(1);
        const bool isNamed =
            operand.kind == TokenKind::name && (operand.text == u"Inf" || operand.text == u"NaN");
        if (operand.isAfterBlank || !(isNamed || operand.kind == TokenKind::number))
            raiseUnexpected(messages::nounValue());
        const char16_t sign = take().text[0];
        if (isNamed) return prefixed(sign, {Reference{narrowName(take()), {}}});
        return {NumberLiteral{sign == u'-' ? -take().number : take().number}};
    }

    ArrayLiteral parseArray() {
        ArrayLiteral array;
        array.isCell = isAt(u"{");
        const char16_t closing = array.isCell ? u'}' : u']';
        take();
        const bool outer = std::exchange(blanksSeparate_, true);
        while (!isAt(closing)) {
            if (isAt(u";") || peek().kind == TokenKind::rowEnd) {
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
        if (blockWordOf(peek())) throw syntaxError(messages::wordIsNoValue(peek().text), peek().position);
        Reference reference{narrowName(take()), {}};
        while (!(blanksSeparate_ && peek().isAfterBlank)) {
            if (isAt(u"(")) {
                reference.accesses.push_back({AccessKind::parentheses, parseArguments(u')'), {}});
            } else if (isAt(u"{")) {
                reference.accesses.push_back({AccessKind::braces, parseArguments(u'}'), {}});
            } else if (isAt(u".")) {
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
                if (!isAt(u",")) raiseUnexpected(messages::nounArgumentSeparator(std::u16string(1, closing)));
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
        if (peek().kind != TokenKind::name || peek().isAfterBlank) raiseUnexpected(messages::nounField());
        return narrowName(take());
    }

    const std::vector<Token>& tokens_;
    std::size_t at_ = 0;
    bool blanksSeparate_ = false;
};

}  // namespace

Statement parseStatement(const std::vector<Token>& tokens) { return Parser(tokens).parse(); }

Expression parseCondition(const std::vector<Token>& tokens) { return Parser(tokens).parseCondition(); }

LoopHead parseLoopHead(const std::vector<Token>& tokens) { return Parser(tokens).parseLoopHead(); }

std::optional<std::string> parseCatchHead(const std::vector<Token>& tokens) {
    return Parser(tokens).parseCatchHead();
}

void requireNothing(const std::vector<Token>& tokens) { Parser(tokens).requireEnd(); }

}  // namespace korvex::host
