// Manual pages as a terminal shows them.
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "host/kwsh/markdown.h"

namespace korvex::host {

struct PageLook {
    /// Width of the window. Lines are no longer than people like to read, however wide it is.
    std::size_t columns = 80;
    bool isColoured = false;
};

/// The blocks, an empty line between them, without marks. Tables keep their columns where there is room, and
/// are lists otherwise. Lines fit into the window but for code and for words that are wider.
std::u16string layOut(std::span<const MarkdownBlock> blocks, const PageLook& look);

}  // namespace korvex::host
