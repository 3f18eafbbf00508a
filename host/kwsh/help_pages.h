// The manual pages, parted into what can be asked for by name.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/kwsh/markdown.h"

namespace korvex::host {

/// A section of the third level, or what stands in front of the first one.
struct HelpSection {
    std::u16string title;               ///< empty in front of the first one
    std::vector<MarkdownBlock> blocks;  ///< with the title as a heading, when there is one
};

struct HelpPage {
    /// As the heading has it: one name, or several with a comma between them.
    std::u16string title;
    std::vector<std::u16string> names;
    std::vector<HelpSection> sections;
};

/// The pages of docs/commands.md and docs/kwsh.md, in their order.
const std::vector<HelpPage>& commandPages();
const std::vector<HelpPage>& hostPages();

std::vector<HelpPage> readPages(std::u16string_view document);

/// The page of that name, in either document, or one of the host with that word in its title; null when there
/// is none. Case is ignored.
const HelpPage* findPage(std::u16string_view name);

/// What the first paragraph of a page says of one of its names: its sentence, without the name and the point.
/// Empty when there is none.
std::u16string summaryOf(const HelpPage& page, std::u16string_view name);

/// The section whose title has a word that begins with this text, case ignored; null when there is none.
const HelpSection* findSection(const HelpPage& page, std::u16string_view word);

/// What can be asked for of a page: the first word of each section's title in small letters, and "all". Empty
/// for a page without sections.
std::vector<std::u16string> partsOf(const HelpPage& page);
inline constexpr std::u16string_view wholePage = u"all";

/// Whether both are the same but for the case of ASCII letters.
bool isSameWord(std::u16string_view one, std::u16string_view other);

}  // namespace korvex::host
