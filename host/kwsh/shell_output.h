// Bytes that come in pieces, as text: a character that is cut by the end of a piece waits for the next one.
#pragma once

#include <string>
#include <string_view>

namespace korvex::host {

class ShellOutput {
public:
    /// The text of what is complete with these bytes.
    std::u16string complete(std::string_view bytes);
    /// The text of what is left at the end.
    std::u16string rest();

private:
    std::string pending_;
};

}  // namespace korvex::host
