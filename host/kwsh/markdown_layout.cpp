// One function a kind of block; tables choose between columns and a list.
#include "host/kwsh/markdown_layout.h"

#include <algorithm>
#include <numeric>
#include <vector>

#include "host/kwsh/colours.h"
#include "host/kwsh/text_layout.h"

namespace korvex::host {
namespace {

constexpr std::size_t longestLine = 100;
constexpr std::size_t tableIndent = 2;
constexpr std::size_t codeIndent = 4;
constexpr std::size_t gap = 2;
/// What is narrower than this is no column to read a sentence in.
constexpr std::size_t narrowestSentence = 24;

using Row = std::vector<std::u16string>;

void appendLine(std::u16string& text, std::size_t indent, std::u16string_view line) {
    if (!line.empty()) text.append(indent, u' ') += line;
    text += u'\n';
}

/// `first` in front of the first line, blanks of its width in front of the others.
void appendHanging(std::u16string& text, std::u16string_view first, std::u16string_view words,
                   std::size_t columns) {
    const std::size_t indent = widthOf(first);
    const std::size_t room = columns > indent ? columns - indent : 1;
    std::u16string begin(first);
    for (const std::u16string& line : wrapped(words, room)) {
        text += begin + line + u'\n';
        begin.assign(indent, u' ');
    }
}

// --------------------------------------------------------------------------------------------- tables

class TableLayout {
public:
    TableLayout(const MarkdownBlock& table, std::size_t columns, bool isColoured)
        : columns_(columns), isColoured_(isColoured) {
        for (const Row& row : table.rows) {
            // The forms of a command need no titles.
            hasTitles_ = hasTitles_ || (rows_.empty() && row.front() != u"form");
            Row& cells = rows_.emplace_back();
            for (const std::u16string& cell : row)
                cells.push_back(cells.empty() ? plainFirstCell(cell) : plainText(cell));
            count_ = std::max(count_, cells.size());
        }
        for (Row& row : rows_)
            row.resize(count_);
    }

    std::u16string text() {
        if (rows_.empty() || count_ == 0) return {};
        measure();
        const std::size_t leading = leadingWidth();
        if (leading + narrowestSentence > columns_ && leading + widestLast_ > columns_) return list();
        return inColumns(leading);
    }

private:
    std::span<const Row> shownRows() const { return std::span(rows_).subspan(hasTitles_ ? 0 : 1); }

    /// Of two columns the first may be too narrow for a few of its cells; these have a line of their own.
    void measure() {
        widths_.assign(count_ - 1, 0);
        widestLast_ = 0;
        std::size_t wideCells = 0;
        const std::size_t widest = count_ == 2 ? columns_ / 2 : columns_;
        for (const Row& row : shownRows()) {
            for (std::size_t at = 0; at + 1 < count_; ++at) {
                const std::size_t width = widthOf(row[at]);
                if (width > widest) {
                    ++wideCells;
                } else {
                    widths_[at] = std::max(widths_[at], width);
                }
            }
            widestLast_ = std::max(widestLast_, widthOf(row.back()));
        }
        if (2 * wideCells > shownRows().size()) widths_.assign(count_ - 1, columns_);
    }

    std::size_t leadingWidth() const {
        return std::accumulate(widths_.begin(), widths_.end(), tableIndent + gap * widths_.size());
    }

    std::u16string inColumns(std::size_t leading) const {
        std::u16string text;
        for (const Row& row : shownRows())
            appendRow(text, row, leading, isColoured_ && &row == &rows_.front());
        return text;
    }

    void appendRow(std::u16string& text, const Row& row, std::size_t leading, bool isTitle) const {
        std::u16string line(tableIndent, u' ');
        for (std::size_t at = 0; at < widths_.size(); ++at) {
            const std::size_t width = widthOf(row[at]);
            line += accented(Accent::heading, row[at], isTitle);
            line.append(width < widths_[at] + gap ? widths_[at] + gap - width : 0, u' ');
            if (width <= widths_[at]) continue;
            text += line + u'\n';
            line.assign(leading, u' ');
        }
        for (const std::u16string& words : wrapped(row.back(), columns_ - leading)) {
            line += accented(Accent::heading, words, isTitle);
            while (line.ends_with(u' '))
                line.pop_back();
            text += line + u'\n';
            line.assign(leading, u' ');
        }
    }

    /// The first cell of a row, and the others below it; with their titles where there are several.
    std::u16string list() const {
        std::u16string text;
        for (std::size_t row = 1; row < rows_.size(); ++row) {
            appendHanging(text, std::u16string(tableIndent, u' '), rows_[row].front(), columns_);
            for (std::size_t at = 1; at < count_; ++at) {
                if (rows_[row][at].empty()) continue;
                std::u16string begin(tableIndent + 4, u' ');
                if (count_ > 2) begin += rows_.front()[at] + u": ";
                appendHanging(text, begin, rows_[row][at], columns_);
            }
        }
        return text;
    }

    const std::size_t columns_;
    const bool isColoured_;
    std::vector<Row> rows_;
    bool hasTitles_ = false;
    std::size_t count_ = 0;
    std::vector<std::size_t> widths_;  ///< of all columns but the last
    std::size_t widestLast_ = 0;
};

// ---------------------------------------------------------------------------------------------- blocks

std::u16string blockText(const MarkdownBlock& block, std::size_t columns, bool isColoured) {
    std::u16string text;
    switch (block.kind) {
        case BlockKind::heading:
            appendLine(text, 0, accented(Accent::heading, plainText(block.text), isColoured));
            break;
        case BlockKind::paragraph: appendHanging(text, {}, plainText(block.text), columns); break;
        case BlockKind::listItem:
            appendHanging(text, std::u16string(block.level, u' ') + block.mark + u' ', plainText(block.text),
                          columns);
            break;
        case BlockKind::table: text = TableLayout(block, columns, isColoured).text(); break;
        case BlockKind::code:
            for (const std::u16string& line : block.lines)
                appendLine(text, codeIndent, line);
            break;
    }
    return text;
}

/// Items of a list, and a heading and what follows it, stand close together.
bool areClose(const MarkdownBlock& before, const MarkdownBlock& block) {
    return before.kind == BlockKind::heading ||
           (before.kind == BlockKind::listItem && block.kind == BlockKind::listItem);
}

}  // namespace

std::u16string layOut(std::span<const MarkdownBlock> blocks, const PageLook& look) {
    const std::size_t columns = std::min(look.columns, longestLine);
    std::u16string text;
    for (std::size_t at = 0; at < blocks.size(); ++at) {
        if (at > 0 && !areClose(blocks[at - 1], blocks[at])) text += u'\n';
        text += blockText(blocks[at], columns, look.isColoured);
    }
    return text;
}

}  // namespace korvex::host
