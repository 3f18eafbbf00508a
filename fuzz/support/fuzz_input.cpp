// Inputs as text, and the end of a process that has found something.
#include "fuzz/support/fuzz_input.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "runtime/text/encoding.h"

namespace korvex::fuzz {

namespace text = korvex::runtime::text;

std::u16string textOf(std::string_view input) {
    constexpr char escape = '\xFF';
    const auto byteAt = [&](std::size_t place) { return static_cast<unsigned char>(input[place]); };
    std::u16string result;
    while (!input.empty()) {
        const std::size_t plain = std::min(input.find(escape), input.size());
        result += text::fromBytes(input.substr(0, plain));
        input.remove_prefix(plain);
        if (input.size() < 3) return result + text::fromBytes(input);
        result += static_cast<char16_t>(byteAt(1) * 256 + byteAt(2));
        input.remove_prefix(3);
    }
    return result;
}

std::u16string_view takeLine(std::u16string_view& text) {
    const std::size_t end = std::min(text.find(u'\n'), text.size());
    const std::u16string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

bool isTextOfBytes(std::u16string_view text) {
    const std::optional<std::string> bytes = text::toBytes(text);
    return bytes && text::fromBytes(*bytes) == text;
}

void require(bool holds, std::string_view requirement, std::u16string_view brokenBy) {
    if (holds) return;
    std::cerr << "broken: " << requirement << "\nby:     " << text::toDisplayBytes(brokenBy) << std::endl;
    std::abort();
}

}  // namespace korvex::fuzz
