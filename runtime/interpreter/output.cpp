// The output stream: a wide stream whose buffer collects 16-bit units and hands them on in one piece.
#include "runtime/interpreter/output.h"

#include <streambuf>
#include <utility>

#include "platform/services_io.h"

namespace korvex::runtime::interpreter {
namespace {

// All of this belongs to the interpreter's thread.
struct OutputWindow {
    OutputReceiver receiver;
    std::uint64_t columns = 80;
};

OutputWindow& outputWindow() {
    static OutputWindow window;
    return window;
}

}  // namespace

OutputReceiver setOutputReceiver(OutputReceiver receiver) {
    return std::exchange(outputWindow().receiver, std::move(receiver));
}

void writeOutput(std::u16string_view text) {
    const OutputReceiver receiver = outputWindow().receiver;  // a copy: it may replace itself
    if (receiver) receiver(text);
}

std::uint64_t windowColumns() { return outputWindow().columns; }

void setWindowColumns(std::uint64_t columns) { outputWindow().columns = columns; }

}  // namespace korvex::runtime::interpreter

namespace services::io {

class uout::Buffer : public std::wstreambuf {
protected:
    int_type overflow(int_type character) override {
        if (!traits_type::eq_int_type(character, traits_type::eof())) {
            append(traits_type::to_char_type(character));
        }
        return traits_type::not_eof(character);
    }

    std::streamsize xsputn(const wchar_t* characters, std::streamsize count) override {
        for (std::streamsize i = 0; i < count; ++i)
            append(characters[i]);
        return count;
    }

    int sync() override {
        // Emptied first: what a receiver failed to take is not offered to it again.
        const std::u16string text = std::exchange(text_, {});
        if (!text.empty()) korvex::runtime::interpreter::writeOutput(text);
        return 0;
    }

private:
    void append(wchar_t character) {
        constexpr char32_t lastCodePoint = 0x10FFFF;
        constexpr char16_t replacementCharacter = 0xFFFD;
        const auto codePoint = static_cast<char32_t>(character);
        if (codePoint <= 0xFFFF) {
            text_ += static_cast<char16_t>(codePoint);
        } else if (codePoint <= lastCodePoint) {
            text_ += static_cast<char16_t>(0xD7C0 + (codePoint >> 10));
            text_ += static_cast<char16_t>(0xDC00 | (codePoint & 0x3FF));
        } else {
            text_ += replacementCharacter;
        }
    }

    std::u16string text_;
};

uout::uout() : std::wostream(nullptr), buffer_(std::make_unique<Buffer>()) { rdbuf(buffer_.get()); }

uout::~uout() {
    try {
        buffer_->pubsync();  // not flush(), which would keep back what a failed stream had written before
    } catch (...) {
        // The print is over, and nobody is left who could be told that its receiver failed.
    }
}

std::wostream& operator<<(std::wostream& stream, const std::u16string& text) {
    return stream << std::wstring(text.begin(), text.end());
}

}  // namespace services::io
