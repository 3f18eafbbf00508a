// The parts of the trace statements that run only while somebody traces.
#include "io/filesystem/filemanip/command_frame_trace.h"

#include <boost/exception/diagnostic_information.hpp>

namespace korvex::filemanip {

using foundation::log::DiagnosticRecord;
using foundation::log::detail::indent_attribute;

void traceCurrentException() {
    trace(severity::exceptionInFlight, [](DiagnosticRecord& record) {
        record << "Exception caught: ";
        if (std::current_exception()) {
            record << boost::current_exception_diagnostic_information();
        } else {
            record << "No diagnostic information available.";
        }
    });
}

void TraceScope::enter() {
    if (DiagnosticRecord record = logger_.openRecord(severity::functionEntry)) record << signature_;
    indent_attribute::increase();
}

void TraceScope::leave() noexcept {
    indent_attribute::decrease();
    try {
        if (DiagnosticRecord record = logger_.openRecord(severity::functionExit)) {
            const bool isUnwinding = std::uncaught_exceptions() > uncaughtAtEntry_;
            record << signature_ << (isUnwinding ? " [throw]" : "");
        }
    } catch (...) {
        // An exit that cannot be told must not end the program.
    }
}

}  // namespace korvex::filemanip
