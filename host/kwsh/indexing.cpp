// Index arithmetic and its errors.
#include "host/kwsh/indexing.h"

#include <cmath>

#include "host/kwsh/failure.h"

namespace korvex::host {
namespace {

/// One index as an offset from 0.
std::size_t offsetOf(const kxArray* index, std::size_t extent, std::u16string_view what) {
    if (kxGetClassID(index) != kxDOUBLE_CLASS || !isScalar(index)) {
        throw HostError("badIndex", u"An index must be one number, not a " + sizeAndClassText(index) + u".");
    }
    const double number = kxGetScalar(index);
    if (!(number >= 1) || number != std::trunc(number)) {
        throw HostError("badIndex",
                        u"An index must be a whole number from 1, not " + widen(numberText(number)) + u".");
    }
    if (number > static_cast<double>(extent)) {
        const std::u16string end = extent == 0
                                       ? u"there is no " + std::u16string(what)
                                       : u"the last " + std::u16string(what) + u" is " + countText(extent);
        throw HostError("indexOutOfRange",
                        u"The index " + widen(numberText(number)) + u" is too large: " + end + u".");
    }
    return static_cast<std::size_t>(number) - 1;
}

/// The storage offset of an element. The last index runs over all dimensions that are left.
std::size_t storageOffset(const kxArray* array, std::span<const Value> indexes) {
    if (indexes.size() == 1) return offsetOf(indexes[0].get(), kxGetNumberOfElements(array), u"element");
    const std::span<const std::size_t> dimensions = kxGetDimensions(array);
    std::size_t offset = 0;
    std::size_t stride = 1;
    for (std::size_t at = 0; at < indexes.size(); ++at) {
        std::size_t extent = at < dimensions.size() ? dimensions[at] : 1;
        if (at + 1 == indexes.size()) {
            for (std::size_t left = at + 1; left < dimensions.size(); ++left)
                extent *= dimensions[left];
        }
        const std::u16string what = at == 0 ? u"row" : at == 1 ? u"column" : u"page";
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

Value contentAt(const kxArray* array, std::span<const Value> indexes) {
    if (kxGetClassID(array) != kxCELL_CLASS) {
        throw HostError("badIndex", u"Only a cell array has contents for { }; this is a " +
                                        sizeAndClassText(array) + u".");
    }
    if (indexes.empty()) throw HostError("badIndex", u"{ } needs the index of one element.");
    return shared(kxGetCell(array, storageOffset(array, indexes)));
}

Value fieldOf(const kxArray* structure, const std::string& name) {
    if (kxGetClassID(structure) != kxSTRUCT_CLASS) {
        throw HostError("noSuchField",
                        u"Only a structure has fields; this is a " + sizeAndClassText(structure) + u".");
    }
    const int field = kxGetFieldNumber(structure, name.c_str());
    if (field < 0) throw HostError("noSuchField", u"There is no field '" + widen(name) + u"'.");
    if (!isScalar(structure)) {
        throw HostError("badIndex", u"This is a " + sizeAndClassText(structure) +
                                        u" array: name one element, as in x(1)." + widen(name) + u".");
    }
    return shared(kxGetFieldByNumber(structure, 0, field));
}

}  // namespace korvex::host
