// The catalog's resource bundles: the entries as they are written, with their placeholders. Any thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace korvex::runtime::messages {

/// The pattern of an entry in the nearest of: the locale, the locales above it ("de" above "de_AT"), English.
/// Nothing when no bundle has it.
std::optional<std::u16string> entryPattern(const std::string& component, const std::string& key,
                                           const std::string& locale);

/// The keys of all the entries that a component has in exactly this language; "root" is English. Sorted.
/// Empty when there is no such bundle.
std::vector<std::string> entryKeys(const std::string& component, const std::string& language);

}  // namespace korvex::runtime::messages
