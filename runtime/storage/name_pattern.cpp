// Wildcard patterns over names.
#include "runtime/storage/name_pattern.h"

namespace korvex::runtime::storage {

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
                   (pattern_[inPattern] == u'?' || pattern_[inPattern] == name[inName])) {
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

}  // namespace korvex::runtime::storage
