// The part of Markdown that the manual pages use: headings, paragraphs, lists, tables, code.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::host {

enum class BlockKind { heading, paragraph, listItem, table, code };

/// Texts still have the marks that are inside of lines; `plainText` takes them out.
struct MarkdownBlock {
    BlockKind kind = BlockKind::paragraph;
    /// Of a heading: the number of its marks. Of a list item: the blanks in front of it.
    std::size_t level = 0;
    /// Of a list item: "-", or its number with a point.
    std::u16string mark;
    /// Of a heading, a paragraph, a list item: on one line.
    std::u16string text;
    /// Of code, as it stands.
    std::vector<std::u16string> lines;
    /// Of a table, by rows; the first one is the header.
    std::vector<std::vector<std::u16string>> rows;
};

std::vector<MarkdownBlock> readMarkdown(std::u16string_view document);

/// A text without the marks of code, emphasis and links.
std::u16string plainText(std::u16string_view text);
/// The same of the first cell of a table's row, where code that stands alone needs no quotes.
std::u16string plainFirstCell(std::u16string_view cell);

}  // namespace korvex::host
