// Typed bytes as the characters that an editor of lines works on, and back to 16-bit text.
//
// A byte that is no part of valid UTF-8 is the character 0xDC00 + byte, so that names of any bytes can be
// typed.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/kwsh/shell_output.h"

namespace korvex::host {

class TypedCharacters {
public:
    void add(char byte);
    /// The next character that is complete with the bytes so far; nothing when more bytes are needed.
    std::optional<char32_t> take();

private:
    ShellOutput bytes_;
    std::u16string units_;
};

/// The characters of 16-bit text; a unit that is no part of a pair is one by itself.
std::u32string charactersOf(std::u16string_view text);

/// 16-bit text of characters, those above U+FFFF as surrogate pairs.
std::u16string textOf(std::u32string_view characters);

}  // namespace korvex::host
