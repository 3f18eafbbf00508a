// Inside of one statement: tokens of expressions, words of the command form.
#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

#include "host/kwsh/statement_reader.h"
#include "runtime/interpreter/structure_display.h"

namespace korvex::host {
namespace {

/// Brackets of texts nested deeper than a person would write them; bounds the recursion of what comes later.
constexpr std::size_t deepestNesting = 100;

constexpr std::u16string_view symbols = u"()[]{},;=.~+-*/^<>&|:@";

/// The quoted text here, without its quotes; a doubled quote stands for one.
std::u16string takeQuotedText(LineBuffer& source) {
    const Position begin = source.position();
    const char16_t quote = source.unit();
    std::u16string text;
    for (source.advance();; source.advance()) {
        if (source.isAtEnd()) {
            throw syntaxError(messages::textNotClosed(std::u16string(1, quote)), begin);
        }
        if (source.unit() == quote) {
            if (source.unit(1) != quote) break;
            source.advance();
        }
        text += source.unit();
    }
    source.advance();
    return text;
}

void takeDigits(LineBuffer& source, std::string& digits) {
    for (; isDigit(source.unit()); source.advance())
        digits += static_cast<char>(source.unit());
}

/// Digits, a fraction, an exponent. A point that begins `...` is not the number's.
double takeNumber(LineBuffer& source) {
    const Position begin = source.position();
    std::string digits;
    takeDigits(source, digits);
    if (source.unit() == u'.' && source.unit(1) != u'.') {
        digits += '.';
        source.advance();
        takeDigits(source, digits);
    }
    if (source.unit() == u'e' || source.unit() == u'E') {
        const bool hasSign = source.unit(1) == u'+' || source.unit(1) == u'-';
        if (isDigit(source.unit(hasSign ? 2 : 1))) {
            digits += 'e';
            if (source.unit(1) == u'-') digits += '-';
            source.advance(hasSign ? 2 : 1);
            takeDigits(source, digits);
        }
    }
    double number = 0;
    const std::from_chars_result result =
        std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (result.ec != std::errc() || result.ptr != digits.data() + digits.size() ||
        isNameUnit(source.unit())) {
        throw syntaxError(messages::numberNotReadable(), begin);
    }
    return number;
}

class Lexer {
public:
    explicit Lexer(LineBuffer& source) : source_(source) {}

    std::vector<Token> read() {
        while (prepareToken())
            readToken();
        next_.kind = TokenKind::end;
        tokens_.push_back(std::move(next_));
        return std::move(tokens_);
    }

private:
    struct Bracket {
        char16_t opening;
        Position position;
    };

    /// Goes to the next token and sets what is known before it is read. False at the end of the statement.
    bool prepareToken() {
        next_ = Token();
        next_.isAfterBlank = tokens_.empty();
        for (;;) {
            if (source_.skipBlanks()) next_.isAfterBlank = true;
            next_.position = source_.position();
            if (source_.isAtContinuationMark()) {
                source_.followContinuationMark();
                next_.isAfterBlank = true;
            } else if (source_.unit() == u'%' && !brackets_.empty()) {
                source_.skipToEnd();
            } else if (source_.isAtEnd() && !brackets_.empty()) {
                goToNextLine();
            } else {
                return !source_.isAtEnd() && source_.unit() != u'%' && !isAtSeparator() && !isAtBlockEnd();
            }
        }
    }

    bool isAtSeparator() const {
        return brackets_.empty() && (source_.unit() == u';' || source_.unit() == u',');
    }

    /// `end` needs no separator in front, so that a block closes where it is written down.
    bool isAtBlockEnd() const {
        if (!brackets_.empty() || tokens_.empty() || tokens_.back().text == u".") return false;
        return source_.unit() == u'e' && source_.unit(1) == u'n' && source_.unit(2) == u'd' &&
               !isNameUnit(source_.unit(3));
    }

    /// Behind the end of the line that is reached inside of brackets. In ( ) only a comma and what connects
    /// conditions promise more.
    void goToNextLine() {
        const Bracket& innermost = brackets_.back();
        const bool isRow = innermost.opening != u'(';
        if (!(isRow || isMorePromised()) || !source_.continueLine()) {
            throw syntaxError(messages::bracketNotClosed(std::u16string(1, innermost.opening)),
                              innermost.position);
        }
        next_.isAfterBlank = true;
        if (!isRow) return;
        Token rowEnd;
        rowEnd.kind = TokenKind::rowEnd;
        rowEnd.position = next_.position;
        tokens_.push_back(std::move(rowEnd));
    }

    bool isMorePromised() const {
        const Token& last = tokens_.back();
        return last.kind == TokenKind::symbol &&
               (last.text == u"," || last.text == u"&&" || last.text == u"||");
    }

    void readToken() {
        const char16_t unit = source_.unit();
        if (isNameStart(unit)) {
            const std::string name = source_.takeName();
            next_.kind = TokenKind::name;
            next_.text.assign(name.begin(), name.end());
        } else if (isDigit(unit) || (unit == u'.' && isDigit(source_.unit(1)) && !isFieldPoint())) {
            next_.kind = TokenKind::number;
            next_.number = takeNumber(source_);
        } else if (unit == u'\'' || unit == u'"') {
            next_.kind = unit == u'"' ? TokenKind::stringText : TokenKind::charText;
            next_.text = takeQuotedText(source_);
        } else {
            readSymbol(unit);
        }
        tokens_.push_back(std::move(next_));
    }

