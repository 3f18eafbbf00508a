// Elements, contents and fields of arrays. Indexes count from 1.
#pragma once

#include <span>
#include <string>

#include "host/kwsh/values.h"

namespace korvex::host {

/// `array(k)`, `array(row, column, ...)`: one element as an array of the same class; the whole array without
/// an index. Raises `HostError` "badIndex" or "indexOutOfRange".
Value elementAt(const kxArray* array, std::span<const Value> indexes);

/// One column with all its rows, counted from 0; of more dimensions each page has columns.
Value columnAt(const kxArray* array, std::size_t column);

/// `array{k}`: the content of one element of a cell array.
Value contentAt(const kxArray* array, std::span<const Value> indexes);

/// `structure.name` of a 1-by-1 structure.
Value fieldOf(const kxArray* structure, const std::string& name);

}  // namespace korvex::host
