// Values of the host: owned arrays, the ways to make them, and what the host functions need to know of them.
//
// Sizes are checked before memory is asked for: an array of more than `largestArrayBytes` is refused with
// "KORVEX:host:arrayTooLarge".
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/kx.h"

namespace korvex::host {

/// One reference to an array. Arrays with several owners are never changed.
using Value = matrix::ArrayOwner;
using Dimensions = std::vector<std::size_t>;

inline constexpr std::size_t largestArrayBytes = std::size_t{1} << 31;

/// Another reference to the same array; the empty double for null.
Value shared(const kxArray* array);

Value makeText(std::u16string_view text);
Value makeString(const std::optional<std::u16string>& text);
Value makeDouble(double number);
Value makeLogical(bool truth);

/// An array with the class, and the fields of a structure, of `model`. Dimensions of 1 at the end are
/// dropped, down to two. Raises `HostError`.
Value makeArrayLike(const kxArray* model, Dimensions dimensions);
/// The same for a class that is no structure.
Value makeArray(kxClassID classID, Dimensions dimensions);

/// Copies one element between arrays of the same class (structures: with the same fields). Elements of cells
/// and structures are shared.
void copyElement(kxArray* target, std::size_t targetIndex, const kxArray* source, std::size_t sourceIndex);

/// The text of a character row, a 0-by-0 character array, or a string scalar that is not missing; nothing for
/// any other array.
std::optional<std::u16string> scalarText(const kxArray* array);

bool isScalar(const kxArray* array);
/// "2x3".
std::u16string sizeText(const kxArray* array);
/// "2x3 cell".
std::u16string sizeAndClassText(const kxArray* array);

/// ASCII or UTF-8 text as 16-bit text.
std::u16string widen(std::string_view text);
/// A whole number in decimal digits.
std::u16string countText(std::size_t count);
/// The shortest decimal text that reads back as the same number; whole numbers without point or exponent
/// below 1e15, NaN, Inf and -Inf by these names.
std::string numberText(double number);

}  // namespace korvex::host
