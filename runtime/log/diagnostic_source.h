// The source behind the diagnostic logger: where its records are opened.
#pragma once

#include <boost/log/sources/basic_logger.hpp>
#include <boost/log/sources/record_ostream.hpp>
#include <boost/log/sources/threading_models.hpp>
#include <cstdint>
#include <mutex>
#include <shared_mutex>

namespace korvex::runtime::log {

/// Names of the attributes that each record has.
inline constexpr const char* severityAttribute = "Severity";  // std::uint32_t
inline constexpr const char* indentAttribute = "Indent";      // int, levels

class DiagnosticSource
    : public boost::log::sources::basic_logger<char, DiagnosticSource,
                                               boost::log::sources::multi_thread_model<std::shared_mutex>> {
public:
    DiagnosticSource();

    /// Empty when logging is off or no sink wants the severity.
    boost::log::record open(std::uint32_t severity);

    /// Keeps records from being opened as long as the lock is held. Not to be taken twice on one thread.
    [[nodiscard]] std::unique_lock<threading_model> holdOpening();
};

/// The one source.
DiagnosticSource& diagnosticSource();

}  // namespace korvex::runtime::log
