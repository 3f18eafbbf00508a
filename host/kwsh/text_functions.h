// Host functions between texts and numbers. All raise `HostError` "badArgument".
#pragma once

#include <span>

#include "host/kwsh/values.h"

namespace korvex::host {

/// Code units, from numbers 0 to 65535 in any shape, as one character row; a single text as a character row.
Value charsOf(std::span<const Value> arguments);
/// The code units of a character array or string scalar; numbers and logical values as numbers.
Value doublesOf(std::span<const Value> arguments);
/// Texts one behind the other, blanks and zero units kept: a string when one of them is, missing when one is
/// missing, otherwise a character row.
Value strcatOf(std::span<const Value> arguments);
/// A string array: the rows of a character array, the texts of a cell array, numbers in decimal digits.
Value stringsFrom(std::span<const Value> arguments);

}  // namespace korvex::host
