// The diagnostic logger: records over the logging library's source and core.
#include "platform/diagnostic_log.h"

#include <exception>

#include "runtime/log/diagnostic_source.h"
#include "runtime/text/encoding.h"

namespace foundation::log {

namespace detail {

namespace {
thread_local int depthOfThread = 0;
}  // namespace

void indent_attribute::increase() noexcept { ++depthOfThread; }
void indent_attribute::decrease() noexcept { --depthOfThread; }
int indent_attribute::depth() noexcept { return depthOfThread; }

}  // namespace detail

struct DiagnosticRecord::Content {
    explicit Content(boost::log::record opened) : record(std::move(opened)), stream(record) {}

    boost::log::record record;
    boost::log::record_ostream stream;
    int uncaughtAtOpening = std::uncaught_exceptions();
};

DiagnosticRecord::DiagnosticRecord() noexcept = default;
DiagnosticRecord::DiagnosticRecord(std::unique_ptr<Content> content) noexcept
    : content_(std::move(content)) {}
DiagnosticRecord::DiagnosticRecord(DiagnosticRecord&&) noexcept = default;

DiagnosticRecord::~DiagnosticRecord() {
    if (!content_ || std::uncaught_exceptions() > content_->uncaughtAtOpening) return;
    try {
        content_->stream.flush();
        content_->stream.detach_from_record();
        boost::log::core::get()->push_record(std::move(content_->record));
    } catch (...) {
        // A trace that cannot be written must not change what the command does.
    }
}

void DiagnosticRecord::write(std::u16string_view text) {
    content_->stream.stream() << korvex::runtime::text::toDisplayBytes(text);
}

std::ostream& DiagnosticRecord::stream() { return content_->stream.stream(); }

DiagnosticRecord basic_diagnostic_logger<char>::openRecord(std::uint32_t severity) noexcept {
    try {
        boost::log::record opened = korvex::runtime::log::diagnosticSource().open(severity);
        if (opened) return DiagnosticRecord(std::make_unique<DiagnosticRecord::Content>(std::move(opened)));
    } catch (...) {
        // As above: an empty record.
    }
    return {};
}

}  // namespace foundation::log

namespace korvex::io::filesystem::core::log {

constinit foundation::log::basic_diagnostic_logger<char> diagnosticLogger;

}  // namespace korvex::io::filesystem::core::log
