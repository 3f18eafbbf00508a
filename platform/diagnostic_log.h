// The diagnostic trace: what developers read about the inside of a command. It never reaches the user's
// window, and no behaviour depends on it.
//
// A record has a severity, which is one bit, and is written only when that bit stands in the logger's mask.
// While it does not, asking costs one load and one test; so ask before anything is computed for a record:
//
//   auto& logger = korvex::io::filesystem::core::log::getLogger();
//   if (logger.isEnabled(foundation::log::severity::flowOfControl)) {
//       if (auto record = logger.openRecord(foundation::log::severity::flowOfControl)) record << "went by";
//   }
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>

namespace foundation::log {

/// What a record is about. A mask is any of these together.
namespace severity {
inline constexpr std::uint32_t rawValue = 1;
inline constexpr std::uint32_t argument = 2;
inline constexpr std::uint32_t flowOfControl = 4;
inline constexpr std::uint32_t workingValue = 8;
inline constexpr std::uint32_t exceptionInFlight = 16;
inline constexpr std::uint32_t functionEntry = 32;
inline constexpr std::uint32_t functionExit = 64;
inline constexpr std::uint32_t error = 512;
inline constexpr std::uint32_t all = 0xFFFFFFFF;
}  // namespace severity

namespace detail {

/// How deep the calls are that the trace is in. Each thread has its own.
class indent_attribute {
public:
    static void increase() noexcept;
    static void decrease() noexcept;
    /// Levels.
    static int depth() noexcept;
};

}  // namespace detail

/// One record, from its opening to its writing. It goes out when it dies, unless an exception has been thrown
/// since it was opened and is on its way: then its text may be half of one, and it is dropped.
class DiagnosticRecord {
public:
    struct Content;

    DiagnosticRecord() noexcept;
    explicit DiagnosticRecord(std::unique_ptr<Content> content) noexcept;
    DiagnosticRecord(DiagnosticRecord&&) noexcept;
    DiagnosticRecord& operator=(DiagnosticRecord&&) noexcept = delete;
    ~DiagnosticRecord();

    /// False when nobody wants the record; nothing may be written to it then.
    explicit operator bool() const noexcept { return content_ != nullptr; }

    /// Writes as a narrow stream does; 16-bit text becomes UTF-8.
    template <class Value>
    DiagnosticRecord& operator<<(const Value& value) {
        if constexpr (std::is_convertible_v<const Value&, const std::u16string&>) {
            write(static_cast<const std::u16string&>(value));
        } else if constexpr (std::is_convertible_v<const Value&, std::u16string_view>) {
            write(static_cast<std::u16string_view>(value));
        } else {
            stream() << value;
        }
        return *this;
    }

private:
    void write(std::u16string_view text);
    std::ostream& stream();

    std::unique_ptr<Content> content_;
};

template <class Char>
class basic_diagnostic_logger;

/// A source of records. Any thread.
template <>
class basic_diagnostic_logger<char> {
public:
    constexpr basic_diagnostic_logger() noexcept = default;
    basic_diagnostic_logger(const basic_diagnostic_logger&) = delete;
    basic_diagnostic_logger& operator=(const basic_diagnostic_logger&) = delete;

    /// The severities that are wanted; none at first. Read without a lock.
    std::uint32_t mask() const noexcept { return mask_.load(std::memory_order_relaxed); }
    void setMask(std::uint32_t mask) noexcept { mask_.store(mask, std::memory_order_relaxed); }
    bool isEnabled(std::uint32_t severity) const noexcept { return (mask() & severity) != 0; }

    /// Opens a record, under the lock of the logger, if logging is on and a filter of where the trace goes
    /// lets the severity through. Does not look at the mask itself. An empty record, too, when the log fails.
    DiagnosticRecord openRecord(std::uint32_t severity) noexcept;

private:
    std::atomic<std::uint32_t> mask_{0};
};

}  // namespace foundation::log

namespace korvex::io::filesystem::core::log {

/// The one logger of all the file commands.
extern foundation::log::basic_diagnostic_logger<char> diagnosticLogger;

inline foundation::log::basic_diagnostic_logger<char>& getLogger() noexcept { return diagnosticLogger; }

}  // namespace korvex::io::filesystem::core::log
