// Arrays from their rows of elements: [a b; c d] and {a b; c d}.
#pragma once

#include <vector>

#include "host/kwsh/values.h"

namespace korvex::host {

using ValueRows = std::vector<std::vector<Value>>;

/// Joins matrices of one class side by side and the rows below each other. 0-by-0 elements are left out; with
/// a string among the elements, character rows become strings and the result is a string array; a logical
/// array joined with doubles becomes doubles. Raises `HostError` "badConcatenation".
Value joinMatrices(const ValueRows& rows);

/// A cell array of the elements themselves. Raises `HostError` "badConcatenation" when rows differ in length.
Value joinCells(const ValueRows& rows);

}  // namespace korvex::host
