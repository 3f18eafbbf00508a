// Index arithmetic and its errors.
#include "host/kwsh/indexing.h"

#include <cmath>

#include "host/kwsh/failure.h"

namespace korvex::host {
namespace {

/// What an index counts.
enum class Counted { elements, rows, columns, pages };

/// Where that ends, as the end of a sentence.
std::u16string endOf(Counted what, std::size_t extent) {
    const std::u16string last = countText(extent);
    const bool isNothing = extent == 0;
    switch (what) {
        case Counted::rows:
            return isNothing ? catalogText(messages::noRow()) : catalogText(messages::lastRow(last));
        case Counted::columns:
            return isNothing ? catalogText(messages::noColumn()) : catalogText(messages::lastColumn(last));
        case Counted::pages:
            return isNothing ? catalogText(messages::noPage()) : catalogText(messages::lastPage(last));
        default:
            return isNothing ? catalogText(messages::noElement()) : catalogText(messages::lastElement(last));
    }
}

/// One index as an offset from 0.
std::size_t offsetOf(const kxArray* index, std::size_t extent, Counted what) {
    if (kxGetClassID(index) != kxDOUBLE_CLASS || !isScalar(index)) {
        throw HostError("badIndex", messages::indexNotOneNumber(sizeAndClassText(index)));
    }
    const double number = kxGetScalar(index);
    if (!(number >= 1) || number != std::trunc(number)) {
        throw HostError("badIndex", messages::indexNotWhole(widen(numberText(number))));
    }
    if (number > static_cast<double>(extent)) {
        throw HostError("indexOutOfRange",
                        messages::indexTooLarge(widen(numberText(number)), endOf(what, extent)));
    }
    return static_cast<std::size_t>(number) - 1;
}

/// The storage offset of an element. The last index runs over all dimensions that are left.
std::size_t storageOffset(const kxArray* array, std::span<const Value> indexes) {
    if (indexes.size() == 1)
        return offsetOf(indexes[0].get(), kxGetNumberOfElements(array), Counted::elements);
    const std::span<const std::size_t> dimensions = kxGetDimensions(array);
    std::size_t offset = 0;
    std::size_t stride = 1;
    for (std::size_t at = 0; at < indexes.size(); ++at) {
        std::size_t extent = at < dimensions.size() ? dimensions[at] : 1;
        if (at + 1 == indexes.size()) {
            for (std::size_t left = at + 1; left < dimensions.size(); ++left)
                extent *= dimensions[left];
        }
        const Counted what = at == 0 ? Counted::rows : at == 1 ? Counted::columns : Counted::pages;
        offset += stride * offsetOf(indexes[at].get(), extent, what);
        stride *= extent;
    }
    return offset;
}

}  // namespace

Value elementAt(const kxArray* array, std::span<const Value> indexes) {
    if (indexes.empty()) return shared(array);
    const std::size_t offset = storageOffset(array, indexes);
    Value element = makeArrayLike(array, {1, 1});
    copyElement(element.get(), 0, array, offset);
    return element;
}

Value columnAt(const kxArray* array, std::size_t column) {
    const std::size_t rows = kxGetM(array);
    Value values = makeArrayLike(array, {rows, 1});
    for (std::size_t row = 0; row < rows; ++row)
        copyElement(values.get(), row, array, column * rows + row);
    return values;
}

Value contentAt(const kxArray* array, std::span<const Value> indexes) {
    if (kxGetClassID(array) != kxCELL_CLASS)
        throw HostError("badIndex", messages::cellContentsOnly(sizeAndClassText(array)));
    if (indexes.empty()) throw HostError("badIndex", messages::contentsNeedIndex());
    return shared(kxGetCell(array, storageOffset(array, indexes)));
}

Value fieldOf(const kxArray* structure, const std::string& name) {
    if (kxGetClassID(structure) != kxSTRUCT_CLASS)
        throw HostError("noSuchField", messages::structureFieldsOnly(sizeAndClassText(structure)));
    const int field = kxGetFieldNumber(structure, name.c_str());
    if (field < 0) throw HostError("noSuchField", messages::noSuchField(widen(name)));
    if (!isScalar(structure))
        throw HostError("badIndex", messages::oneElementNeeded(sizeAndClassText(structure), widen(name)));
    return shared(kxGetFieldByNumber(structure, 0, field));
}

}  // namespace korvex::host
