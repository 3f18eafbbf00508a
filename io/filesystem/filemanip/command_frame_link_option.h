// The value of the option "resolvesymboliclinks", which `rmdir` and `delete` share.
#pragma once

#include "platform/kx.h"

namespace korvex::filemanip {

inline constexpr const char16_t* linkOptionName = u"resolvesymboliclinks";

/// A real double scalar counts as true when it is greater than 0, so that a negative number and a NaN do not;
/// a logical scalar counts as what it is. Raises "KORVEX:io:common:validation:InternalError" with "Expected
/// double scalar" for any other double, with "Expected logical scalar" for everything else, null included.
bool linkOptionValue(const kxArray* value);

}  // namespace korvex::filemanip
