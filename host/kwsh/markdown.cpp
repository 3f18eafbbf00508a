// Blocks, line by line.
#include "host/kwsh/markdown.h"

#include <algorithm>

#include "host/kwsh/line_buffer.h"

namespace korvex::host {
namespace {

constexpr std::u16string_view fence = u"```";

std::u16string_view withoutBlanksAround(std::u16string_view text) {
    const std::size_t begin = text.find_first_not_of(u" \t");
    if (begin == std::u16string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(u" \t") - begin + 1);
}

/// Units of "#", "##", ... in front of a heading; 0 for any other line.
std::size_t headingLevel(std::u16string_view line) {
    const std::size_t level = std::min(line.find_first_not_of(u'#'), line.size());
    return level > 0 && level < line.size() && line[level] == u' ' ? level : 0;
}

/// "-" or "12." at the begin of a list item's line; empty for any other.
std::u16string_view listMark(std::u16string_view line) {
    if (line.starts_with(u"- ")) return line.substr(0, 1);
    std::size_t digits = 0;
    while (digits < line.size() && isDigit(line[digits]))
        ++digits;
    const bool isNumbered = digits > 0 && line.substr(digits).starts_with(u". ");
    return isNumbered ? line.substr(0, digits + 1) : std::u16string_view();
}

/// The cells of a table's row. A bar behind a backslash is none that parts cells.
std::vector<std::u16string> cellsOf(std::u16string_view line) {
    std::vector<std::u16string> cells;
    std::u16string cell;
    for (std::size_t at = 1; at < line.size(); ++at) {
        if (line[at] == u'|') {
            cells.emplace_back(withoutBlanksAround(cell));
            cell.clear();
        } else {
            if (line[at] == u'\\' && at + 1 < line.size() && line[at + 1] == u'|') ++at;
            cell += line[at];
        }
    }
    if (!withoutBlanksAround(cell).empty()) cells.emplace_back(withoutBlanksAround(cell));
    return cells;
}

/// "|---|---|" below a table's header.
bool isTableRule(std::u16string_view line) {
    return line.find_first_not_of(u"|-: ") == std::u16string_view::npos;
}

/// Signs alone would get lost among those of the sentence. Brackets would not, and in quotes they would be
/// read as a text.
std::u16string codeText(std::u16string_view code) {
    const bool isBracketed = code.starts_with(u'[') || code.starts_with(u'{') || code.starts_with(u'(');
    const bool hasWord = std::ranges::any_of(
        code, [](char16_t unit) { return isNameUnit(unit) || unit == u'\'' || unit == u'"'; });
    return hasWord || isBracketed ? std::u16string(code) : u'\'' + std::u16string(code) + u'\'';
}

struct Link {
    std::u16string_view text;
    std::size_t length = 0;  ///< of the whole, 0 when there is none
};

/// "[text](address)" at the begin.
Link linkAt(std::u16string_view text) {
    if (!text.starts_with(u'[')) return {};
    const std::size_t end = text.find(u']');
    if (end == std::u16string_view::npos || !text.substr(end).starts_with(u"](")) return {};
    const std::size_t addressEnd = text.find(u')', end);
    if (addressEnd == std::u16string_view::npos) return {};
    return {text.substr(1, end - 1), addressEnd + 1};
}

class BlockReader {
public:
    void read(std::u16string_view line) {
        if (isInCode_) return readCode(line);
        const std::u16string_view text = withoutBlanksAround(line);
        if (text.empty() || text.starts_with(u"<!--")) {
            isOpen_ = false;
        } else if (text.starts_with(fence)) {
            begin(BlockKind::code);
            isInCode_ = true;
        } else if (const std::size_t level = headingLevel(line)) {
            begin(BlockKind::heading).level = level;
            blocks_.back().text = withoutBlanksAround(line.substr(level));
            isOpen_ = false;
        } else if (text.front() == u'|') {
            readRow(text);
        } else if (const std::u16string_view mark = listMark(text); !mark.empty()) {
            begin(BlockKind::listItem).level = line.find_first_not_of(u' ');
            blocks_.back().mark = mark;
            blocks_.back().text = withoutBlanksAround(text.substr(mark.size()));
        } else {
            readText(text);
        }
    }

    std::vector<MarkdownBlock> take() { return std::move(blocks_); }

private:
    MarkdownBlock& begin(BlockKind kind) {
        blocks_.emplace_back().kind = kind;
        isOpen_ = true;
        return blocks_.back();
    }
    bool isIn(BlockKind kind) const { return isOpen_ && blocks_.back().kind == kind; }

    void readCode(std::u16string_view line) {
        isInCode_ = !withoutBlanksAround(line).starts_with(fence);
        if (isInCode_) {
            blocks_.back().lines.emplace_back(line);
        } else {
            isOpen_ = false;
        }
    }

    void readRow(std::u16string_view line) {
        if (!isIn(BlockKind::table)) begin(BlockKind::table);
        if (!isTableRule(line)) blocks_.back().rows.push_back(cellsOf(line));
    }

    void readText(std::u16string_view text) {
        if (!isIn(BlockKind::paragraph) && !isIn(BlockKind::listItem)) begin(BlockKind::paragraph);
        std::u16string& whole = blocks_.back().text;
        if (!whole.empty()) whole += u' ';
        whole += text;
    }

    std::vector<MarkdownBlock> blocks_;
    bool isOpen_ = false;
    bool isInCode_ = false;
};

}  // namespace

std::vector<MarkdownBlock> readMarkdown(std::u16string_view document) {
    BlockReader reader;
    while (!document.empty()) {
        const std::size_t end = std::min(document.find(u'\n'), document.size());
        std::u16string_view line = document.substr(0, end);
        if (line.ends_with(u'\r')) line.remove_suffix(1);
        reader.read(line);
        document.remove_prefix(std::min(end + 1, document.size()));
    }
    return reader.take();
}

std::u16string plainFirstCell(std::u16string_view cell) {
    const bool isCodeAlone = cell.size() > 2 && cell.front() == u'`' && cell.find(u'`', 1) == cell.size() - 1;
    return isCodeAlone ? std::u16string(cell.substr(1, cell.size() - 2)) : plainText(cell);
}

std::u16string plainText(std::u16string_view text) {
    std::u16string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::u16string_view rest = text.substr(at);
        if (rest.starts_with(u'`') && rest.find(u'`', 1) != std::u16string_view::npos) {
            const std::u16string_view code = rest.substr(1, rest.find(u'`', 1) - 1);
            plain += codeText(code);
            at += code.size() + 1;
        } else if (rest.starts_with(u"**")) {
            ++at;
        } else if (const Link link = linkAt(rest); link.length > 0) {
            plain += plainText(link.text);
            at += link.length - 1;
        } else {
            plain += text[at];
        }
    }
    return plain;
}

}  // namespace korvex::host
