// Arrays that the tests of this folder start from.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/kx.h"

namespace korvex::tests {

using Array = matrix::ArrayOwner;
using Dimensions = std::vector<std::size_t>;

inline constexpr std::size_t tooMany = SIZE_MAX;

inline Array scalar(double value) { return Array(kxCreateDoubleScalar(value)); }

inline Array doubleRow(std::initializer_list<double> values) {
    Array row(kxCreateDoubleMatrix(1, values.size()));
    std::copy(values.begin(), values.end(), kxGetDoubles(row.get()).begin());
    return row;
}

inline Array emptyCell(std::size_t rows, std::size_t columns) {
    return Array(kxCreateCellMatrix(rows, columns));
}

inline Array strings(std::initializer_list<std::optional<std::u16string>> texts) {
    Array row(kxCreateStringArray(std::array<std::size_t, 2>{1, texts.size()}));
    std::size_t index = 0;
    for (const auto& text : texts)
        kxSetStringElement(row.get(), index++, text);
    return row;
}

inline Array charArray(const Dimensions& dimensions) { return Array(kxCreateCharArray(dimensions)); }

inline Array structure(std::size_t rows, std::size_t columns, const std::vector<const char*>& fields) {
    return Array(kxCreateStructMatrix(rows, columns, static_cast<int>(fields.size()), fields.data()));
}

/// A second reference, as another owner would hold it.
inline Array sharing(const Array& array) { return Array(kxCreateReference(array.get())); }

inline Dimensions dimensionsOf(const Array& array) {
    const auto dimensions = kxGetDimensions(array.get());
    return {dimensions.begin(), dimensions.end()};
}

inline std::u16string textOf(const kxArray* array) {
    const auto units = kxGetChars(array);
    return {units.begin(), units.end()};
}

inline std::vector<double> valuesOf(const kxArray* array) {
    const auto values = kxGetDoubles(array);
    return {values.begin(), values.end()};
}

}  // namespace korvex::tests
