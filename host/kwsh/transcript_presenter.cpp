// Marks and line ends of a transcript.
#include "host/kwsh/transcript_presenter.h"

#include <algorithm>

#include "host/kwsh/display.h"
#include "runtime/interpreter/output.h"
#include "runtime/text/encoding.h"

namespace korvex::host {
namespace {

std::string_view withoutBlank(std::string_view mark) { return mark.substr(0, mark.size() - 1); }

bool needsMark(std::string_view line) {
    for (const std::string_view mark : {statementMark, continuationMark, outputMark}) {
        if (line.starts_with(mark) || line == withoutBlank(mark)) return true;
    }
    return line.starts_with('%');
}

}  // namespace

void TranscriptPresenter::plainLine(std::u16string_view line) {
    while (!line.empty() && isBlank(line.front()))
        line.remove_prefix(1);
    output_ << runtime::text::toDisplayBytes(line) << '\n';
}

void TranscriptPresenter::blockBegins(const SourceStatement& block) {
    showTyped(block);
    isInsideBlock_ = true;
}

void TranscriptPresenter::blockEnds() {
    isInsideBlock_ = false;
    statementEnds();
}

void TranscriptPresenter::statementBegins(const SourceStatement& statement) {
    if (!isInsideBlock_) showTyped(statement);
}

void TranscriptPresenter::showTyped(const SourceStatement& statement) {
    std::string_view mark = statementMark;
    for (std::u16string_view left = statement.typedText;; mark = continuationMark) {
        const std::size_t end = std::min(left.find(u'\n'), left.size());
        const std::string line = runtime::text::toDisplayBytes(left.substr(0, end));
        output_ << (line.empty() ? withoutBlank(mark) : mark) << line << '\n';
        if (end == left.size()) break;
        left.remove_prefix(end + 1);
    }
    output_.flush();
}

void TranscriptPresenter::printed(std::u16string_view text) {
    for (const char16_t unit : text) {
        if (unit == u'\n') {
            endLine();
        } else {
            line_ += unit;
        }
    }
}

void TranscriptPresenter::warned(const runtime::interpreter::Warning& warning) { show(warningText(warning)); }

void TranscriptPresenter::result(const std::string& name, const kxArray* value, bool isShown) {
    if (isShown) show(displayText(name, value, runtime::interpreter::windowColumns()));
}

void TranscriptPresenter::failed(const Failure& failure) { show(errorText(failure)); }

void TranscriptPresenter::statementEnds() {
    if (!line_.empty()) endLine();
    if (isInsideBlock_) return;
    for (; pendingEmptyLines_ > 0; --pendingEmptyLines_)
        output_ << emptyOutputLine << '\n';
    output_.flush();
}

void TranscriptPresenter::show(std::u16string_view text) {
    if (!line_.empty()) endLine();
    printed(text);
}

void TranscriptPresenter::endLine() {
    if (line_.empty()) {
        ++pendingEmptyLines_;
        return;
    }
    for (; pendingEmptyLines_ > 0; --pendingEmptyLines_)
        output_ << '\n';
    const std::string line = runtime::text::toDisplayBytes(line_);
    if (needsMark(line)) output_ << outputMark;
    output_ << line << '\n';
    line_.clear();
}

}  // namespace korvex::host
