// Candidates for what is typed, and how they are written at its place.
#include "host/kwsh/completion.h"

#include <algorithm>
#include <optional>

#include "host/kwsh/argument_offers.h"
#include "host/kwsh/completion_place.h"
#include "host/kwsh/completion_words.h"
#include "host/kwsh/session.h"
#include "host/kwsh/text_layout.h"
#include "host/kwsh/values.h"

namespace korvex::host {
namespace {

constexpr std::size_t mostShown = 200;

/// One thing that may be meant.
struct Candidate {
    std::u16string text;   ///< the whole argument, without quotes
    std::u16string shown;  ///< in a list of candidates
    bool isOpen = false;   ///< a folder: more may follow
    bool isBare = false;   ///< a name, which stands without quotes
};

using Candidates = std::vector<Candidate>;

void addWords(Candidates& candidates, std::u16string_view words, std::u16string_view typed, bool isBare,
              std::u16string_view inFront = {}) {
    for (const std::u16string_view word : wordsOf(words)) {
        if (!beginsWith(word, typed, Case::isIgnored)) continue;
        candidates.push_back(
            {std::u16string(inFront) + std::u16string(word), std::u16string(word), false, isBare});
    }
}

void addNames(Candidates& candidates, const std::vector<std::u16string>& names, std::u16string_view typed,
              bool isBare) {
    for (const std::u16string& name : names) {
        if (beginsWith(name, typed, Case::counts)) candidates.push_back({name, name, false, isBare});
    }
}

// ---------------------------------------------------------------------------------------------- files

bool isWanted(const FolderEntry& entry, Offer offer) {
    switch (offer) {
        case Offer::folders: return entry.isFolder;
        case Offer::sourceFiles:
            return entry.isFolder || entry.name.ends_with(u".k") || entry.name.ends_with(u".klx");
        default: return true;
    }
}

/// No key types these, and a line cannot hold them all.
bool hasControlCharacters(std::u16string_view name) {
    return std::ranges::any_of(name, [](char16_t unit) { return unit < 0x20 || unit == 0x7F; });
}

void addFiles(Candidates& candidates, Offer offer, std::u16string_view typed, const CompletionNames& names) {
    const std::size_t nameBegin = folderLength(typed);
    const std::u16string folder(typed.substr(0, nameBegin));
    const std::u16string_view begin = typed.substr(nameBegin);
    const char16_t separator = separatorBehind(folder);
    const auto add = [&](const std::u16string& name, bool isFolder) {
        const std::u16string shown = isFolder ? name + separator : name;
        candidates.push_back({folder + shown, shown, isFolder, false});
    };
    if (begin == u"..") add(u"..", true);
    for (const FolderEntry& entry : names.entries(folder)) {
        const bool isHidden = entry.name.starts_with(u'.') && begin.empty();
        if (isHidden || hasControlCharacters(entry.name) || !isWanted(entry, offer)) continue;
        if (beginsWith(entry.name, begin, Case::counts)) add(entry.name, entry.isFolder);
    }
}

bool offersFiles(Offer offer) {
    return offer == Offer::files || offer == Offer::folders || offer == Offer::sourceFiles;
}

// ------------------------------------------------------------------------------------------ candidates

/// What an argument may be, apart from variables and calls.
Candidates argumentCandidates(const CompletionPlace& place, const ArgumentOffer& offer,
                              const CompletionNames& names) {
    Candidates candidates;
    const bool isWord = place.form == ArgumentForm::word;
    const bool needsBeginning = offersFiles(offer.offer);
    if (!needsBeginning || !place.typed.empty()) {
        // Of a list of words the last one is being typed.
        const std::size_t begin = offer.isList ? place.typed.rfind(u' ') + 1 : 0;
        const std::u16string_view typed = std::u16string_view(place.typed).substr(begin);
        addWords(candidates, offer.words, typed, false, std::u16string_view(place.typed).substr(0, begin));
        if (!isWord) addWords(candidates, offer.wordsInBrackets, typed, false);
    }
    if (place.form == ArgumentForm::bare) addWords(candidates, offer.values, place.typed, true);
    switch (offer.offer) {
        case Offer::variables: addNames(candidates, names.variables(), place.typed, false); break;
        case Offer::packages: addNames(candidates, names.packages(), place.typed, false); break;
        case Offer::helpTopics: addNames(candidates, helpTopics(), place.typed, false); break;
        case Offer::helpParts:
            addNames(candidates, helpParts(place.earlier.front().value_or(u"")), place.typed, false);
            break;
        case Offer::nothing: break;
        default: addFiles(candidates, offer.offer, place.typed, names);
    }
    return candidates;
}

/// What may be called or looked at.
Candidates expressionCandidates(const CompletionPlace& place, const CompletionNames& names) {
    Candidates candidates;
    addNames(candidates, names.variables(), place.typed, true);
    addNames(candidates, calledNames(), place.typed, true);
    if (place.isStatementBegin) addNames(candidates, blockNames(), place.typed, true);
    return candidates;
}

/// A text of which nothing is known is taken for a file's name.
constexpr ArgumentOffer anyText{"", u"", 0, 0, Offer::files};
constexpr ArgumentOffer noText{"", u"", 0, 0, Offer::nothing};

Candidates candidatesAt(const CompletionPlace& place, const CompletionNames& names) {
    const ArgumentOffer* const offer = offerFor(place.command, place.earlier);
    if (place.form == ArgumentForm::word) return argumentCandidates(place, offer ? *offer : noText, names);
    if (place.form == ArgumentForm::quoted) {
        const bool isOfCommand = !place.command.empty() && isCommandName(place.command);
        return argumentCandidates(place, offer ? *offer : isOfCommand ? noText : anyText, names);
    }
    Candidates candidates;
    const bool isArgument = offer != nullptr;
    if (!isArgument || !place.typed.empty()) candidates = expressionCandidates(place, names);
    if (isArgument && (candidates.empty() || !offer->values.empty())) {
        candidates = argumentCandidates(place, *offer, names);
    }
    return candidates;
}

// ------------------------------------------------------------------------------------------- writing

/// The quote that a text is written with; 0 when it needs none.
char16_t quoteFor(const CompletionPlace& place, std::u16string_view line, std::u16string_view text) {
    if (place.quote != u'\0') return place.quote;
    constexpr char16_t usual = u'\'';
    if (place.form != ArgumentForm::word) return usual;
    const char16_t first = place.begin < line.size() ? line[place.begin] : u'\0';
    if (first == u'\'' || first == u'"') return first;
    return needsQuotes(text, place.earlier.empty()) ? usual : u'\0';
}

std::u16string written(const Candidate& candidate, char16_t quote, bool isClosed) {
    if (candidate.isBare || quote == u'\0') return candidate.text;
    return quoted(candidate.text, quote, isClosed);
}

/// What all candidates begin with.
std::u16string commonBegin(const Candidates& candidates) {
    std::u16string common = candidates.front().text;
    for (const Candidate& candidate : candidates) {
        const auto end = std::ranges::mismatch(common, candidate.text).in1;
        common.erase(end, common.end());
    }
    // No half of a pair.
    if (!common.empty() && common.back() >= 0xD800 && common.back() <= 0xDBFF) common.pop_back();
    return common;
}

/// The one candidate, closed, with a blank behind a word.
void writeWhole(Completion& completion, const CompletionPlace& place, const Candidate& candidate,
                std::u16string_view text, std::u16string_view rest) {
    const char16_t quote = quoteFor(place, text, candidate.text);
    completion.text = written(candidate, quote, !candidate.isOpen);
    const bool isQuoted = !candidate.isBare && quote != u'\0';
    // A quote that is there already closes it.
    const bool hasQuote = isQuoted && !candidate.isOpen && rest.starts_with(quote);
    if (hasQuote) ++completion.end;
    const bool hasBlank = rest.substr(hasQuote ? 1 : 0).starts_with(u' ');
    if (place.form == ArgumentForm::word && !candidate.isOpen && !hasBlank) completion.text += u' ';
}

}  // namespace

Completion complete(std::u16string_view before, std::u16string_view line, std::size_t cursor,
                    const CompletionNames& names) {
    const std::vector<std::u16string> variables = names.variables();
    const auto hasCommandForm = [&](std::string_view name) {
        return isCommandName(name) && std::ranges::find(variables, widen(name)) == variables.end();
    };
    const std::u16string text = std::u16string(before) + std::u16string(line.substr(0, cursor));
    Completion completion{cursor, cursor, {}, {}};
    const std::optional<CompletionPlace> place = placeAtEnd(text, hasCommandForm);
    if (!place || place->begin < before.size()) return completion;

    const Candidates candidates = candidatesAt(*place, names);
    completion.begin = place->begin - before.size();
    completion.text = line.substr(completion.begin, cursor - completion.begin);
    if (candidates.empty()) return completion;
    if (candidates.size() == 1) {
        writeWhole(completion, *place, candidates.front(), text, line.substr(cursor));
    } else {
        const std::u16string common = commonBegin(candidates);
        const Candidate begin{common, {}, true, candidates.front().isBare};
        // Candidates that begin with another case than was typed may have less in common.
        if (common.size() > place->typed.size()) {
            completion.text = written(begin, quoteFor(*place, text, common), false);
        }
    }
    for (const Candidate& candidate : candidates)
        completion.candidates.push_back(candidate.shown);
    return completion;
}

std::u16string candidateList(const std::vector<std::u16string>& candidates, std::size_t columns) {
    std::vector<std::u16string> shown = candidates;
    if (shown.size() > mostShown) shown.resize(mostShown);
    std::u16string list = inColumns(shown, columns);
    if (candidates.size() > mostShown) {
        list += u"... and " + countText(candidates.size() - mostShown) + u" more\n";
    }
    return list;
}

}  // namespace korvex::host
