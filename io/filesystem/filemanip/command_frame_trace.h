// The trace statements of the commands. While a severity is off, a statement costs one load and one test, and
// nothing of its text is computed.
//
//   const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, sourceFile, __LINE__);
//   trace(severity::workingValue, [&](auto& record) { record << "Absolute path: " << path; });
//   trace(severity::flowOfControl, "Valid path element");
//   ... catch (const vfs::Exception&) { traceCurrentException(); }
#pragma once

#include <concepts>
#include <cstdint>
#include <exception>
#include <string_view>
#include <utility>

#include "platform/diagnostic_log.h"

/// The compiler's text of the signature of the function that this stands in; only a macro can name it.
#ifdef _MSC_VER
#define KORVEX_FUNCTION_SIGNATURE __FUNCSIG__
#else
#define KORVEX_FUNCTION_SIGNATURE __PRETTY_FUNCTION__
#endif

namespace korvex::filemanip {

namespace severity = foundation::log::severity;

using TraceLogger = foundation::log::basic_diagnostic_logger<char>;

inline TraceLogger& traceLogger() noexcept { return io::filesystem::core::log::getLogger(); }

/// Calls `write` with a record to write to, if anybody wants the severity. An exception that it throws goes
/// on, and the record is dropped.
template <std::invocable<foundation::log::DiagnosticRecord&> Write>
inline void trace(std::uint32_t severityBit, Write&& write) {
    if (!traceLogger().isEnabled(severityBit)) return;
    if (foundation::log::DiagnosticRecord record = traceLogger().openRecord(severityBit)) {
        std::forward<Write>(write)(record);
    }
}

/// The same for a text that stands fast.
inline void trace(std::uint32_t severityBit, const char* text) {
    trace(severityBit, [text](foundation::log::DiagnosticRecord& record) { record << text; });
}

/// "Exception caught: " and what is known of the exception that is being handled.
void traceCurrentException();

/// Brackets a function: a record on entry, everything traced inside one level deeper, a record on exit.
/// Whether the function is traced is settled on entry; the exit record of one that was is not tested against
/// the mask again, only the filter behind the logger sees it. Never raises on exit.
class TraceScope {
public:
    /// `signature` and `sourcePath` (under the project's root, without extension) must outlive the scope.
    TraceScope(TraceLogger& logger, std::string_view signature, std::string_view sourcePath, int line)
        : logger_(logger),
          isTraced_(logger.isEnabled(severity::functionEntry)),
          signature_(signature),
          sourcePath_(sourcePath),
          line_(line),
          uncaughtAtEntry_(std::uncaught_exceptions()) {
        if (isTraced_) enter();
    }
    ~TraceScope() {
        if (isTraced_) leave();
    }
    TraceScope(const TraceScope&) = delete;
    TraceScope& operator=(const TraceScope&) = delete;

    std::string_view sourcePath() const noexcept { return sourcePath_; }
    int line() const noexcept { return line_; }

private:
    void enter();
    void leave() noexcept;

    TraceLogger& logger_;
    const bool isTraced_;
    const std::string_view signature_;
    const std::string_view sourcePath_;
    const int line_;
    const int uncaughtAtEntry_;
};

}  // namespace korvex::filemanip
