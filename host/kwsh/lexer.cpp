// Inside of one statement: tokens of expressions, words of the command form.
#include <charconv>
#include <string>
#include <string_view>

#include "host/kwsh/statement_reader.h"

namespace korvex::host {
namespace {

/// Brackets of texts nested deeper than a person would write them; bounds the recursion of what comes later.
constexpr std::size_t deepestNesting = 100;

constexpr std::u16string_view symbols = u"()[]{},;=.~+-*/^<>&|:@";

std::u16string quoted(char16_t unit) { return {u'\'', unit, u'\''}; }

/// The quoted text here, without its quotes; a doubled quote stands for one.
std::u16string takeQuotedText(LineBuffer& source) {
    const Position begin = source.position();
    const char16_t quote = source.unit();
    std::u16string text;
    for (source.advance();; source.advance()) {
        if (source.isAtEnd()) {
            throw syntaxError(u"the text that begins here has no closing " + std::u16string(1, quote) + u".",
                              begin);
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
        throw syntaxError(u"this is no number that can be read.", begin);
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
                goToNextRow();
            } else {
                return !source_.isAtEnd() && source_.unit() != u'%' && !isAtSeparator();
            }
        }
    }

    bool isAtSeparator() const {
        return brackets_.empty() && (source_.unit() == u';' || source_.unit() == u',');
    }

    void goToNextRow() {
        const Bracket& innermost = brackets_.back();
        if (innermost.opening == u'(' || !source_.continueLine()) {
            throw syntaxError(u"this " + quoted(innermost.opening) + u" is never closed.",
                              innermost.position);
        }
        Token rowEnd;
        rowEnd.kind = TokenKind::rowEnd;
        rowEnd.position = next_.position;
        tokens_.push_back(std::move(rowEnd));
        next_.isAfterBlank = true;
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

    void readSymbol(char16_t unit) {
        if (symbols.find(unit) == std::u16string_view::npos) {
            throw syntaxError(u"the character " + quoted(unit) + u" has no meaning here.", next_.position);
        }
        next_.kind = TokenKind::symbol;
        next_.text.assign(1, unit);
        if (unit == u'(' || unit == u'[' || unit == u'{') {
            if (brackets_.size() == deepestNesting) {
                throw syntaxError(u"brackets are nested too deeply.", next_.position);
            }
            brackets_.push_back({unit, next_.position});
        } else if (unit == u')' || unit == u']' || unit == u'}') {
            closeBracket(unit);
        }
        source_.advance();
    }

    void closeBracket(char16_t closing) {
        const char16_t opening = closing == u')' ? u'(' : closing == u']' ? u'[' : u'{';
        if (brackets_.empty() || brackets_.back().opening != opening) {
            throw syntaxError(quoted(closing) + u" closes nothing here.", next_.position);
        }
        brackets_.pop_back();
    }

    LineBuffer& source_;
    std::vector<Token> tokens_;
    std::vector<Bracket> brackets_;
    Token next_;
};

bool isAtWordEnd(const LineBuffer& source) {
    return source.isAtEnd() || isBlank(source.unit()) || source.unit() == u';' || source.unit() == u',';
}

std::u16string takeWord(LineBuffer& source) {
    std::u16string word;
    while (!isAtWordEnd(source)) {
        if (source.unit() == u'\'' || source.unit() == u'"') {
            word += takeQuotedText(source);
        } else {
            word += source.unit();
            source.advance();
        }
    }
    return word;
}

}  // namespace

std::vector<Token> readTokens(LineBuffer& source) { return Lexer(source).read(); }

std::vector<std::u16string> readWords(LineBuffer& source) {
    std::vector<std::u16string> words;
    for (;;) {
        source.skipBlanks();
        if (source.isAtContinuationMark()) {
            source.followContinuationMark();
        } else if (isAtWordEnd(source) || source.unit() == u'%') {
            return words;
        } else {
            words.push_back(takeWord(source));
        }
    }
}

}  // namespace korvex::host
