// The source behind the diagnostic logger.
#include "runtime/log/diagnostic_source.h"

#include <boost/log/attributes/function.hpp>

#include "platform/diagnostic_log.h"

namespace korvex::runtime::log {

namespace {

thread_local std::uint32_t severityOfThread = 0;

}  // namespace

DiagnosticSource::DiagnosticSource() {
    namespace attributes = boost::log::attributes;
    core()->set_logging_enabled(false);  // until there is a sink: without one the library has one of its own
    add_attribute_unlocked(severityAttribute, attributes::make_function([] { return severityOfThread; }));
    add_attribute_unlocked(indentAttribute, attributes::make_function([] {
                               return foundation::log::detail::indent_attribute::depth();
                           }));
}

boost::log::record DiagnosticSource::open(std::uint32_t severity) {
    if (!core()->get_logging_enabled()) return {};
    const std::unique_lock lock = holdOpening();
    severityOfThread = severity;
    return open_record_unlocked();
}

std::unique_lock<DiagnosticSource::threading_model> DiagnosticSource::holdOpening() {
    return std::unique_lock(get_threading_model());
}

DiagnosticSource& diagnosticSource() {
    static DiagnosticSource source;
    return source;
}

}  // namespace korvex::runtime::log
