// Checks of the array interface, and the table of classes they rest on.
#include "runtime/array/array_checks.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace korvex::runtime::array {

namespace {

struct ClassRow {
    kxClassID classID;
    const char* name;
    std::size_t bytesPerElement;
};

// A structure has its bytes once for each field.
constexpr std::array classes{
    ClassRow{kxCELL_CLASS, "cell", sizeof(kxArray*)},
    ClassRow{kxSTRUCT_CLASS, "struct", sizeof(kxArray*)},
    ClassRow{kxLOGICAL_CLASS, "logical", sizeof(kxLogical)},
    ClassRow{kxCHAR_CLASS, "char", sizeof(char16_t)},
    ClassRow{kxDOUBLE_CLASS, "double", sizeof(double)},
    ClassRow{kxSTRING_CLASS, "string", 0},
};

const ClassRow& rowOf(kxClassID classID) { return *std::ranges::find(classes, classID, &ClassRow::classID); }

}  // namespace

void misuse(const char* function, const std::string& what) {
    throw matrix::UsageError(std::string(function) + ": " + what);
}

void misuseOfClass(const kxArray& array, kxClassID needed, const char* function) {
    misuse(function, std::string("needs an array of class ") + className(needed) + ", not " +
                         className(array.classID()));
}

void misuseOfSharedArray(const kxArray& array, const char* function) {
    misuse(function,
           "the array has " + std::to_string(array.references()) + " owners and must not be changed");
}

void misuseOfIndex(const kxArray& array, std::size_t index, const char* function) {
    misuse(function, "index " + std::to_string(index) + " is outside an array of " +
                         std::to_string(array.elements()) + " elements");
}

void misuseOfField(const kxArray& structure, int field, const char* function) {
    misuse(function, "field number " + std::to_string(field) + " is outside a structure of " +
                         std::to_string(structure.fieldNames().size()) + " fields");
}

Shape requireShape(std::span<const std::size_t> dimensions, const char* function) {
    if (dimensions.size() < 2) misuse(function, "an array has two or more dimensions");
    while (dimensions.size() > 2 && dimensions.back() == 1)
        dimensions = dimensions.first(dimensions.size() - 1);

    const auto behindTheFirst = dimensions.subspan(1);
    std::size_t columns = 0;  // a dimension of 0 makes it 0 whatever the others are
    if (std::ranges::find(behindTheFirst, std::size_t{0}) == behindTheFirst.end()) {
        columns = 1;
        for (const std::size_t dimension : behindTheFirst)
            columns = requireProduct(columns, dimension, function);
    }
    requireProduct(dimensions.front(), columns, function);
    return {.dimensions = dimensions, .rows = dimensions.front(), .columns = columns};
}

std::size_t requireProduct(std::size_t left, std::size_t right, const char* function) {
    if (right != 0 && left > SIZE_MAX / right) misuse(function, "the elements are too many to be counted");
    return left * right;
}

std::size_t requireBytes(std::size_t elements, std::size_t bytesPerElement, const char* function) {
    if (bytesPerElement != 0 && elements > largestBlock / bytesPerElement) {
        misuse(function, std::to_string(elements) + " elements are more than one block can hold");
    }
    return elements * bytesPerElement;
}

std::size_t bytesPerElement(kxClassID classID, std::size_t fields) {
    return rowOf(classID).bytesPerElement * (classID == kxSTRUCT_CLASS ? fields : 1);
}

std::size_t bytesPerElement(const kxArray& array) {
    return bytesPerElement(array.classID(),
                           array.classID() == kxSTRUCT_CLASS ? array.fieldNames().size() : 1);
}

const char* className(kxClassID classID) { return rowOf(classID).name; }

}  // namespace korvex::runtime::array
