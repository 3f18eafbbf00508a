// Tails of paths are compared as one text: its separators keep the components apart whatever the case rule.
#include "runtime/dispatcher/search_path_tail.h"

#include <algorithm>
#include <utility>

#include "runtime/dispatcher/path_locations.h"
#include "runtime/storage/location.h"

namespace korvex::runtime::dispatcher {

namespace path_management = Velquist::PathManagement;
namespace vfs = foundation::storage::vfs;

namespace {

/// "a//b/" as "/a/b".
std::u16string separatedComponents(std::u16string_view text, paths::PathStyle style) {
    std::u16string path;
    bool isBehindSeparator = true;
    for (const char16_t unit : text) {
        const bool isSeparator = paths::isSeparator(unit, style);
        if (!isSeparator && isBehindSeparator) path += u'/';
        if (!isSeparator) path += unit;
        isBehindSeparator = isSeparator;
    }
    return path;
}

/// The last components of a path, each behind a "/"; nothing when there are not as many.
std::u16string_view lastComponents(std::u16string_view path, std::size_t count) {
    std::size_t begin = path.size();
    for (; count > 0; --count) {
        if (begin == 0) return {};
        begin = path.rfind(u'/', begin - 1);
        if (begin == std::u16string_view::npos) return {};
    }
    return path.substr(begin);
}

}  // namespace

CaseRule caseRuleOf(path_management::FilenameMatchingPolicy policy, paths::PathStyle style) {
    switch (policy) {
        case path_management::MatchCase: return CaseRule::exact;
        case path_management::IgnoreCase: return CaseRule::ignored;
        case path_management::DefaultMatching: break;
    }
    return style == paths::PathStyle::windows ? CaseRule::ignored : CaseRule::exact;
}

bool areSameTexts(std::u16string_view a, std::u16string_view b, CaseRule rule) {
    return areSameNames(a, b,
                        rule == CaseRule::ignored ? paths::PathStyle::windows : paths::PathStyle::posix);
}

PathTail::PathTail(std::u16string_view text, paths::PathStyle style)
    : isAbsolute_(paths::isAbsolute(text, style)) {
    if (isAbsolute_) {
        paths::LocationPath whole = paths::toLocationPath(text, style);
        host_ = std::move(whole.host);
        path_ = std::move(whole.path);
    } else {
        path_ = separatedComponents(text, style);
    }
    components_ = static_cast<std::size_t>(std::ranges::count(path_, u'/'));
}

bool PathTail::names(const vfs::AbsoluteIRI& location, CaseRule rule) const {
    const vfs::AbsoluteIRI::Parts& parts = location.parts();
    if (isAbsolute_) {
        return parts.scheme == storage::localScheme && areSameTexts(parts.host, host_, rule) &&
               areSameTexts(parts.path, path_, rule);
    }
    return components_ > 0 && areSameTexts(lastComponents(parts.path, components_), path_, rule);
}

std::u16string_view PathTail::lastName() const noexcept {
    const std::size_t separator = path_.rfind(u'/');
    if (separator == std::u16string::npos) return {};
    return std::u16string_view(path_).substr(separator + 1);
}

}  // namespace korvex::runtime::dispatcher
