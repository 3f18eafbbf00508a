// The environment's output stream: what a command prints for the user.
#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "platform/kx.h"

namespace services::io {

/// A wide stream, opened for one print and closed after it: what was written reaches the command window, in
/// one piece, when the object dies or is flushed.
class uout : public std::wostream {
public:
    uout();
    ~uout() override;

private:
    class Buffer;
    std::unique_ptr<Buffer> buffer_;
};

/// Writes 16-bit text, unit by unit; an unpaired surrogate arrives as it is. Honours width, counted in units,
/// and `std::left`. Behind a manipulator the stream is a plain wide stream, and this operator is found only
/// where a using-declaration names it.
std::wostream& operator<<(std::wostream& stream, const std::u16string& text);

/// What ends a line in the command window.
std::wstring GetNewline();

}  // namespace services::io

/// Prints by the rules of `std::printf` to the command window, at once and in one piece. Texts are UTF-8.
/// What cannot be formatted, and the empty text, print nothing.
[[gnu::format(printf, 1, 2)]] void utPrintf(const char* format, ...);

namespace io::legacy {

/// Prints the first element of a structure array, a line for each field in their order: four blanks, the
/// name, a colon, a blank, and the value in short form, as 'text', 1, NaN, or its size and class. Control
/// characters are shown by pictures. A structure without elements or fields prints nothing.
void ioPrintScalarStructureFieldsGroup(std::wostream& stream, const kxArray* structure);

}  // namespace io::legacy
