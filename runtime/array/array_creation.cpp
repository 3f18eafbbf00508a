// Making arrays.
#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "runtime/array/array_checks.h"
#include "runtime/text/encoding.h"

using namespace korvex::runtime::array;

namespace {

constexpr std::array<std::size_t, 2> oneByOne{1, 1};

matrix::ArrayOwner makeArray(kxClassID classID, std::span<const std::size_t> dimensions,
                             const char* function) {
    const Shape shape = requireShape(dimensions, function);
    const std::size_t bytes = requireBytes(shape.rows * shape.columns, bytesPerElement(classID, 0), function);
    return kxArray::make(classID, shape, bytes);
}

matrix::ArrayOwner makeScalar(kxClassID classID, std::size_t bytes) {
    return kxArray::make(classID, {.dimensions = oneByOne, .rows = 1, .columns = 1}, bytes);
}

matrix::ArrayOwner makeStrings(std::span<const std::size_t> dimensions, const char* function) {
    const Shape shape = requireShape(dimensions, function);
    const std::size_t count = shape.rows * shape.columns;
    requireBytes(count, sizeof(StringElements::value_type), function);
    matrix::ArrayOwner array = kxArray::make(kxSTRING_CLASS, shape, 0);
    array->strings().assign(count, std::u16string());
    return array;
}

std::shared_ptr<const FieldNames> requireFieldNames(std::span<const char* const> names,
                                                    const char* function) {
    if (names.size() > static_cast<std::size_t>(INT_MAX))
        misuse(function, "the fields are too many to be counted");
    auto fieldNames = std::make_shared<FieldNames>();
    fieldNames->reserve(names.size());
    for (const char* name : names) {
        if (name == nullptr) misuse(function, "a field name is null");
        fieldNames->emplace_back(name);
    }
    std::vector<std::string_view> sorted(fieldNames->begin(), fieldNames->end());
    std::ranges::sort(sorted);
    if (const auto twice = std::ranges::adjacent_find(sorted); twice != sorted.end()) {
        misuse(function, "there are two fields of the name \"" + std::string(*twice) + '"');
    }
    return fieldNames;
}

matrix::ArrayOwner makeStructure(std::span<const std::size_t> dimensions, std::span<const char* const> names,
                                 const char* function) {
    const Shape shape = requireShape(dimensions, function);
    const std::size_t bytes =
        requireBytes(shape.rows * shape.columns, bytesPerElement(kxSTRUCT_CLASS, names.size()), function);
    return kxArray::make(kxSTRUCT_CLASS, shape, bytes, requireFieldNames(names, function));
}

}  // namespace

kxArray* kxCreateDoubleArray(std::span<const std::size_t> dimensions) {
    return makeArray(kxDOUBLE_CLASS, dimensions, "kxCreateDoubleArray").release();
}

kxArray* kxCreateLogicalArray(std::span<const std::size_t> dimensions) {
    return makeArray(kxLOGICAL_CLASS, dimensions, "kxCreateLogicalArray").release();
}

kxArray* kxCreateCharArray(std::span<const std::size_t> dimensions) {
    return makeArray(kxCHAR_CLASS, dimensions, "kxCreateCharArray").release();
}

kxArray* kxCreateCellArray(std::span<const std::size_t> dimensions) {
    return makeArray(kxCELL_CLASS, dimensions, "kxCreateCellArray").release();
}

kxArray* kxCreateStringArray(std::span<const std::size_t> dimensions) {
    return makeStrings(dimensions, "kxCreateStringArray").release();
}

kxArray* kxCreateStructArray(std::span<const std::size_t> dimensions,
                             std::span<const char* const> fieldNames) {
    return makeStructure(dimensions, fieldNames, "kxCreateStructArray").release();
}

kxArray* kxCreateDoubleMatrix(std::size_t rows, std::size_t columns) {
    return makeArray(kxDOUBLE_CLASS, std::array{rows, columns}, "kxCreateDoubleMatrix").release();
}

kxArray* kxCreateCellMatrix(std::size_t rows, std::size_t columns) {
    return makeArray(kxCELL_CLASS, std::array{rows, columns}, "kxCreateCellMatrix").release();
}

kxArray* kxCreateStructMatrix(std::size_t rows, std::size_t columns, int numberOfFields,
                              const char* const* fieldNames) {
    constexpr const char* function = "kxCreateStructMatrix";
    if (numberOfFields < 0) misuse(function, "the number of fields is negative");
    if (numberOfFields > 0 && fieldNames == nullptr) misuse(function, "there are no field names");
    const std::span names(fieldNames, static_cast<std::size_t>(numberOfFields));
    return makeStructure(std::array{rows, columns}, names, function).release();
}

kxArray* kxCreateDoubleScalar(double value) {
    matrix::ArrayOwner array = makeScalar(kxDOUBLE_CLASS, sizeof value);
    *array->elementsAs<double>() = value;
    return array.release();
}

kxArray* kxCreateLogicalScalar(bool value) {
    matrix::ArrayOwner array = makeScalar(kxLOGICAL_CLASS, sizeof(kxLogical));
    *array->elementsAs<kxLogical>() = value;
    return array.release();
}

kxArray* kxCreateString(const char* text) {
    const std::u16string units = korvex::runtime::text::fromBytes(text == nullptr ? "" : text);
    return matrix::create(units).release();
}

kxArray* kxCreateStringScalar(const std::optional<std::u16string>& text) {
    matrix::ArrayOwner array = makeStrings(oneByOne, "kxCreateStringScalar");
    array->strings().front() = text;
    return array.release();
}

namespace matrix {

ArrayOwner create(std::u16string_view text) {
    // A text that is in memory is none too large for a block.
    const std::array<std::size_t, 2> dimensions{text.empty() ? 0u : 1u, text.size()};
    ArrayOwner array =
        kxArray::make(kxCHAR_CLASS, {.dimensions = dimensions, .rows = dimensions[0], .columns = text.size()},
                      text.size() * sizeof(char16_t));
    std::ranges::copy(text, array->elementsAs<char16_t>());
    return array;
}

kxArray* to_korvex(ArrayOwner array) noexcept { return array.release(); }

}  // namespace matrix
