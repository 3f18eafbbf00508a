// The terminal's view, and the texts of errors and warnings.
#include "host/kwsh/stream_presenter.h"

#include "host/kwsh/display.h"
#include "host/kwsh/values.h"
#include "runtime/interpreter/output.h"
#include "runtime/text/encoding.h"

namespace korvex::host {
namespace {

std::u16string messageText(std::u16string_view kind, std::u16string_view text, std::string_view identifier) {
    return std::u16string(kind) + std::u16string(text) + u"\n  (" + widen(identifier) + u")\n";
}

}  // namespace

std::u16string errorText(const Failure& failure) {
    return messageText(u"Error: ", failure.text, failure.identifier);
}

std::u16string warningText(const runtime::interpreter::Warning& warning) {
    return messageText(u"Warning: ", warning.text, warning.identifier);
}

void StreamPresenter::printed(std::u16string_view text) {
    if (text.empty()) return;
    output_ << runtime::text::toDisplayBytes(text);
    isInsideLine_ = !text.ends_with(u'\n');
}

void StreamPresenter::warned(const runtime::interpreter::Warning& warning) {
    show(errors_, warningText(warning));
}

void StreamPresenter::result(const std::string& name, const kxArray* value, bool isShown) {
    if (isShown) show(output_, displayText(name, value, runtime::interpreter::windowColumns()));
}

void StreamPresenter::failed(const Failure& failure) { show(errors_, errorText(failure)); }

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