    /// A point right behind a name or a closing bracket leads to a field.
    bool isFieldPoint() const {
        if (tokens_.empty() || next_.isAfterBlank) return false;
        const Token& last = tokens_.back();
        return last.kind == TokenKind::name ||
               (last.kind == TokenKind::symbol && (last.text == u")" || last.text == u"}"));
    }

    /// One or two units, as a person can read it.
    std::u16string characterHere() const {
        std::u16string character(1, source_.unit());
        const bool isFirstOfPair = (source_.unit() & 0xFC00) == 0xD800;
        if (isFirstOfPair && (source_.unit(1) & 0xFC00) == 0xDC00) character += source_.unit(1);
        return runtime::interpreter::visible(std::move(character));
    }

    void readSymbol(char16_t unit) {
        if (symbols.find(unit) == std::u16string_view::npos) {
            throw syntaxError(messages::characterWithoutMeaning(characterHere()), next_.position);
        }
        next_.kind = TokenKind::symbol;
        next_.text.assign(1, unit);
        if (takeLongOperator(unit)) return;
        if (unit == u'(' || unit == u'[' || unit == u'{') {
            if (brackets_.size() == deepestNesting) {
                throw syntaxError(messages::bracketsNestedTooDeeply(), next_.position);
            }
            brackets_.push_back({unit, next_.position});
        } else if (unit == u')' || unit == u']' || unit == u'}') {
            closeBracket(unit);
        }
        source_.advance();
    }

    /// An operator of two units: ==, ~=, <=, >=, &&, ||.
    bool takeLongOperator(char16_t unit) {
        const std::u16string two{unit, source_.unit(1)};
        if (std::ranges::find(operators, two, &SpelledOperator::spelling) == operators.end()) return false;
        next_.text = two;
        source_.advance(2);
        return true;
    }

    void closeBracket(char16_t closing) {
        const char16_t opening = closing == u')' ? u'(' : closing == u']' ? u'[' : u'{';
        if (brackets_.empty() || brackets_.back().opening != opening) {
            throw syntaxError(messages::closesNothing(std::u16string(1, closing)), next_.position);
        }
        brackets_.pop_back();
    }

    LineBuffer& source_;
    std::vector<Token> tokens_;
    std::vector<Bracket> brackets_;
    Token next_;
};

/// Units from the bracket here to the one that closes it, both counted; 0 when there is none here, or it is
/// not closed on this line. Brackets inside of quotes do not count.
std::size_t bracketedLength(const LineBuffer& source) {
    constexpr std::u16string_view opening = u"([{";
    constexpr std::u16string_view closing = u")]}";
    if (opening.find(source.unit()) == std::u16string_view::npos) return 0;
    std::size_t depth = 0;
    char16_t quote = u'\0';
    for (std::size_t ahead = 0; source.unit(ahead) != u'\n'; ++ahead) {
        const char16_t unit = source.unit(ahead);
        if (quote != u'\0') {
            if (unit == quote) quote = u'\0';
        } else if (unit == u'\'' || unit == u'"') {
            quote = unit;
        } else if (unit == u'%' && isBlank(source.unit(ahead - 1))) {
            return 0;  // what closes it in a comment closes nothing
        } else if (opening.find(unit) != std::u16string_view::npos) {
            ++depth;
        } else if (closing.find(unit) != std::u16string_view::npos && --depth == 0) {
            return ahead + 1;
        }
    }
    return 0;
}

class WordReader {
public:
    explicit WordReader(LineBuffer& source) : source_(source) {}

    std::vector<std::u16string> read() {
        std::vector<std::u16string> words;
        for (;;) {
            source_.skipBlanks();
            if (source_.isAtLoneContinuationMark()) {
                source_.followContinuationMark();
            } else if (isAtWordEnd() || source_.unit() == u'%') {
                return words;
            } else {
                words.push_back(takeWord());
            }
        }
    }

private:
    bool isAtWordEnd() const {
        return source_.isAtEnd() || isBlank(source_.unit()) ||
               (source_.offset() >= bracketEnd_ && (source_.unit() == u';' || source_.unit() == u','));
    }

    std::u16string takeWord() {
        std::u16string word;
        while (!isAtWordEnd()) {
            if (source_.unit() == u'\'' || source_.unit() == u'"') {
                word += takeQuotedText(source_);
                continue;
            }
            bracketEnd_ = std::max(bracketEnd_, source_.offset() + bracketedLength(source_));
            word += source_.unit();
            source_.advance();
        }
        return word;
    }

    LineBuffer& source_;
    /// Up to here separators belong to the words.
    std::size_t bracketEnd_ = 0;
};

}  // namespace

std::vector<Token> readTokens(LineBuffer& source) { return Lexer(source).read(); }

std::vector<std::u16string> readWords(LineBuffer& source) { return WordReader(source).read(); }

}  // namespace korvex::host
