// Printing of the fields of a structure.
#include <array>
#include <charconv>
#include <cmath>
#include <ostream>
#include <span>
#include <string>
#include <string_view>

#include "platform/services_io.h"
#include "runtime/text/encoding.h"

namespace {

namespace text = korvex::runtime::text;

constexpr std::u16string_view indent = u"    ";

std::u16string numberForm(double number) {
    if (std::isnan(number)) return u"NaN";
    if (std::isinf(number)) return number < 0 ? u"-Inf" : u"Inf";
    constexpr double firstInexact = 1e15;
    const bool isPlainWhole = number == std::trunc(number) && std::abs(number) < firstInexact;
    std::array<char, 32> digits{};
    char* const end = digits.data() + digits.size();
    const std::to_chars_result written =
        isPlainWhole ? std::to_chars(digits.data(), end, number, std::chars_format::fixed)
                     : std::to_chars(digits.data(), end, number);
    return std::u16string(digits.data(), written.ptr);
}

/// A name of a file may hold anything: nothing of it may command the terminal.
char16_t visible(char16_t unit) noexcept {
    constexpr char16_t pictures = 0x2400;
    constexpr char16_t pictureOfDelete = 0x2421;
    constexpr char16_t replacementCharacter = 0xFFFD;
    if (unit < 0x20) return static_cast<char16_t>(pictures + unit);
    if (unit == 0x7F) return pictureOfDelete;
    return unit > 0x7F && unit < 0xA0 ? replacementCharacter : unit;
}

std::u16string quoted(std::u16string_view content, char16_t quote) {
    std::u16string form(1, quote);
    for (const char16_t unit : content) {
        if (unit == quote) form += quote;
        form += visible(unit);
    }
    return form + quote;
}

std::u16string sizeAndClass(const kxArray* value) {
    std::string form;
    for (const std::size_t dimension : kxGetDimensions(value))
        form += (form.empty() ? "" : "x") + std::to_string(dimension);
    return text::fromBytes(form + ' ' + kxGetClassName(value));
}

bool isText(const kxArray* value) {
    const std::span<const std::size_t> sizes = kxGetDimensions(value);
    if (kxGetClassID(value) != kxCHAR_CLASS || sizes.size() != 2) return false;
    return (sizes[0] == 1 && sizes[1] > 0) || (sizes[0] == 0 && sizes[1] == 0);
}

std::u16string scalarForm(const kxArray* value) {
    switch (kxGetClassID(value)) {
        case kxLOGICAL_CLASS: return kxGetLogicals(value)[0] ? u"1" : u"0";
        case kxDOUBLE_CLASS: return numberForm(kxGetDoubles(value)[0]);
        case kxSTRING_CLASS: {
            const std::optional<std::u16string>& string = kxGetStringElement(value, 0);
            return string ? quoted(*string, u'"') : u"<missing>";
        }
        default: return sizeAndClass(value);
    }
}

std::u16string shortForm(const kxArray* value) {
    if (value == nullptr) return u"0x0 double";
    if (isText(value)) {
        const std::span<const char16_t> units = kxGetChars(value);
        return quoted({units.data(), units.size()}, u'\'');
    }
    return kxGetNumberOfElements(value) == 1 ? scalarForm(value) : sizeAndClass(value);
}

}  // namespace

namespace services::io {

std::wstring GetNewline() { return L"\n"; }

}  // namespace services::io

namespace io::legacy {

using services::io::operator<<;

void ioPrintScalarStructureFieldsGroup(std::wostream& stream, const kxArray* structure) {
    if (kxGetNumberOfElements(structure) == 0) return;
    for (int field = 0; field < kxGetNumberOfFields(structure); ++field) {
        std::u16string line(indent);
        line += text::fromBytes(kxGetFieldNameByNumber(structure, field)) + u": ";
        line += shortForm(kxGetFieldByNumber(structure, 0, field));
        stream << line << services::io::GetNewline();
    }
}

}  // namespace io::legacy
