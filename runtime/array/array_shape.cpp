// References to arrays, their classes and their shapes.
#include <algorithm>
#include <cstring>

#include "runtime/array/array_checks.h"

using namespace korvex::runtime::array;

namespace {

// The block, or the elements of a string array, must hold so many elements.
void requireCapacity(const kxArray& array, std::size_t elements, const char* function) {
    const bool isString = array.classID() == kxSTRING_CLASS;
    const bool fits = isString ? elements <= array.strings().size()
                               : requireBytes(elements, bytesPerElement(array), function) <= array.capacity();
    if (!fits)
        misuse(function, "the array's block is too small for " + std::to_string(elements) + " elements");
}

void shareElements(const kxArray& from, kxArray& to, std::size_t count) {
    for (std::size_t slot = 0; slot < count; ++slot) {
        kxArray* const element = from.elementsAs<kxArray*>()[slot];
        if (element != nullptr) element->addReference();
        to.elementsAs<kxArray*>()[slot] = element;
    }
}

}  // namespace

kxArray* kxCreateReference(const kxArray* array) {
    requireArray(array, "kxCreateReference").addReference();
    return const_cast<kxArray*>(array);
}

void kxDestroyArray(kxArray* array) noexcept {
    if (array != nullptr) kxArray::dropReference(array);
}

std::size_t kxGetReferenceCount(const kxArray* array) {
    return requireArray(array, "kxGetReferenceCount").references();
}

kxArray* kxDuplicateArray(const kxArray* array) {
    const kxArray& original = requireArray(array, "kxDuplicateArray");
    const bool isStructure = original.classID() == kxSTRUCT_CLASS;
    const std::size_t count = original.elements();
    const std::size_t bytes = count * bytesPerElement(original);
    const Shape shape{original.dimensions(), original.rows(), original.columns()};
    matrix::ArrayOwner copy =
        kxArray::make(original.classID(), shape, bytes, isStructure ? original.sharedFieldNames() : nullptr);
    if (original.ownsReferences()) {
        shareElements(original, *copy, bytes / sizeof(kxArray*));
    } else if (original.classID() == kxSTRING_CLASS) {
        const auto first = original.strings().begin();
        copy->strings().assign(first, first + static_cast<std::ptrdiff_t>(count));
    } else {
        std::copy_n(original.elementsAs<std::byte>(), bytes, copy->elementsAs<std::byte>());
    }
    return copy.release();
}

kxClassID kxGetClassID(const kxArray* array) { return requireArray(array, "kxGetClassID").classID(); }

const char* kxGetClassName(const kxArray* array) {
    return className(requireArray(array, "kxGetClassName").classID());
}

std::span<const std::size_t> kxGetDimensions(const kxArray* array) {
    return requireArray(array, "kxGetDimensions").dimensions();
}

std::size_t kxGetNumberOfElements(const kxArray* array) {
    return requireArray(array, "kxGetNumberOfElements").elements();
}

bool kxIsEmpty(const kxArray* array) { return requireArray(array, "kxIsEmpty").elements() == 0; }

std::size_t kxGetM(const kxArray* array) { return requireArray(array, "kxGetM").rows(); }

std::size_t kxGetN(const kxArray* array) { return requireArray(array, "kxGetN").columns(); }

void kxSetM(kxArray* array, std::size_t rows) {
    kxArray& changed = requireSoleOwner(array, "kxSetM");
    requireCapacity(changed, requireProduct(rows, changed.columns(), "kxSetM"), "kxSetM");
    changed.setRows(rows);
}

void kxSetN(kxArray* array, std::size_t columns) {
    kxArray& changed = requireSoleOwner(array, "kxSetN");
    requireCapacity(changed, requireProduct(changed.rows(), columns, "kxSetN"), "kxSetN");
    changed.setColumns(columns);
}

void kxSetDimensions(kxArray* array, std::span<const std::size_t> dimensions) {
    kxArray& changed = requireSoleOwner(array, "kxSetDimensions");
    const Shape shape = requireShape(dimensions, "kxSetDimensions");
    if (shape.rows * shape.columns != changed.elements()) {
        misuse("kxSetDimensions", "the new shape has " + std::to_string(shape.rows * shape.columns) +
                                      " elements, the array " + std::to_string(changed.elements()));
    }
    changed.setShape(shape);
}
