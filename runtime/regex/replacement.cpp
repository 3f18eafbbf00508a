// Replacing what an expression finds.
#include "platform/regular_expressions.h"

namespace {

std::u16string withoutEscapes(const std::u16string& replacement) {
    std::u16string inserted;
    for (std::size_t i = 0; i < replacement.size(); ++i) {
        const bool isEscape = replacement[i] == u'\\' && i + 1 < replacement.size();
        inserted += isEscape ? replacement[++i] : replacement[i];
    }
    return inserted;
}

}  // namespace

RE_Replace::RE_Replace(const std::u16string& replacement) : inserted_(withoutEscapes(replacement)) {}

std::u16string RE_Replace::replace(const std::u16string& text, const RE_Tree& tree) const {
    std::u16string result;
    std::size_t kept = 0;  // what stands in front of it is in the result
    for (const RE_Match& match : tree.matchAll(text)) {
        if (match.begin == match.end) continue;
        result.append(text, kept, match.begin - kept).append(inserted_);
        kept = match.end;
    }
    return result.append(text, kept);
}
