// Joining arrays.
#include "host/kwsh/concatenation.h"

#include <algorithm>

#include "host/kwsh/failure.h"
#include "platform/string_matrix.h"

namespace korvex::host {
namespace {

[[noreturn]] void raiseBad(const resource_core::BaseMsgID& message) {
    throw HostError("badConcatenation", message);
}

bool isZeroByZero(const kxArray* array) {
    const auto dimensions = kxGetDimensions(array);
    return dimensions.size() == 2 && dimensions[0] == 0 && dimensions[1] == 0;
}

template <class Visitor>
void forEachElement(const ValueRows& rows, const Visitor& visit) {
    for (const std::vector<Value>& row : rows) {
        for (const Value& element : row)
            visit(element.get());
    }
}

/// The class of the result; an empty double next to other classes counts for nothing.
kxClassID commonClass(const ValueRows& rows) {
    std::vector<kxClassID> classes;
    forEachElement(rows, [&](const kxArray* element) {
        const kxClassID classID = kxGetClassID(element);
        const bool countsForNothing = classID == kxDOUBLE_CLASS && isZeroByZero(element);
        if (!countsForNothing && std::count(classes.begin(), classes.end(), classID) == 0) {
            classes.push_back(classID);
        }
    });
    const auto has = [&](kxClassID classID) {
        return std::count(classes.begin(), classes.end(), classID) != 0;
    };
    if (classes.empty()) return kxDOUBLE_CLASS;
    if (classes.size() == 1) return classes[0];
    if (classes.size() == 2 && has(kxSTRING_CLASS) && has(kxCHAR_CLASS)) return kxSTRING_CLASS;
    if (classes.size() == 2 && has(kxDOUBLE_CLASS) && has(kxLOGICAL_CLASS)) return kxDOUBLE_CLASS;
    raiseBad(messages::mixedClasses());
}

Value asString(const kxArray* text) {
    if (!Velquist::String::isCharacterVector(text))
        raiseBad(messages::stringsJoinRows(sizeAndClassText(text)));
    return makeString(scalarText(text));
}

Value asDoubles(const kxArray* logicals) {
    const auto dimensions = kxGetDimensions(logicals);
    Value doubles = makeArray(kxDOUBLE_CLASS, {dimensions.begin(), dimensions.end()});
    std::ranges::copy(kxGetLogicals(logicals), kxGetDoubles(doubles.get()).begin());
    return doubles;
}

Value converted(const kxArray* element, kxClassID classID) {
    if (kxGetClassID(element) == classID) return shared(element);
    return classID == kxSTRING_CLASS ? asString(element) : asDoubles(element);
}

bool haveSameFields(const kxArray* first, const kxArray* second) {
    if (kxGetNumberOfFields(first) != kxGetNumberOfFields(second)) return false;
    for (int field = 0; field < kxGetNumberOfFields(first); ++field) {
        if (kxGetFieldNumber(second, kxGetFieldNameByNumber(first, field)) != field) return false;
    }
    return true;
}

/// The elements that take part, converted to the class of the result.
ValueRows takingPart(const ValueRows& rows, kxClassID classID) {
    ValueRows kept;
    for (const std::vector<Value>& row : rows) {
        std::vector<Value> keptRow;
        for (const Value& element : row) {
            const bool becomesString =
                classID == kxSTRING_CLASS && kxGetClassID(element.get()) == kxCHAR_CLASS;
            if (isZeroByZero(element.get()) && !becomesString) continue;
            keptRow.push_back(converted(element.get(), classID));
        }
        if (!keptRow.empty()) kept.push_back(std::move(keptRow));
    }
    return kept;
}

struct Shape {
    std::size_t rows = 0;
    std::size_t columns = 0;
};

Shape shapeOfRow(const std::vector<Value>& row) {
    Shape shape{kxGetM(row[0].get()), 0};
    for (const Value& element : row) {
        if (kxGetDimensions(element.get()).size() > 2) raiseBad(messages::joinedMatricesOnly());
        if (kxGetM(element.get()) != shape.rows)
            raiseBad(messages::rowsDiffer(sizeText(row[0].get()), sizeText(element.get())));
        shape.columns += kxGetN(element.get());
    }
    return shape;
}

Shape shapeOfAll(const ValueRows& rows) {
    Shape all = shapeOfRow(rows[0]);
    for (std::size_t at = 1; at < rows.size(); ++at) {
        const Shape shape = shapeOfRow(rows[at]);
        if (shape.columns != all.columns)
            raiseBad(messages::columnsDiffer(countText(all.columns), countText(shape.columns)));
        all.rows += shape.rows;
    }
    return all;
}

void place(kxArray* target, const kxArray* element, std::size_t row, std::size_t column) {
    const std::size_t targetRows = kxGetM(target);
    const std::size_t rows = kxGetM(element);
    const std::size_t columns = kxGetN(element);
    for (std::size_t c = 0; c < columns; ++c) {
        for (std::size_t r = 0; r < rows; ++r) {
            copyElement(target, (column + c) * targetRows + row + r, element, c * rows + r);
        }
    }
}

}  // namespace

Value joinMatrices(const ValueRows& rows) {
    const kxClassID classID = commonClass(rows);
    const ValueRows parts = takingPart(rows, classID);
    if (parts.empty()) return makeArray(classID == kxSTRUCT_CLASS ? kxDOUBLE_CLASS : classID, {0, 0});
    const Value& first = parts[0][0];
    if (parts.size() == 1 && parts[0].size() == 1) return shared(first.get());
    if (classID == kxSTRUCT_CLASS) {
        forEachElement(parts, [&](const kxArray* element) {
            if (!haveSameFields(first.get(), element)) raiseBad(messages::fieldsDiffer());
        });
    }

    const Shape shape = shapeOfAll(parts);
    Value joined = makeArrayLike(first.get(), {shape.rows, shape.columns});
    std::size_t row = 0;
    for (const std::vector<Value>& part : parts) {
        std::size_t column = 0;
        for (const Value& element : part) {
            place(joined.get(), element.get(), row, column);
            column += kxGetN(element.get());
        }
        row += kxGetM(part[0].get());
    }
    return joined;
}

Value joinCells(const ValueRows& rows) {
    const std::size_t columns = rows.empty() ? 0 : rows[0].size();
    Value cell = makeArray(kxCELL_CLASS, {rows.size(), columns});
    for (std::size_t row = 0; row < rows.size(); ++row) {
        if (rows[row].size() != columns)
            raiseBad(messages::cellRowsDiffer(countText(columns), countText(rows[row].size())));
        for (std::size_t column = 0; column < columns; ++column) {
            kxSetCell(cell.get(), column * rows.size() + row, shared(rows[row][column].get()).release());
        }
    }
    return cell;
}

}  // namespace korvex::host
