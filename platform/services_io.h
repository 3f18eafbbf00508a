// The environment's output stream: what a command prints for the user.
#pragma once

#include <memory>
#include <ostream>
#include <string>

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

}  // namespace services::io
