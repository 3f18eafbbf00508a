// Wildcard patterns over names: `*` for any run of 16-bit units, `?` for one. Capital and small letters are
// the same where the platform's names take them so, unit by unit.
#pragma once

#include <string>
#include <string_view>

#include "runtime/paths/path_style.h"

namespace korvex::runtime::storage {

class NamePattern {
public:
    /// The empty pattern matches everything; one without wildcard just that name.
    explicit NamePattern(std::u16string_view pattern, paths::PathStyle style = paths::nativeStyle);

    /// In time proportional to both lengths multiplied, at worst.
    bool matches(std::u16string_view name) const noexcept;
    bool matchesEverything() const noexcept { return pattern_.empty() || pattern_ == u"*"; }
    bool hasWildcard() const noexcept { return pattern_.find_first_of(u"*?") != std::u16string::npos; }

private:
    bool isSame(char16_t inPattern, char16_t inName) const noexcept;

    paths::PathStyle style_;
    std::u16string pattern_;
};

}  // namespace korvex::runtime::storage
