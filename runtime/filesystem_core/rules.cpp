// Words that a user may write: names of options and their values.
#include <algorithm>

#include "platform/filesystem_core.h"
#include "platform/message_catalog.h"

namespace korvex::io::filesystem::core {

namespace {

bool isSameWord(const std::u16string& left, const std::u16string& right) {
    return fl::i18n::detail::compare(left.data(), left.size(), right.data(), right.size(),
                                     fl::i18n::detail::case_insensitive) == 0;
}

}  // namespace

bool validateRuleName(std::u16string& text, const std::u16string& ruleName) {
    if (!isSameWord(text, ruleName)) return false;
    text = ruleName;
    return true;
}

std::u16string validateRuleValues(std::u16string& value, const std::vector<std::u16string>& allowed) {
    const auto word = std::find_if(allowed.begin(), allowed.end(),
                                   [&](const std::u16string& known) { return isSameWord(value, known); });
    if (word == allowed.end()) return {};
    value = *word;
    return value;
}

}  // namespace korvex::io::filesystem::core
