// Where the environment's output stream ends, and how wide the window is that shows it.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace korvex::runtime::interpreter {

/// Receives what one print wrote, 16-bit text.
using OutputReceiver = std::function<void(std::u16string_view)>;

/// Replaces the receiver and hands back the earlier one. Without one, output is dropped.
OutputReceiver setOutputReceiver(OutputReceiver receiver);

/// Writes to the output stream.
void writeOutput(std::u16string_view text);

/// Columns of the command window; 80 until the host says otherwise.
std::uint64_t windowColumns();
void setWindowColumns(std::uint64_t columns);

}  // namespace korvex::runtime::interpreter
