// Parting documents by their headings.
#include "host/kwsh/help_pages.h"

#include <algorithm>

#include "host/kwsh/help_documents.h"
#include "runtime/text/encoding.h"

namespace korvex::host {
namespace {

constexpr std::size_t pageLevel = 2;
constexpr std::size_t sectionLevel = 3;

char16_t smallLetter(char16_t unit) noexcept {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit - u'A' + u'a') : unit;
}

bool beginsWithWord(std::u16string_view text, std::u16string_view word) {
    return text.size() >= word.size() && isSameWord(text.substr(0, word.size()), word);
}

/// What stands between commas, or between blanks, of a title.
std::vector<std::u16string> pieces(std::u16string_view title, std::u16string_view separators) {
    std::vector<std::u16string> found;
    for (std::size_t begin = title.find_first_not_of(separators); begin != std::u16string_view::npos;) {
        const std::size_t end = std::min(title.find_first_of(separators, begin), title.size());
        found.emplace_back(title.substr(begin, end - begin));
        begin = title.find_first_not_of(separators, end);
    }
    return found;
}

/// A title is a list of names, or one name of several words.
std::vector<std::u16string> namesOf(const std::u16string& title) {
    const bool isList = title.find(u',') != std::u16string::npos;
    return isList ? pieces(title, u", ") : std::vector<std::u16string>{title};
}

bool hasWord(std::u16string_view title, std::u16string_view word) {
    const std::vector<std::u16string> words = pieces(title, u" ,");
    return std::ranges::any_of(words, [word](const auto& other) { return isSameWord(other, word); });
}

}  // namespace

bool isSameWord(std::u16string_view one, std::u16string_view other) {
    return std::ranges::equal(one, other, {}, smallLetter, smallLetter);
}

std::vector<HelpPage> readPages(std::u16string_view document) {
    std::vector<HelpPage> pages;
    for (MarkdownBlock& block : readMarkdown(document)) {
        if (block.kind == BlockKind::heading && block.level <= pageLevel) {
            // What stands in front of the first page belongs to none.
            if (block.level < pageLevel) continue;
            HelpPage& page = pages.emplace_back();
            page.title = plainText(block.text);
            page.names = namesOf(page.title);
            page.sections.emplace_back();
            continue;
        }
        if (pages.empty()) continue;
        std::vector<HelpSection>& sections = pages.back().sections;
        if (block.kind == BlockKind::heading && block.level == sectionLevel) {
            sections.emplace_back().title = plainText(block.text);
        }
        sections.back().blocks.push_back(std::move(block));
    }
    return pages;
}

const std::vector<HelpPage>& commandPages() {
    static const std::vector<HelpPage> pages = readPages(runtime::text::fromBytes(commandsDocument()));
    return pages;
}

const std::vector<HelpPage>& hostPages() {
    static const std::vector<HelpPage> pages = readPages(runtime::text::fromBytes(hostDocument()));
    return pages;
}

const HelpPage* findPage(std::u16string_view name) {
    const auto isName = [name](const std::u16string& other) { return isSameWord(name, other); };
    for (const std::vector<HelpPage>* pages : {&commandPages(), &hostPages()}) {
        for (const HelpPage& page : *pages) {
            if (std::ranges::any_of(page.names, isName)) return &page;
        }
    }
    for (const HelpPage& page : hostPages()) {
        if (hasWord(page.title, name)) return &page;
    }
    return nullptr;
}

std::u16string summaryOf(const HelpPage& page, std::u16string_view name) {
    const std::vector<MarkdownBlock>& blocks = page.sections.front().blocks;
    if (blocks.empty() || blocks.front().kind != BlockKind::paragraph) return {};
    const std::u16string& text = blocks.front().text;
    const std::u16string mark = u'`' + std::u16string(name) + u"` ";
    const std::size_t at = text.find(mark);
    if (at == std::u16string::npos) return {};
    const std::size_t begin = at + mark.size();
    std::size_t end = text.find(u". ", begin);
    if (end == std::u16string::npos) end = text.size() - (text.ends_with(u'.') ? 1 : 0);
    return plainText(std::u16string_view(text).substr(begin, end - begin));
}

std::vector<std::u16string> partsOf(const HelpPage& page) {
    std::vector<std::u16string> parts;
    for (const HelpSection& section : page.sections) {
        if (section.title.empty()) continue;
        std::u16string& part = parts.emplace_back(section.title.substr(0, section.title.find(u' ')));
        std::ranges::transform(part, part.begin(), smallLetter);
    }
    if (!parts.empty()) parts.emplace_back(wholePage);
    return parts;
}

const HelpSection* findSection(const HelpPage& page, std::u16string_view word) {
    for (const HelpSection& section : page.sections) {
        const std::vector<std::u16string> words = pieces(section.title, u" ,");
        if (std::ranges::any_of(words, [word](const auto& other) { return beginsWithWord(other, word); })) {
            return &section;
        }
    }
    return nullptr;
}

}  // namespace korvex::host
