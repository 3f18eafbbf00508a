// The output stream: a wide stream whose buffer collects 16-bit units and hands them on in one piece.
#include "runtime/interpreter/output.h"

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <streambuf>
#include <string>
#include <utility>

#include "platform/services_io.h"
#include "runtime/text/encoding.h"

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
        const wchar_t* const end = characters + count;
        for (const wchar_t* next = characters; next != end;) {
            const wchar_t* const run = next;
            next = std::find_if_not(run, end, isOneUnit);
            appendUnits(run, next);
            if (next != end) append(*next++);
        }
        return count;
    }

    int sync() override {
        // Emptied first: what a receiver failed to take is not offered to it again.
        const std::u16string text = std::exchange(text_, {});
        if (!text.empty()) korvex::runtime::interpreter::writeOutput(text);
        return 0;
    }

private:
    static bool isOneUnit(wchar_t character) { return static_cast<char32_t>(character) <= 0xFFFF; }

    /// A whole run at once: the columns of a large folder are millions of units.
    void appendUnits(const wchar_t* begin, const wchar_t* end) {
        const std::size_t present = text_.size();
        text_.resize(present + static_cast<std::size_t>(end - begin));
        std::transform(begin, end, text_.data() + present,
                       [](wchar_t character) { return static_cast<char16_t>(character); });
    }

    void append(wchar_t character) {
        constexpr char32_t lastCodePoint = 0x10FFFF;
        constexpr char16_t replacementCharacter = 0xFFFD;
        const auto codePoint = static_cast<char32_t>(character);
        if (isOneUnit(character)) {
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

void utPrintf(const char* format, ...) {
    using services::io::operator<<;
    std::va_list values;
    va_start(values, format);
    const int length = std::vsnprintf(nullptr, 0, format, values);
    va_end(values);
    if (length <= 0) return;
    std::string bytes(static_cast<std::size_t>(length), '\0');
    va_start(values, format);
    std::vsnprintf(bytes.data(), bytes.size() + 1, format, values);
    va_end(values);
    services::io::uout() << korvex::runtime::text::fromBytes(bytes);
}
