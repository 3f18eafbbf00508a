// Lines in front of the lexer.
#include "host/kwsh/line_buffer.h"

#include "host/kwsh/values.h"

namespace korvex::host {

HostError syntaxError(const resource_core::BaseMsgID& message, const Position& position) {
    return HostError("syntax", messages::syntaxAt(countText(position.line), countText(position.column),
                                                  catalogText(message)));
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
    if (!continueLine()) throw syntaxError(messages::continuationWithoutLine(), mark);
}

}  // namespace korvex::host
