// Lines in front of the lexer.
#include "host/kwsh/line_buffer.h"

namespace korvex::host {

std::u16string positionText(const Position& position) {
    const std::string text =
        "line " + std::to_string(position.line) + ", column " + std::to_string(position.column);
    return std::u16string(text.begin(), text.end());
}

HostError syntaxError(std::u16string text, const Position& position) {
    return HostError("syntax", u"In " + positionText(position) + u": " + std::move(text));
}

bool isBlank(char16_t unit) noexcept { return unit == u' ' || unit == u'\t'; }

bool isDigit(char16_t unit) noexcept { return unit >= u'0' && unit <= u'9'; }

bool isNameStart(char16_t unit) noexcept {
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') || unit == u'_';
}

bool isNameUnit(char16_t unit) noexcept { return isNameStart(unit) || isDigit(unit); }

bool LineBuffer::startLine() {
    clear();
    std::optional<std::u16string> line = lines_.nextLine(false);
    if (!line) return false;
    ++line_;
    text_ = std::move(*line);
    return true;
}

bool LineBuffer::continueLine() {
    const std::optional<std::u16string> line = lines_.nextLine(true);
    if (!line) return false;
    ++line_;
    text_ += u'\n';
    lineBegin_ = text_.size();
    at_ = lineBegin_;
    text_ += *line;
    return true;
}

void LineBuffer::clear() {
    text_.clear();
    at_ = 0;
    lineBegin_ = 0;
}

bool LineBuffer::skipBlanks() noexcept {
    const std::size_t begin = at_;
    while (isBlank(unit()))
        ++at_;
    return at_ != begin;
}

std::string LineBuffer::takeName() {
    std::string name;
    if (!isNameStart(unit())) return name;
    for (; isNameUnit(unit()); ++at_)
        name += static_cast<char>(unit());
    return name;
}

bool LineBuffer::isAtContinuationMark() const noexcept {
    return unit() == u'.' && unit(1) == u'.' && unit(2) == u'.';
}

bool LineBuffer::isAtLoneContinuationMark() const noexcept {
    return isAtContinuationMark() && (isBlank(unit(3)) || unit(3) == u'\n' || unit(3) == u'%');
}

void LineBuffer::followContinuationMark() {
    const Position mark = position();
    skipToEnd();
    if (!continueLine()) throw syntaxError(u"no line follows the '...' that continues this one.", mark);
}

}  // namespace korvex::host
