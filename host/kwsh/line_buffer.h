// The text of the statement that is being read: one line, and further ones where it goes on.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "host/kwsh/statement.h"

namespace korvex::host {

/// Where lines come from: a script, the terminal.
class LineSource {
public:
    virtual ~LineSource() = default;
    /// The next line without its end; nothing when there is none. `isContinuation` tells that the line
    /// belongs to a statement that was begun before.
    virtual std::optional<std::u16string> nextLine(bool isContinuation) = 0;
};

class LineBuffer {
public:
    explicit LineBuffer(LineSource& lines) : lines_(lines) {}

    /// Replaces the text by the next line. False when there is none.
    bool startLine();
    /// Appends the next line, behind a line feed, and goes to its begin. False when there is none.
    bool continueLine();
    void clear();

    /// At the end of the text that is there; what follows needs a further line.
    bool isAtEnd() const noexcept { return at_ >= text_.size(); }
    /// The unit here, or that far ahead; a line feed where the text ends.
    char16_t unit(std::size_t ahead = 0) const noexcept {
        return at_ + ahead < text_.size() ? text_[at_ + ahead] : u'\n';
    }
    void advance(std::size_t count = 1) noexcept { at_ += count; }
    void skipToEnd() noexcept { at_ = text_.size(); }
    /// Back to an offset that was passed before.
    void goTo(std::size_t offset) noexcept { at_ = offset; }
    /// Skips blanks and tabs; true when there was one.
    bool skipBlanks() noexcept;
    /// Skips a name of ASCII letters, digits and underscores that does not begin with a digit; empty when
    /// there is none.
    std::string takeName();

    std::size_t offset() const noexcept { return at_; }
    std::u16string_view textFrom(std::size_t begin, std::size_t end) const {
        return std::u16string_view(text_).substr(begin, end - begin);
    }
    Position position() const noexcept { return {line_, at_ - lineBegin_ + 1}; }

    /// Whether `...` stands here.
    bool isAtContinuationMark() const noexcept;
    /// The same with a blank, a comment or the end of the line behind it, so that it is not the begin of a
    /// name.
    bool isAtLoneContinuationMark() const noexcept;
    /// Goes from the continuation mark to the next line; what stands behind the mark is a comment. Raises the
    /// syntax error when there is no further line.
    void followContinuationMark();

private:
    LineSource& lines_;
    std::u16string text_;
    std::size_t at_ = 0;
    std::size_t line_ = 0;
    std::size_t lineBegin_ = 0;
};

bool isBlank(char16_t unit) noexcept;
bool isDigit(char16_t unit) noexcept;
bool isNameStart(char16_t unit) noexcept;
bool isNameUnit(char16_t unit) noexcept;

}  // namespace korvex::host
