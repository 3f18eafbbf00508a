// Clean-ups of texts on their way to becoming locations.
#include "platform/storage_utility.h"

#include <algorithm>
#include <cstddef>

#include "platform/storage_vfs.h"
#include "runtime/paths/path_style.h"
#include "runtime/paths/path_text.h"

namespace foundation::storage::utility {

namespace paths = korvex::runtime::paths;

namespace {

constexpr std::u16string_view behindScheme = u"://";

char16_t smallLetter(char16_t unit) noexcept {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + (u'a' - u'A')) : unit;
}

bool isHexadecimalDigit(char16_t unit) noexcept {
    const char16_t small = smallLetter(unit);
    return (unit >= u'0' && unit <= u'9') || (small >= u'a' && small <= u'f');
}

void makeSmall(std::u16string& text, std::size_t begin, std::size_t end) noexcept {
    for (std::size_t i = begin; i < end; ++i)
        text[i] = smallLetter(text[i]);
}

void makeEscapesCapital(std::u16string& text, std::size_t begin) noexcept {
    const auto capital = [](char16_t unit) {
        return unit >= u'a' && unit <= u'f' ? static_cast<char16_t>(unit - (u'a' - u'A')) : unit;
    };
    for (std::size_t i = text.find(u'%', begin); i < text.size(); i = text.find(u'%', i + 1)) {
        const bool isEscape =
            i + 2 < text.size() && isHexadecimalDigit(text[i + 1]) && isHexadecimalDigit(text[i + 2]);
        if (!isEscape) continue;
        text[i + 1] = capital(text[i + 1]);
        text[i + 2] = capital(text[i + 2]);
    }
}

void foldSlashes(std::u16string& text, std::size_t begin) {
    const auto first = text.begin() + static_cast<std::ptrdiff_t>(begin);
    const auto last = std::unique(
        first, text.end(), [](char16_t left, char16_t right) { return left == u'/' && right == u'/'; });
    text.erase(last, text.end());
}

}  // namespace

void normalizeURL(std::u16string& text) {
    const std::size_t schemeEnd = text.find(u':');
    if (!vfs::hasIRIPrefix(text) || text.compare(schemeEnd, behindScheme.size(), behindScheme) != 0) return;
    makeSmall(text, 0, schemeEnd);

    const std::size_t authority = schemeEnd + behindScheme.size();
    const std::size_t path = std::min(text.find(u'/', authority), text.size());
    const std::size_t user = text.rfind(u'@', path);
    const bool hasUser = user != std::u16string::npos && user >= authority;
    makeSmall(text, hasUser ? user : authority, path);

    makeEscapesCapital(text, path);
    const bool isWeb = text.starts_with(u"http://") || text.starts_with(u"https://");
    if (!isWeb) foldSlashes(text, path);
}

void convertWindowsBackslashes(std::u16string& text) { paths::replaceBackslashes(text, paths::nativeStyle); }

void handleWindowsTrailingDotsAndSpaces(std::u16string& path) {
    paths::dropTrailingDotsAndSpaces(path, paths::nativeStyle);
}

}  // namespace foundation::storage::utility
