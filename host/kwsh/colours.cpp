// The control sequences of the accents.
#include "host/kwsh/colours.h"

#include <algorithm>
#include <array>

namespace korvex::host {
namespace {

struct AccentSequence {
    Accent accent;
    std::u16string_view begin;
};

constexpr std::array accentSequences = {
    AccentSequence{Accent::error, u"\x1B[1;31m"},   AccentSequence{Accent::warning, u"\x1B[1;33m"},
    AccentSequence{Accent::identifier, u"\x1B[2m"}, AccentSequence{Accent::heading, u"\x1B[1m"},
    AccentSequence{Accent::prompt, u"\x1B[1;34m"},
};

}  // namespace

bool isColoured(ColourChoice choice, const ColourSurroundings& surroundings) noexcept {
    if (choice != ColourChoice::automatic) return choice == ColourChoice::always;
    return surroundings.isTerminal && !surroundings.isRefused && !surroundings.isPlainTerminal;
}

std::u16string_view beginOf(Accent accent) noexcept {
    return std::ranges::find(accentSequences, accent, &AccentSequence::accent)->begin;
}

std::u16string accented(Accent accent, std::u16string_view text, bool isWanted) {
    if (!isWanted || text.empty()) return std::u16string(text);
    return std::u16string(beginOf(accent)) + std::u16string(text) + std::u16string(accentEnd);
}

}  // namespace korvex::host
