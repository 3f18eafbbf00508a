// Display of values.
#include "host/kwsh/display.h"

#include <algorithm>
#include <vector>

#include "host/kwsh/text_layout.h"
#include "host/kwsh/values.h"
#include "runtime/interpreter/structure_display.h"

namespace korvex::host {

namespace interpreter = runtime::interpreter;

namespace {

constexpr std::u16string_view indent = u"    ";
constexpr std::u16string_view gap = u"    ";

bool isNumeric(const kxArray* array) {
    return kxGetClassID(array) == kxDOUBLE_CLASS || kxGetClassID(array) == kxLOGICAL_CLASS;
}

/// The text of one element of an array that is no structure.
std::u16string elementForm(const kxArray* array, std::size_t index) {
    if (isNumeric(array) || kxGetClassID(array) == kxSTRING_CLASS)
        return interpreter::elementForm(array, index);
    const Value content = shared(kxGetCell(array, index));
    const bool isNumber = isScalar(content.get()) && isNumeric(content.get());
    const std::u16string form = shortForm(content.get());
    return isNumber ? u"{[" + form + u"]}" : u"{" + form + u"}";
}

// ------------------------------------------------------------------------------------------ tables

struct Page {
    std::size_t begin = 0;  ///< storage offset of its first element
    std::size_t rows = 0;
    std::size_t columns = 0;
};

struct Column {
    std::vector<std::u16string> cells;
    std::size_t width = 0;
};

Column columnOf(const kxArray* array, const Page& page, std::size_t column) {
    Column result;
    result.cells.reserve(page.rows);
    for (std::size_t row = 0; row < page.rows; ++row) {
        result.cells.push_back(elementForm(array, page.begin + column * page.rows + row));
        result.width = std::max(result.width, widthOf(result.cells.back()));
    }
    return result;
}

void appendCell(std::u16string& line, const std::u16string& cell, std::size_t width, bool isRightAligned) {
    const std::u16string padding(width - widthOf(cell), u' ');
    line += isRightAligned ? padding + cell : cell + padding;
}

void appendBlock(std::u16string& text, const std::vector<Column>& block, std::size_t rows,
                 bool isRightAligned) {
    for (std::size_t row = 0; row < rows; ++row) {
        std::u16string line;
        for (const Column& column : block) {
            line += line.empty() ? indent : gap;
            appendCell(line, column.cells[row], column.width, isRightAligned);
        }
        while (line.ends_with(u' '))
            line.pop_back();
        text += line + u'\n';
    }
}

/// As many columns from `first` on as fit into the window, at least one.
std::vector<Column> takeBlock(const kxArray* array, const Page& page, std::size_t first,
                              std::size_t windowWidth) {
    std::vector<Column> block;
    std::size_t width = 0;
    for (std::size_t column = first; column < page.columns; ++column) {
        Column next = columnOf(array, page, column);
        width += (block.empty() ? indent : gap).size() + next.width;
        if (!block.empty() && width > windowWidth) break;
        block.push_back(std::move(next));
    }
    return block;
}

std::u16string blockHeading(std::size_t first, std::size_t last) {
    if (first == last) return u"  (column " + countText(first) + u")\n";
    return u"  (columns " + countText(first) + u" to " + countText(last) + u")\n";
}

void appendTable(std::u16string& text, const kxArray* array, const Page& page, std::size_t windowWidth) {
    std::size_t first = 0;
    while (first < page.columns) {
        const std::vector<Column> block = takeBlock(array, page, first, windowWidth);
        if (block.size() < page.columns) {
            text += blockHeading(first + 1, first + block.size());
        }
        appendBlock(text, block, page.rows, isNumeric(array));
        first += block.size();
    }
}

void appendChars(std::u16string& text, const kxArray* chars, const Page& page) {
    const std::span<const char16_t> units = kxGetChars(chars);
    for (std::size_t row = 0; row < page.rows; ++row) {
        std::u16string line;
        for (std::size_t column = 0; column < page.columns; ++column) {
            line += units[page.begin + column * page.rows + row];
        }
        text += std::u16string(indent) + interpreter::visible(std::move(line)) + u'\n';
    }
}

// ------------------------------------------------------------------------------------------- pages

/// "(:,:,2,1)" for the page of that number.
std::u16string pageHeading(std::span<const std::size_t> dimensions, std::size_t page) {
    std::u16string heading = u"  (:,:";
    for (std::size_t at = 2; at < dimensions.size(); ++at) {
        heading += u',' + countText(page % dimensions[at] + 1);
        page /= dimensions[at];
    }
    return heading + u")\n";
}

void appendPages(std::u16string& text, const kxArray* array, std::size_t windowWidth) {
    const auto dimensions = kxGetDimensions(array);
    const std::size_t pageSize = dimensions[0] * dimensions[1];
    const std::size_t pages = kxGetNumberOfElements(array) / pageSize;
    for (std::size_t number = 0; number < pages; ++number) {
        if (pages > 1) text += pageHeading(dimensions, number);
        const Page page{number * pageSize, dimensions[0], dimensions[1]};
        if (kxGetClassID(array) == kxCHAR_CLASS) {
            appendChars(text, array, page);
        } else {
            appendTable(text, array, page, windowWidth);
        }
    }
}

void appendStructure(std::u16string& text, const kxArray* structure) {
    const int fields = kxGetNumberOfFields(structure);
    if (fields == 0) {
        text += std::u16string(indent) + sizeText(structure) + u" struct without fields\n";
        return;
    }
    const bool isOne = isScalar(structure);
    if (!isOne) text += std::u16string(indent) + sizeText(structure) + u" struct with fields:\n";
    for (int field = 0; field < fields; ++field) {
        const std::u16string name = widen(kxGetFieldNameByNumber(structure, field));
        text += indent;
        text += isOne ? name + u": " + shortForm(shared(kxGetFieldByNumber(structure, 0, field)).get())
                      : std::u16string(indent) + name;
        text += u'\n';
    }
}

}  // namespace

std::u16string shortForm(const kxArray* value) { return interpreter::shortForm(value); }

std::u16string displayText(std::string_view name, const kxArray* value, std::size_t columns) {
    std::u16string text = widen(name) + u" =\n";
    if (kxGetClassID(value) == kxSTRUCT_CLASS) {
        appendStructure(text, value);
    } else if (kxIsEmpty(value)) {
        text += std::u16string(indent) + sizeAndClassText(value) + u'\n';
    } else {
        appendPages(text, value, columns);
    }
    return text;
}

}  // namespace korvex::host
