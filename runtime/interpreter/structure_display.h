// Short forms of values, one line each: what the fields of a structure are printed as.
//
// 'text', "string", <missing>, 1, [1 2 3] for rows of up to eight numbers, and otherwise the size and class,
// as 2x3 double. Control characters, also those of names of files, are shown by their pictures (U+2400 and
// up), so that no name can command the terminal.
#pragma once

#include <cstddef>
#include <string>

#include "platform/kx.h"

namespace korvex::runtime::interpreter {

/// The short form of a value; null is the empty double.
std::u16string shortForm(const kxArray* value);

/// One element of an array of numbers, truth values or strings. Numbers have the shortest digits that read
/// back; whole ones below 1e15 neither point nor exponent.
std::u16string elementForm(const kxArray* array, std::size_t index);

/// The text with pictures in place of control characters.
std::u16string visible(std::u16string text);

}  // namespace korvex::runtime::interpreter
