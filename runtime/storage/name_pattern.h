// Wildcard patterns over names: `*` for any run of 16-bit units, `?` for one.
#pragma once

#include <string>
#include <string_view>

namespace korvex::runtime::storage {

class NamePattern {
public:
    /// The empty pattern matches everything; one without wildcard just that name.
    explicit NamePattern(std::u16string_view pattern) : pattern_(pattern) {}

    /// In time proportional to both lengths multiplied, at worst.
    bool matches(std::u16string_view name) const noexcept;
    bool matchesEverything() const noexcept { return pattern_.empty() || pattern_ == u"*"; }
    bool hasWildcard() const noexcept { return pattern_.find_first_of(u"*?") != std::u16string::npos; }

private:
    std::u16string pattern_;
};

}  // namespace korvex::runtime::storage
