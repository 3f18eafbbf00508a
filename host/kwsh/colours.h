// What is shown in colour, where, and in which one.
#pragma once

#include <string>
#include <string_view>

namespace korvex::host {

enum class ColourChoice { automatic, always, never };

/// What decides about colours on one stream, beside the choice of the user.
struct ColourSurroundings {
    bool isTerminal = false;
    /// `NO_COLOR` is set to anything but an empty text.
    bool isRefused = false;
    /// `TERM` is missing or "dumb".
    bool isPlainTerminal = false;
};

/// A choice other than `automatic` counts more than the surroundings.
bool isColoured(ColourChoice choice, const ColourSurroundings& surroundings) noexcept;

enum class Accent { error, warning, identifier, heading, prompt };

/// The control sequence that begins an accent, and the one that ends any.
std::u16string_view beginOf(Accent accent) noexcept;
inline constexpr std::u16string_view accentEnd = u"\x1B[0m";

/// The text in its accent, or as it is when no colours are wanted. Without a line end at its end.
std::u16string accented(Accent accent, std::u16string_view text, bool isWanted);

}  // namespace korvex::host
