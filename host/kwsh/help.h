// The texts of `help`, made of the manual pages.
//
// A page is a section of the second level. A heading of command names, as "isfile, isfolder", makes it the
// page of these commands: a paragraph with a sentence for each of them, the forms, then sections of the third
// level. Of these, "Examples" is shown at once, and the others when they are asked for.
#pragma once

#include <string>
#include <string_view>

#include "host/kwsh/markdown_layout.h"

namespace korvex::host {

/// All commands and functions, one line each, and the topics.
std::u16string helpOverview(const PageLook& look);

/// The page of one command, function or topic. With a `part`, as "errors", the section of a page whose title
/// has a word that begins so; with "all" the whole page. Raises `HostError` "noHelp" when there is none.
std::u16string helpOf(std::string_view name, std::string_view part, const PageLook& look);

}  // namespace korvex::host
