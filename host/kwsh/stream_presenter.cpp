// The terminal's view, and the texts of errors and warnings.
#include "host/kwsh/stream_presenter.h"

#include <algorithm>

#include "host/kwsh/colours.h"
#include "host/kwsh/display.h"
#include "host/kwsh/values.h"
#include "runtime/interpreter/output.h"
#include "runtime/interpreter/structure_display.h"
#include "runtime/text/encoding.h"

namespace korvex::host {
namespace {

struct MessageKind {
    std::u16string_view word;
    Accent accent;
};

/// Names of files stand in messages, and may have what a terminal would obey. Line ends are the message's
/// own.
std::u16string visibleLines(std::u16string_view text) {
    std::u16string shown;
    for (std::size_t begin = 0;;) {
        const std::size_t end = std::min(text.find(u'\n', begin), text.size());
        shown += runtime::interpreter::visible(std::u16string(text.substr(begin, end - begin)));
        if (end == text.size()) return shown;
        shown += u'\n';
        begin = end + 1;
    }
}

constexpr MessageKind errorKind{u"Error:", Accent::error};
constexpr MessageKind warningKind{u"Warning:", Accent::warning};

std::u16string messageText(const MessageKind& kind, std::u16string_view text, std::string_view identifier,
                           bool isColoured) {
    return accented(kind.accent, kind.word, isColoured) + u' ' + visibleLines(text) + u"\n  " +
           accented(Accent::identifier, u"(" + widen(identifier) + u")", isColoured) + u"\n";
}

}  // namespace

std::u16string errorText(const Failure& failure, bool isColoured) {
    return messageText(errorKind, failure.text, failure.identifier, isColoured);
}

std::u16string warningText(const runtime::interpreter::Warning& warning, bool isColoured) {
    return messageText(warningKind, warning.text, warning.identifier, isColoured);
}

void StreamPresenter::printed(std::u16string_view text) {
    if (text.empty()) return;
    output_ << runtime::text::toDisplayBytes(text);
    isInsideLine_ = !text.ends_with(u'\n');
}

void StreamPresenter::warned(const runtime::interpreter::Warning& warning) {
    show(errors_, warningText(warning, areErrorsColoured_));
}

void StreamPresenter::result(const std::string& name, const kxArray* value, bool isShown) {
    if (isShown) show(output_, displayText(name, value, runtime::interpreter::windowColumns()));
}

void StreamPresenter::failed(const Failure& failure) {
    show(errors_, errorText(failure, areErrorsColoured_));
}

void StreamPresenter::statementEnds() {
    endPrintedLine();
    output_.flush();
}

void StreamPresenter::endPrintedLine() {
    if (isInsideLine_) output_ << '\n';
    isInsideLine_ = false;
}

void StreamPresenter::show(std::ostream& stream, std::u16string_view text) {
    endPrintedLine();
    // Both streams may end in the same place, where their order counts.
    output_.flush();
    stream << runtime::text::toDisplayBytes(text) << std::flush;
}

}  // namespace korvex::host
