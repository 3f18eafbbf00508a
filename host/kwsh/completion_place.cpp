// A reader of unfinished statements.
#include "host/kwsh/completion_place.h"

#include <algorithm>

#include "host/kwsh/line_buffer.h"

namespace korvex::host {
namespace {

using Arguments = std::vector<std::optional<std::u16string>>;

bool isQuote(char16_t unit) noexcept { return unit == u'\'' || unit == u'"'; }

class PlaceReader {
public:
    PlaceReader(std::u16string_view text, const std::function<bool(std::string_view)>& isCommand)
        : text_(text), isCommand_(isCommand) {}

    std::optional<CompletionPlace> read() {
        while (!isFound_ && !isDropped_)
            readStatement();
        return isDropped_ ? std::nullopt : std::optional(std::move(place_));
    }

private:
    // --------------------------------------------------------------------------------- the text

    bool isAtEnd() const noexcept { return at_ >= text_.size(); }
    /// The unit here, or that far ahead; a line feed behind the end.
    char16_t unit(std::size_t ahead = 0) const noexcept {
        return at_ + ahead < text_.size() ? text_[at_ + ahead] : u'\n';
    }
    bool isAtLineEnd() const noexcept { return unit() == u'\n'; }
    void skipBlanks() noexcept {
        while (isBlank(unit()))
            ++at_;
    }
    bool isAtContinuationMark() const noexcept {
        return unit() == u'.' && unit(1) == u'.' && unit(2) == u'.';
    }
    /// Over what says nothing, up to the line's end; nothing can be completed in it.
    void skipLine() noexcept {
        while (!isAtLineEnd())
            ++at_;
        if (isAtEnd()) isDropped_ = true;
    }
    /// Behind the end of a line whose statement goes on.
    void followContinuation() noexcept {
        skipLine();
        if (!isAtEnd()) ++at_;
    }
    std::string takeName() {
        std::string name;
        for (; isNameUnit(unit()); ++at_)
            name += static_cast<char>(unit());
        return name;
    }

    /// Appends the quoted text here to `word`. The quote when it is open at the end, else 0.
    char16_t takeQuoted(std::u16string& word) {
        const char16_t quote = unit();
        for (++at_; !isAtLineEnd(); ++at_) {
            if (unit() == quote) {
                if (unit(1) != quote) {
                    ++at_;
                    return u'\0';
                }
                ++at_;
            }
            word += unit();
        }
        return quote;
    }

    void find(ArgumentForm form, std::size_t begin, std::u16string typed, char16_t quote) {
        isFound_ = true;
        place_.form = form;
        place_.begin = begin;
        place_.typed = std::move(typed);
        place_.quote = quote;
    }

    // --------------------------------------------------------------------------------- statements

    void readStatement() {
        while (isBlank(unit()) || unit() == u';' || unit() == u',' || (isAtLineEnd() && !isAtEnd()))
            ++at_;
        if (unit() == u'!' || unit() == u'%') return skipLine();
        const std::size_t begin = at_;
        if (isNameStart(unit())) {
            std::string name = takeName();
            if (isCommandForm(name)) return readWords(std::move(name));
        }
        at_ = begin;
        readExpression();
    }

    bool isCommandForm(const std::string& name) const {
        if (!isBlank(unit()) || !isCommand_(name)) return false;
        std::size_t ahead = 0;
        while (isBlank(unit(ahead)))
            ++ahead;
        if (at_ + ahead >= text_.size()) return true;
        return std::u16string_view(u"\n%;,(=").find(unit(ahead)) == std::u16string_view::npos;
    }

    // -------------------------------------------------------------------------- words of a command

    void readWords(std::string command) {
        place_.command = std::move(command);
        place_.earlier.clear();
        for (;;) {
            skipBlanks();
            const bool isLoneMark =
                isAtContinuationMark() && (isBlank(unit(3)) || unit(3) == u'\n' || unit(3) == u'%');
            if (isAtEnd()) return find(ArgumentForm::word, at_, {}, u'\0');
            if (isLoneMark) {
                followContinuation();
                if (isDropped_) return;
            } else if (unit() == u'%') {
                return skipLine();
            } else if (isAtWordEnd()) {
                return;
            } else {
                readWord();
                if (isFound_) return;
            }
        }
    }

    bool isAtWordEnd() const noexcept {
        return isAtLineEnd() || isBlank(unit()) || (at_ >= bracketEnd_ && (unit() == u';' || unit() == u','));
    }

    void readWord() {
        const std::size_t begin = at_;
        std::u16string word;
        char16_t quote = u'\0';
        while (!isAtWordEnd()) {
            if (isQuote(unit())) {
                quote = takeQuoted(word);
                continue;
            }
            noteBrackets();
            word += text_[at_++];
        }
        if (isAtEnd()) return find(ArgumentForm::word, begin, std::move(word), quote);
        place_.earlier.emplace_back(std::move(word));
    }

