// Expressions over ICU. The program of an expression is shared, a search belongs to one call.
#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <limits>

#include "platform/regular_expressions.h"

namespace {

void requireSuccess(UErrorCode status) {
    if (U_FAILURE(status)) throw RE_Error(std::string("regular expression: ") + u_errorName(status));
}

/// The text, borrowed.
icu::UnicodeString viewOf(const std::u16string& text) {
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<int32_t>::max())) {
        throw RE_Error("regular expression: the text is too long");
    }
    return icu::UnicodeString(false, text.data(), static_cast<int32_t>(text.size()));
}

}  // namespace

class RE_Tree::Program {
public:
    Program(const std::u16string& pattern, bool ignoresCase) {
        UErrorCode status = U_ZERO_ERROR;
        UParseError place{};
        const uint32_t flags = ignoresCase ? static_cast<uint32_t>(UREGEX_CASE_INSENSITIVE) : 0;
        pattern_.reset(icu::RegexPattern::compile(viewOf(pattern), flags, place, status));
        requireSuccess(status);
    }

    const icu::RegexPattern& pattern() const noexcept { return *pattern_; }

private:
    std::unique_ptr<const icu::RegexPattern> pattern_;
};

namespace {

/// One search through one text, which must live as long.
class Search {
public:
    Search(const icu::RegexPattern& pattern, const std::u16string& text) : text_(viewOf(text)) {
        UErrorCode status = U_ZERO_ERROR;
        matcher_.reset(pattern.matcher(text_, status));
        requireSuccess(status);
    }

    std::optional<RE_Match> from(std::size_t position) {
        UErrorCode status = U_ZERO_ERROR;
        const bool isFound = matcher_->find(static_cast<int64_t>(position), status);
        return found(isFound, status);
    }
    std::optional<RE_Match> next() {
        UErrorCode status = U_ZERO_ERROR;
        const bool isFound = matcher_->find(status);
        return found(isFound, status);
    }

private:
    std::optional<RE_Match> found(bool isFound, UErrorCode status) {
        requireSuccess(status);
        if (!isFound) return std::nullopt;
        const RE_Match match{static_cast<std::size_t>(matcher_->start(status)),
                             static_cast<std::size_t>(matcher_->end(status))};
        requireSuccess(status);
        return match;
    }

    const icu::UnicodeString text_;
    std::unique_ptr<icu::RegexMatcher> matcher_;
};

}  // namespace

RE_Tree::RE_Tree(const std::u16string& pattern, bool ignoresCase)
    : program_(std::make_shared<const Program>(pattern, ignoresCase)) {}

RE_Tree::RE_Tree(const RE_Builder_Space::Builder& builder) : RE_Tree(builder.syntax(), false) {}

std::optional<RE_Match> RE_Tree::match(const std::u16string& text, std::size_t from) const {
    if (from > text.size()) return std::nullopt;
    return Search(program_->pattern(), text).from(from);
}

std::vector<RE_Match> RE_Tree::matchAll(const std::u16string& text) const {
    std::vector<RE_Match> matches;
    Search search(program_->pattern(), text);
    while (const std::optional<RE_Match> match = search.next())
        matches.push_back(*match);
    return matches;
}
