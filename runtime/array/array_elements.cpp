// Reading and setting the elements of arrays.
#include <algorithm>
#include <climits>
#include <cstring>
#include <utility>

#include "runtime/array/array_checks.h"

using namespace korvex::runtime::array;

namespace {

template <class Element>
std::span<const Element> readable(const kxArray* array, kxClassID classID, const char* function) {
    const kxArray& checked = requireClass(array, classID, function);
    return {checked.elementsAs<Element>(), checked.elements()};
}

template <class Element>
std::span<Element> writable(kxArray* array, kxClassID classID, const char* function) {
    kxArray& checked = requireSoleOwner(array, classID, function);
    return {checked.elementsAs<Element>(), checked.elements()};
}

// The reference that a container takes over. The only reference to an array that was to go into itself is the
// caller's hold on the container: it stays the caller's.
matrix::ArrayOwner takeOver(const kxArray* container, kxArray* value, const char* function) {
    const bool goesIntoItself = value != nullptr && value == container;
    matrix::ArrayOwner taken(goesIntoItself && value->references() == 1 ? nullptr : value);
    if (goesIntoItself) misuse(function, "an array cannot be an element of itself");
    return taken;
}

void putIntoSlot(kxArray& container, std::size_t slot, matrix::ArrayOwner value) {
    kxArray* const earlier = std::exchange(container.elementsAs<kxArray*>()[slot], value.release());
    if (earlier != nullptr) kxDestroyArray(earlier);
}

std::size_t requireSlot(const kxArray& structure, std::size_t index, int field, const char* function) {
    requireIndex(structure, index, function);
    requireField(structure, field, function);
    return index * structure.fieldNames().size() + static_cast<std::size_t>(field);
}

// -1 where there is no such field.
int fieldNumber(const kxArray& structure, const char* name, const char* function) {
    if (name == nullptr) misuse(function, "the field name is null");
    const FieldNames& names = structure.fieldNames();
    const auto place = std::ranges::find(names, name);
    return place == names.end() ? -1 : static_cast<int>(place - names.begin());
}

}  // namespace

std::span<const double> kxGetDoubles(const kxArray* array) {
    return readable<double>(array, kxDOUBLE_CLASS, "kxGetDoubles");
}

std::span<double> kxGetDoubles(kxArray* array) {
    return writable<double>(array, kxDOUBLE_CLASS, "kxGetDoubles");
}

std::span<const kxLogical> kxGetLogicals(const kxArray* array) {
    return readable<kxLogical>(array, kxLOGICAL_CLASS, "kxGetLogicals");
}

std::span<kxLogical> kxGetLogicals(kxArray* array) {
    return writable<kxLogical>(array, kxLOGICAL_CLASS, "kxGetLogicals");
}

std::span<const char16_t> kxGetChars(const kxArray* array) {
    return readable<char16_t>(array, kxCHAR_CLASS, "kxGetChars");
}

std::span<char16_t> kxGetChars(kxArray* array) {
    return writable<char16_t>(array, kxCHAR_CLASS, "kxGetChars");
}

double kxGetScalar(const kxArray* array) {
    const kxArray& checked = requireArray(array, "kxGetScalar");
    requireIndex(checked, 0, "kxGetScalar");
    switch (checked.classID()) {
        case kxDOUBLE_CLASS: return *checked.elementsAs<double>();
        case kxLOGICAL_CLASS: return *checked.elementsAs<kxLogical>() ? 1.0 : 0.0;
        case kxCHAR_CLASS: return *checked.elementsAs<char16_t>();
        default: misuse("kxGetScalar", std::string("no number in class ") + className(checked.classID()));
    }
}

const kxArray* kxGetCell(const kxArray* cell, std::size_t index) {
    const kxArray& checked = requireClass(cell, kxCELL_CLASS, "kxGetCell");
    requireIndex(checked, index, "kxGetCell");
    return checked.elementsAs<kxArray*>()[index];
}

void kxSetCell(kxArray* cell, std::size_t index, kxArray* value) {
    matrix::ArrayOwner taken = takeOver(cell, value, "kxSetCell");
    kxArray& changed = requireSoleOwner(cell, kxCELL_CLASS, "kxSetCell");
    requireIndex(changed, index, "kxSetCell");
    putIntoSlot(changed, index, std::move(taken));
}

int kxGetNumberOfFields(const kxArray* structure) {
    const kxArray& checked = requireClass(structure, kxSTRUCT_CLASS, "kxGetNumberOfFields");
    return static_cast<int>(checked.fieldNames().size());
}

const char* kxGetFieldNameByNumber(const kxArray* structure, int field) {
    const kxArray& checked = requireClass(structure, kxSTRUCT_CLASS, "kxGetFieldNameByNumber");
    requireField(checked, field, "kxGetFieldNameByNumber");
    return checked.fieldNames()[static_cast<std::size_t>(field)].c_str();
}

int kxGetFieldNumber(const kxArray* structure, const char* name) {
    return fieldNumber(requireClass(structure, kxSTRUCT_CLASS, "kxGetFieldNumber"), name, "kxGetFieldNumber");
}

const kxArray* kxGetFieldByNumber(const kxArray* structure, std::size_t index, int field) {
    const kxArray& checked = requireClass(structure, kxSTRUCT_CLASS, "kxGetFieldByNumber");
    return checked.elementsAs<kxArray*>()[requireSlot(checked, index, field, "kxGetFieldByNumber")];
}

const kxArray* kxGetField(const kxArray* structure, std::size_t index, const char* name) {
    const kxArray& checked = requireClass(structure, kxSTRUCT_CLASS, "kxGetField");
    requireIndex(checked, index, "kxGetField");
    const int field = fieldNumber(checked, name, "kxGetField");
    if (field < 0) return nullptr;
    return checked.elementsAs<kxArray*>()[requireSlot(checked, index, field, "kxGetField")];
}

void kxSetFieldByNumber(kxArray* structure, std::size_t index, int field, kxArray* value) {
    matrix::ArrayOwner taken = takeOver(structure, value, "kxSetFieldByNumber");
    kxArray& changed = requireSoleOwner(structure, kxSTRUCT_CLASS, "kxSetFieldByNumber");
    putIntoSlot(changed, requireSlot(changed, index, field, "kxSetFieldByNumber"), std::move(taken));
}

void kxSetField(kxArray* structure, std::size_t index, const char* name, kxArray* value) {
    matrix::ArrayOwner taken = takeOver(structure, value, "kxSetField");
    kxArray& changed = requireSoleOwner(structure, kxSTRUCT_CLASS, "kxSetField");
    const int field = fieldNumber(changed, name, "kxSetField");
    if (field < 0) misuse("kxSetField", std::string("there is no field \"") + name + '"');
    putIntoSlot(changed, requireSlot(changed, index, field, "kxSetField"), std::move(taken));
}

const std::optional<std::u16string>& kxGetStringElement(const kxArray* strings, std::size_t index) {
    const kxArray& checked = requireClass(strings, kxSTRING_CLASS, "kxGetStringElement");
    requireIndex(checked, index, "kxGetStringElement");
    return checked.strings()[index];
}

void kxSetStringElement(kxArray* strings, std::size_t index, std::optional<std::u16string> text) {
    kxArray& changed = requireSoleOwner(strings, kxSTRING_CLASS, "kxSetStringElement");
    requireIndex(changed, index, "kxSetStringElement");
    changed.strings()[index] = std::move(text);
}
