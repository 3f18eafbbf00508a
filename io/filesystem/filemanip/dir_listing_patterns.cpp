// How `dir` prepares a text with wildcards for the lister.
#include "io/filesystem/filemanip/dir_listing_patterns.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "io/filesystem/filemanip/command_frame.h"
#include "platform/filesystem_core.h"
#include "platform/filesystem_shared.h"
#include "platform/foundation_filesystem.h"
#include "platform/message_identifiers.h"
#include "platform/storage_utility.h"
#include "platform/storage_vfs.h"

namespace korvex::filemanip {

namespace core = korvex::io::filesystem::core;
using fl::filesystem::upath_constant::PATHNAME_SEPARATOR;

namespace {

constexpr std::size_t none = PatternCut::none;
constexpr char16_t wildcard = u'*';
constexpr std::u16string_view recursiveWildcard = u"**";

bool isSeparator(char16_t unit, bool isIri) {
    return isIri ? unit == u'/' : filesystemSharedFcns::isPathSeparator(unit);
}

/// The last separator in front of `end`, or none.
std::size_t lastSeparator(std::u16string_view text, std::size_t end, bool isIri) {
    for (std::size_t i = std::min(end, text.size()); i > 0; --i) {
        if (isSeparator(text[i - 1], isIri)) return i - 1;
    }
    return none;
}

bool isAsciiLetter(char16_t unit) {
    return unit < 0x80 && std::isalpha(static_cast<unsigned char>(unit)) != 0;
}

/// `C:**` and, by a gap that is kept on purpose, `C:**x`.
bool standsBehindDrive(std::u16string_view text, std::size_t place) {
    return place == 2 && text[1] == u':' && isAsciiLetter(text[0]);
}

bool isWholePart(std::u16string_view text, std::size_t place) {
    const std::size_t behind = place + recursiveWildcard.size();
    const bool beginsPart = place == 0 || filesystemSharedFcns::isPathSeparator(text[place - 1]);
    const bool endsPart = behind == text.size() || filesystemSharedFcns::isPathSeparator(text[behind]);
    return beginsPart && endsPart;
}

/// Texts at which a path turns away from where it was typed.
struct RelativeForms {
    const std::u16string separator{PATHNAME_SEPARATOR};
    const std::array<std::u16string, 3> whole{u".", u"..", u"~"};
    const std::array<std::u16string, 2> beginnings{u"." + separator, u".." + separator};
    const std::array<std::u16string, 3> anywhere{separator + u"." + separator, separator + u".." + separator,
                                                 u"~" + separator};
};

bool goesThroughRelativeForm(const std::u16string& text) {
    static const RelativeForms forms;
    const auto isText = [&](const std::u16string& form) { return text == form; };
    const auto beginsText = [&](const std::u16string& form) { return text.starts_with(form); };
    const auto isInText = [&](const std::u16string& form) { return text.find(form) != none; };
    return std::ranges::any_of(forms.beginnings, beginsText) || std::ranges::any_of(forms.whole, isText) ||
           std::ranges::any_of(forms.anywhere, isInText);
}

struct SplitPath {
    std::u16string head;
    std::u16string tail;
};

/// Cuts in front of the part with the first wildcard; a root stays whole.
SplitPath splitAroundWildcard(const std::u16string& text) {
    const std::size_t star = text.find(wildcard);
    if (star == none) return {text, {}};
    const std::size_t separator = star == 0 ? none : text.rfind(PATHNAME_SEPARATOR, star - 1);
    const std::size_t colon = text.find(u':');
    if (separator == none) {
        // Without a drive the text stays whole, wildcard and all: a single part is made absolute as it is.
        if (colon != 1) return {text, {}};
        return {text.substr(0, 2), text.substr(2)};
    }
    if (separator == 0) return {std::u16string(1, PATHNAME_SEPARATOR), text.substr(1)};
    if (separator == 2 && text[1] == u':') return {text.substr(0, 3), text.substr(3)};
    return {text.substr(0, separator), text.substr(separator + 1)};
}

}  // namespace

void validateRecursiveGlobs(std::u16string_view text) {
    for (std::size_t place = text.find(recursiveWildcard); place != none;
         place = text.find(recursiveWildcard, place + 1)) {
        if (standsBehindDrive(text, place)) continue;
        if (!isWholePart(text, place)) raise(KORVEX::dir::invalidGlob());
    }
}

void expandRecursiveTail(std::u16string& text) {
    const std::u16string native =
        text.empty() ? std::u16string() : fl::filesystem::detail::make_native_form(text, true);
    if (fl::filesystem::detail::extract_filename(native) == recursiveWildcard) text += u"/*";
}

std::u16string displayFolderPrefix(const std::u16string& text) {
    if (goesThroughRelativeForm(text)) return {};
    const std::size_t star = text.find(wildcard);
    if (star == none) return text;
    // On purpose whatever stands directly before the wildcard goes: `foo*` gives `fo`.
    return star == 0 ? std::u16string() : text.substr(0, star - 1);
}

std::u16string makeAbsoluteAroundWildcard(const std::u16string& text, const std::u16string& currentText) {
    auto [head, tail] = splitAroundWildcard(text);
    if (head.empty()) {
        head = currentText;
    } else {
        core::relativeToAbsolute(head, core::KeepLinksAndDots);
    }
    return joinPathParts(head, tail);
}

std::u16string joinPathParts(const std::u16string& head, const std::u16string& tail) {
    const bool needsSeparator = !head.empty() && !tail.empty() && head.back() != PATHNAME_SEPARATOR &&
                                tail.front() != PATHNAME_SEPARATOR;
    return needsSeparator ? head + PATHNAME_SEPARATOR + tail : head + tail;
}

bool hasWildcardInFolderPart(std::u16string_view text, bool isIri) {
    const std::size_t separator = lastSeparator(text, text.size(), isIri);
    if (separator == none) return text.ends_with(recursiveWildcard);
    return text.substr(0, separator).find(wildcard) != none;
}

PatternCut cutPattern(const std::u16string& text, std::size_t searchStart, bool isIri, bool isHttp,
                      const std::u16string& currentText) {
    PatternCut cut;
    cut.firstStar = text.find(wildcard, searchStart);
    if (isHttp) {
        cut.folderPart = text;
    } else {
        const std::size_t split = lastSeparator(text, cut.firstStar, isIri);
        const std::size_t patternBegin = split == none ? 0 : split + 1;
        cut.folderPart = text.substr(0, patternBegin);
        cut.patternPart = text.substr(patternBegin);
    }
    if (cut.folderPart.empty()) cut.folderPart = currentText;
    if (cut.folderPart.ends_with(u':')) {
        const bool hasScheme = foundation::storage::vfs::hasIRIPrefix(cut.folderPart);
        cut.folderPart += hasScheme ? u'/' : PATHNAME_SEPARATOR;
    }
    // The pattern is of names; the folder stays encoded, for it becomes a location as it stands.
    if (isIri) foundation::storage::utility::decodeURL(cut.patternPart);
    return cut;
}

}  // namespace korvex::filemanip