    /// Brackets that close keep separators in the word.
    void noteBrackets() noexcept {
        constexpr std::u16string_view opening = u"([{";
        constexpr std::u16string_view closing = u")]}";
        if (opening.find(unit()) == std::u16string_view::npos) return;
        std::size_t depth = 0;
        for (std::size_t ahead = 0; unit(ahead) != u'\n'; ++ahead) {
            if (opening.find(unit(ahead)) != std::u16string_view::npos) ++depth;
            if (closing.find(unit(ahead)) == std::u16string_view::npos) continue;
            if (--depth > 0) continue;
            bracketEnd_ = std::max(bracketEnd_, at_ + ahead + 1);
            return;
        }
    }

    // -------------------------------------------------------------------------------- expressions

    struct Bracket {
        std::string function;  ///< the name in front of a (
        Arguments earlier;
        std::size_t tokens = 0;                 ///< of the present argument
        std::optional<std::u16string> literal;  ///< the last of them, if it is a text
    };

    void readExpression() {
        brackets_.assign(1, {});  // the first one stands for the statement itself
        isBehindValue_ = false;
        isBehindPoint_ = false;
        name_.clear();
        while (!isFound_ && !isDropped_ && readToken()) {
        }
    }

    bool isInBrackets() const noexcept { return brackets_.size() > 1; }

    /// False at the end of the statement.
    bool readToken() {
        const std::size_t begin = at_;
        skipBlanks();
        if (at_ != begin) name_.clear();
        if (isAtEnd()) {
            // Inside of brackets a blank may part elements; elsewhere an operator would have to come.
            const bool canBegin = !isBehindValue_ || (at_ != begin && isInBrackets());
            canBegin ? findName(at_, {}) : drop();
        } else if (isAtContinuationMark()) {
            followContinuation();
        } else if (isAtLineEnd() || unit() == u';' || unit() == u',') {
            if (!isInBrackets()) return false;
            ++at_;
            endArgument();
        } else if (unit() == u'%') {
            skipLine();
        } else if (isQuote(unit())) {
            readText();
        } else if (isNameUnit(unit())) {
            readName();
        } else {
            readSymbol();
        }
        return true;
    }

    void readText() {
        const std::size_t begin = at_;
        std::u16string text;
        const char16_t quote = takeQuoted(text);
        if (quote != u'\0' && isAtEnd()) {
            setArgument();
            return find(ArgumentForm::quoted, begin, std::move(text), quote);
        }
        endValue();
        brackets_.back().literal = std::move(text);
    }

    void readName() {
        const std::size_t begin = at_;
        const bool isNumber = isDigit(unit());
        const std::string name = takeName();
        if (isAtEnd()) {
            if (isNumber || isBehindPoint_) return drop();
            return findName(begin, std::u16string(name.begin(), name.end()));
        }
        endValue();
        name_ = name;
    }

    void endValue() {
        ++brackets_.back().tokens;
        isBehindValue_ = true;
        isBehindPoint_ = false;
        name_.clear();
    }

    void readSymbol() {
        const char16_t symbol = text_[at_++];
        const bool isOpening = symbol == u'(' || symbol == u'[' || symbol == u'{';
        const bool isClosing = symbol == u')' || symbol == u']' || symbol == u'}';
        ++brackets_.back().tokens;
        if (isOpening) {
            Bracket bracket;
            if (symbol == u'(') bracket.function = name_;
            brackets_.push_back(std::move(bracket));
        } else if (isClosing && isInBrackets()) {
            brackets_.pop_back();
        }
        isBehindValue_ = isClosing;
        isBehindPoint_ = symbol == u'.';
        name_.clear();
    }

    void endArgument() {
        Bracket& bracket = brackets_.back();
        const bool isText = bracket.tokens == 1 && bracket.literal.has_value();
        bracket.earlier.push_back(isText ? std::move(bracket.literal) : std::nullopt);
        bracket.tokens = 0;
        bracket.literal.reset();
        isBehindValue_ = false;
        isBehindPoint_ = false;
    }

    /// Only what begins an argument is one.
    void setArgument() {
        Bracket& bracket = brackets_.back();
        if (!isInBrackets() || bracket.tokens > 0) return;
        place_.command = bracket.function;
        place_.earlier = std::move(bracket.earlier);
    }

    void findName(std::size_t begin, std::u16string typed) {
        place_.isStatementBegin = !isInBrackets() && brackets_.back().tokens == 0;
        setArgument();
        find(ArgumentForm::bare, begin, std::move(typed), u'\0');
    }

    void drop() noexcept { isDropped_ = true; }

    std::u16string_view text_;
    const std::function<bool(std::string_view)>& isCommand_;
    std::size_t at_ = 0;
    std::size_t bracketEnd_ = 0;
    CompletionPlace place_;
    bool isFound_ = false;
    bool isDropped_ = false;
    // Of the present expression.
    std::vector<Bracket> brackets_;
    std::string name_;  ///< the name right in front
    bool isBehindValue_ = false;
    bool isBehindPoint_ = false;
};

}  // namespace

std::optional<CompletionPlace> placeAtEnd(std::u16string_view text,
                                          const std::function<bool(std::string_view)>& isCommand) {
    return PlaceReader(text, isCommand).read();
}

}  // namespace korvex::host
