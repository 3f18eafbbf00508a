// Where the diagnostic trace goes. Nobody asks for it at first, and then nothing of it is written.
#pragma once

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>

namespace korvex::runtime::log {

/// Writes the trace as long as it lives, one record a line: the severity in four columns, two blanks for each
/// level of call depth, the text, which may end the line itself. Each line is flushed. The mask is that of
/// the logger; a record is written when the mask has its severity, function exits too.
///
/// Output objects may be nested: each writes what is traced, and the mask before comes back when one dies.
class TraceOutput {
public:
    /// The stream must live as long as the object.
    TraceOutput(std::ostream& stream, std::uint32_t mask);
    /// Empties the file (native path), or makes it. Raises `std::system_error` when it cannot be opened.
    TraceOutput(const std::u16string& path, std::uint32_t mask);
    ~TraceOutput();
    TraceOutput(const TraceOutput&) = delete;
    TraceOutput& operator=(const TraceOutput&) = delete;

private:
    class Sink;

    std::unique_ptr<Sink> sink_;
    std::uint32_t maskBefore_;
};

}  // namespace korvex::runtime::log
