// The classes of single 16-bit units that names of the interpreter are made of.
#pragma once

/// Whether the unit is a letter, or a letter or digit. Both know ASCII only: in a name of the interpreter
/// there is nothing else. False for the terminator of a text.
bool kwu_isalpha(char16_t unit) noexcept;
bool kwu_isalnum(char16_t unit) noexcept;
