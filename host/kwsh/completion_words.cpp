// Lists of names are made once, of the tables of commands and functions.
#include "host/kwsh/completion_words.h"

#include <algorithm>
#include <set>

#include "host/kwsh/command_module.h"
#include "host/kwsh/help_pages.h"
#include "host/kwsh/host_commands.h"
#include "host/kwsh/host_functions.h"
#include "host/kwsh/statement.h"
#include "host/kwsh/values.h"
#include "platform/storage_vfs.h"
#include "runtime/paths/path_style.h"

namespace korvex::host {

namespace paths = runtime::paths;
namespace vfs = foundation::storage::vfs;

namespace {

bool isSeparatorIn(char16_t unit) noexcept { return paths::isSeparator(unit, paths::nativeStyle); }

std::vector<std::u16string> makeCalledNames() {
    std::set<std::u16string> names;
    for (const std::string_view name : moduleCommandNames())
        names.insert(widen(name));
    for (const HostCommand& command : hostCommands())
        names.insert(widen(command.name));
    for (const HostFunction& function : hostFunctions())
        names.insert(widen(function.name));
    return {names.begin(), names.end()};
}

std::vector<std::u16string> makeHelpTopics() {
    std::set<std::u16string> names(calledNames().begin(), calledNames().end());
    for (const HelpPage& page : hostPages())
        names.insert(page.names.begin(), page.names.end());
    return {names.begin(), names.end()};
}

}  // namespace

bool beginsWith(std::u16string_view text, std::u16string_view begin, Case letters) {
    if (letters == Case::counts) return text.starts_with(begin);
    return text.size() >= begin.size() && isSameWord(text.substr(0, begin.size()), begin);
}

std::vector<std::u16string_view> wordsOf(std::u16string_view words) {
    std::vector<std::u16string_view> found;
    while (!words.empty()) {
        const std::size_t end = std::min(words.find(u' '), words.size());
        found.push_back(words.substr(0, end));
        words.remove_prefix(std::min(end + 1, words.size()));
    }
    return found;
}

const std::vector<std::u16string>& calledNames() {
    static const std::vector<std::u16string> names = makeCalledNames();
    return names;
}

const std::vector<std::u16string>& blockNames() {
    static const std::vector<std::u16string> names = [] {
        std::vector<std::u16string> spellings;
        for (const SpelledBlockWord& word : blockWords)
            spellings.push_back(widen(word.spelling));
        return spellings;
    }();
    return names;
}

const std::vector<std::u16string>& helpTopics() {
    static const std::vector<std::u16string> topics = makeHelpTopics();
    return topics;
}

std::vector<std::u16string> helpParts(std::u16string_view topic) {
    const HelpPage* const page = findPage(topic);
    return page != nullptr ? partsOf(*page) : std::vector<std::u16string>();
}

std::size_t folderLength(std::u16string_view path) noexcept {
    const auto last = std::find_if(path.rbegin(), path.rend(), isSeparatorIn);
    return static_cast<std::size_t>(path.rend() - last);
}

char16_t separatorBehind(const std::u16string& folder) {
    return vfs::hasIRIPrefix(folder) ? u'/' : paths::preferredSeparator(paths::nativeStyle);
}

bool needsQuotes(std::u16string_view word, bool isFirst) noexcept {
    constexpr std::u16string_view special = u" \t;,'\"()[]{}";
    if (word.find_first_of(special) != std::u16string_view::npos) return true;
    if (word.starts_with(u'%') || word.starts_with(u"...")) return true;
    return isFirst && word.starts_with(u'=');
}

std::u16string quoted(std::u16string_view text, char16_t quote, bool isClosed) {
    std::u16string written(1, quote);
    for (const char16_t unit : text) {
        written += unit;
        if (unit == quote) written += quote;
    }
    if (isClosed) written += quote;
    return written;
}

}  // namespace korvex::host
