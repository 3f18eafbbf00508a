// Wildcard patterns over names.
#include "runtime/storage/name_pattern.h"

#include <unicode/uchar.h>

namespace korvex::runtime::storage {

namespace {

char16_t capitalOf(char16_t unit) noexcept { return static_cast<char16_t>(u_toupper(unit)); }

}  // namespace

NamePattern::NamePattern(std::u16string_view pattern, paths::PathStyle style)
    : style_(style), pattern_(pattern) {
    if (style != paths::PathStyle::windows) return;
    for (char16_t& unit : pattern_)
        unit = capitalOf(unit);
}

bool NamePattern::matches(std::u16string_view name) const noexcept {
    if (pattern_.empty()) return true;
    // On a mismatch only the last star can give way: it takes in one unit more.
    std::size_t inPattern = 0;
    std::size_t inName = 0;
    std::size_t lastStar = std::u16string::npos;
    std::size_t starTakesTo = 0;
    while (inName < name.size()) {
        if (inPattern < pattern_.size() && pattern_[inPattern] == u'*') {
            lastStar = inPattern++;
            starTakesTo = inName;
        } else if (inPattern < pattern_.size() &&
                   (pattern_[inPattern] == u'?' || isSame(pattern_[inPattern], name[inName]))) {
            ++inPattern;
            ++inName;
        } else if (lastStar != std::u16string::npos) {
            inPattern = lastStar + 1;
            inName = ++starTakesTo;
        } else {
            return false;
        }
    }
    return pattern_.find_first_not_of(u'*', inPattern) == std::u16string::npos;
}

bool NamePattern::isSame(char16_t inPattern, char16_t inName) const noexcept {
    return inPattern == (style_ == paths::PathStyle::windows ? capitalOf(inName) : inName);
}

}  // namespace korvex::runtime::storage
