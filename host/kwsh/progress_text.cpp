// Pieces of the line, and which of them give way.
#include "host/kwsh/progress_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "host/kwsh/text_layout.h"
#include "host/kwsh/values.h"
#include "runtime/interpreter/structure_display.h"

namespace korvex::host {
namespace {

/// A name of which less is left says nothing.
constexpr std::size_t shortestName = 8;
constexpr std::u16string_view cutMark = u"…";

std::u16string twoDigits(std::uint64_t number) {
    const std::u16string digits = countText(number);
    return digits.size() < 2 ? u"0" + digits : digits;
}

std::u16string joined(const std::vector<std::u16string>& pieces) {
    std::u16string text;
    for (const std::u16string& piece : pieces)
        text += text.empty() ? piece : u", " + piece;
    return text;
}

/// Empty when it is too slow for a number.
std::u16string rateText(const ProgressView& view) {
    const double rate = view.bytes > 0 ? view.bytesPerSecond : view.itemsPerSecond;
    if (rate < 0.5) return {};
    if (view.bytes > 0) return byteText(rate) + u"/s";
    return groupedText(static_cast<std::uint64_t>(std::llround(rate))) + u" items/s";
}

/// The most important piece first.
std::vector<std::u16string> counts(const ProgressView& view) {
    std::vector<std::u16string> pieces;
    if (view.items > 0) pieces.push_back(groupedText(view.items) + (view.items == 1 ? u" item" : u" items"));
    if (view.bytes > 0) pieces.push_back(byteText(static_cast<double>(view.bytes)));
    if (std::u16string rate = rateText(view); !rate.empty()) pieces.push_back(std::move(rate));
    return pieces;
}

std::u16string shareText(const ProgressView& view) {
    std::vector<std::u16string> pieces;
    if (view.percent) pieces.push_back(countText(*view.percent) + u"%");
    if (view.secondsLeft) pieces.push_back(durationText(*view.secondsLeft) + u" left");
    return joined(pieces);
}

/// The name with the share behind it in that many columns; the share alone, or nothing, where the name has no
/// room.
std::u16string presentText(std::u16string_view name, const std::u16string& share, std::size_t columns) {
    const std::size_t shareWidth = share.empty() ? 0 : widthOf(share) + 1;
    const std::size_t room = columns > shareWidth ? columns - shareWidth : 0;
    if (widthOf(name) > room) {
        if (room < shortestName) return widthOf(share) <= columns ? share : std::u16string();
        return std::u16string(cutMark) + std::u16string(endThatFits(name, room - 1)) +
               (share.empty() ? u"" : u" " + share);
    }
    return std::u16string(name) + (share.empty() ? u"" : u" " + share);
}

}  // namespace

std::u16string byteText(double bytes) {
    constexpr std::array units = {u" B", u" kB", u" MB", u" GB", u" TB", u" PB", u" EB"};
    std::size_t unit = 0;
    // What would be rounded to 1000 is shown in the next unit.
    for (; bytes >= 999.5 && unit + 1 < units.size(); ++unit)
        bytes /= 1000;
    const std::size_t decimals = unit == 0 || bytes >= 99.95 ? 0 : bytes >= 9.995 ? 1 : 2;
    const double scale = std::pow(10.0, static_cast<double>(decimals));
    const auto digits = static_cast<std::uint64_t>(std::llround(bytes * scale));
    std::u16string text = countText(digits);
    if (decimals > 0) {
        if (text.size() <= decimals) text.insert(0, decimals + 1 - text.size(), u'0');
        text.insert(text.size() - decimals, 1, u'.');
    }
    return text + units[unit];
}

std::u16string groupedText(std::uint64_t number) {
    std::u16string text = countText(number);
    for (std::size_t at = text.size(); at > 3; at -= 3)
        text.insert(at - 3, 1, u',');
    return text;
}

std::u16string durationText(std::uint64_t seconds) {
    const std::uint64_t minutes = seconds / 60;
    if (minutes < 60) return countText(minutes) + u":" + twoDigits(seconds % 60);
    return countText(minutes / 60) + u":" + twoDigits(minutes % 60) + u":" + twoDigits(seconds % 60);
}

std::u16string progressText(const ProgressView& view, std::size_t columns) {
    std::vector<std::u16string> pieces = counts(view);
    while (pieces.size() > 1 && widthOf(joined(pieces)) > columns)
        pieces.pop_back();
    std::u16string text(beginThatFits(joined(pieces), columns));
    if (!text.empty()) text += u": ";
    const std::size_t used = widthOf(text);
    std::u16string present;
    if (used < columns) {
        const std::u16string name = runtime::interpreter::visible(view.name);
        present = presentText(name, shareText(view), columns - used);
    }
    if (present.empty() && !text.empty()) text.resize(text.size() - 2);
    return text + present;
}

}  // namespace korvex::host
