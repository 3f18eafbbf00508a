// What the fuzzers share: the one function that each of them is, the bytes of an input as 16-bit text, and
// requirements.
#pragma once

#include <string>
#include <string_view>

namespace korvex::fuzz {

/// Hands one input to the part of the system that the fuzzer is about, and requires what must hold of every
/// input. Any exception that leaves it is a finding.
void examine(std::string_view input);

/// The text of an input, read as the environment reads bytes. The byte 0xFF, which no UTF-8 holds, makes one
/// unit of any value of the two bytes behind it, the higher one first.
std::u16string textOf(std::string_view input);

/// The parts of an input between line feeds; at least one.
std::u16string_view takeLine(std::u16string_view& text);

/// Whether a name on disk can read so: going to bytes and back gives the same text.
bool isTextOfBytes(std::u16string_view text);

/// Where the requirement does not hold: writes it to standard error, with the text that broke it, and aborts.
void require(bool holds, std::string_view requirement, std::u16string_view brokenBy = {});

}  // namespace korvex::fuzz
