// What the functions of the array interface check before they touch an array. Each raises
// `matrix::UsageError` with the name of the function that was misused.
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "runtime/array/array_object.h"

namespace korvex::runtime::array {

[[noreturn]] void misuse(const char* function, const std::string& what);

template <class Array>
Array& requireArray(Array* array, const char* function) {
    if (array == nullptr) misuse(function, "there is no array, the pointer is null");
    return *array;
}

// What goes wrong, told in full. Apart from the checks, so that these are nothing but a comparison each where
// they are made: a listing makes tens of millions of them.
[[noreturn]] void misuseOfClass(const kxArray& array, kxClassID needed, const char* function);
[[noreturn]] void misuseOfSharedArray(const kxArray& array, const char* function);
[[noreturn]] void misuseOfIndex(const kxArray& array, std::size_t index, const char* function);
[[noreturn]] void misuseOfField(const kxArray& structure, int field, const char* function);

/// An array of the class.
inline const kxArray& requireClass(const kxArray* array, kxClassID classID, const char* function) {
    const kxArray& checked = requireArray(array, function);
    if (checked.classID() != classID) misuseOfClass(checked, classID, function);
    return checked;
}

/// An array with one owner, so that changing it changes nobody else's.
inline kxArray& requireSoleOwner(kxArray* array, const char* function) {
    kxArray& checked = requireArray(array, function);
    if (checked.references() != 1) misuseOfSharedArray(checked, function);
    return checked;
}
inline kxArray& requireSoleOwner(kxArray* array, kxClassID classID, const char* function) {
    requireClass(array, classID, function);
    return requireSoleOwner(array, function);
}

inline void requireIndex(const kxArray& array, std::size_t index, const char* function) {
    if (index >= array.elements()) misuseOfIndex(array, index, function);
}
inline void requireField(const kxArray& structure, int field, const char* function) {
    const bool isThere = field >= 0 && static_cast<std::size_t>(field) < structure.fieldNames().size();
    if (!isThere) misuseOfField(structure, field, function);
}

/// The shape that the dimensions give, where it can be counted.
Shape requireShape(std::span<const std::size_t> dimensions, const char* function);
/// The product, where it can be counted.
std::size_t requireProduct(std::size_t left, std::size_t right, const char* function);
/// Bytes of so many elements, where there can be such a block.
std::size_t requireBytes(std::size_t elements, std::size_t bytesPerElement, const char* function);

/// Bytes that an element takes in the block. A string array has its elements elsewhere.
std::size_t bytesPerElement(kxClassID classID, std::size_t fields);
std::size_t bytesPerElement(const kxArray& array);

const char* className(kxClassID classID);

}  // namespace korvex::runtime::array
