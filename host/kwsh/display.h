// How values look.
//
//   x =
//       1.5              a number: the shortest digits that read back; whole numbers without a point
//       1    0           a logical array: 1 and 0
//       some text        a character row, one line a row
//       "a"    <missing> a string array
//       {'a'}    {[1]}   a cell array: each element in short form, in braces
//       0x0 cell         an empty array: its size and class
//       name: 'a.txt'    a structure: each field in short form
//       bytes: 12
//       3x1 struct with fields:
//           name         a structure array: its size and the names of its fields
//
// Values stand indented by four. Columns are four blanks apart, numbers to the right, all else to the left.
// Rows that are wider than the window are shown in blocks of columns, each under a line "(columns 1 to 8)";
// the pages of an array of more dimensions stand under "(:,:,2)".
//
// The short form of an element: 'text', "string", <missing>, 1, [1 2 3] for rows of up to eight numbers, and
// otherwise the size and class, as 2x3 double; a cell array's numbers stand in brackets.
//
// Control characters, also those of names of files, are shown by their pictures (U+2400 and up), so that no
// name can command the terminal or spoil the columns.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/kx.h"

namespace korvex::host {

/// The whole display with its name, each line with its end, at most `columns` wide where that can be.
std::u16string displayText(std::string_view name, const kxArray* value, std::size_t columns);

/// One element or field on one line.
std::u16string shortForm(const kxArray* value);

}  // namespace korvex::host
