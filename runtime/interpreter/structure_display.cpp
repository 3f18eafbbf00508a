// Printing of the fields of a structure.
#include "runtime/interpreter/structure_display.h"

#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <ostream>
#include <span>
#include <string_view>

#include "platform/services_io.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::interpreter {
namespace {

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

std::u16string quoted(std::u16string_view content, char16_t quote) {
    std::u16string form(1, quote);
    for (const char16_t unit : content) {
        if (unit == quote) form += quote;
        form += unit;
    }
    return visible(form + quote);
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

bool isNumeric(const kxArray* value) {
    return kxGetClassID(value) == kxDOUBLE_CLASS || kxGetClassID(value) == kxLOGICAL_CLASS;
}

bool isShortRow(const kxArray* value) {
    constexpr std::size_t longest = 8;
    const std::span<const std::size_t> sizes = kxGetDimensions(value);
    return isNumeric(value) && sizes.size() == 2 && sizes[0] == 1 && sizes[1] > 1 && sizes[1] <= longest;
}

std::u16string rowForm(const kxArray* row) {
    std::u16string form;
    for (std::size_t at = 0; at < kxGetNumberOfElements(row); ++at)
        form += (at == 0 ? u"[" : u" ") + elementForm(row, at);
    return form + u']';
}

}  // namespace

std::u16string visible(std::u16string text) {
    constexpr char16_t pictures = 0x2400;
    constexpr char16_t pictureOfDelete = 0x2421;
    constexpr char16_t replacementCharacter = 0xFFFD;
    for (char16_t& unit : text) {
        if (unit < 0x20) {
            unit = static_cast<char16_t>(pictures + unit);
        } else if (unit == 0x7F) {
            unit = pictureOfDelete;
        } else if (unit >= 0x80 && unit < 0xA0) {
            unit = replacementCharacter;  // these have no picture
        }
    }
    return text;
}

std::u16string elementForm(const kxArray* array, std::size_t index) {
    switch (kxGetClassID(array)) {
        case kxLOGICAL_CLASS: return kxGetLogicals(array)[index] ? u"1" : u"0";
        case kxDOUBLE_CLASS: return numberForm(kxGetDoubles(array)[index]);
        default: {
            const std::optional<std::u16string>& string = kxGetStringElement(array, index);
            return string ? quoted(*string, u'"') : u"<missing>";
        }
    }
}

std::u16string shortForm(const kxArray* value) {
    if (value == nullptr) return u"0x0 double";
    if (isText(value)) {
        const std::span<const char16_t> units = kxGetChars(value);
        return quoted({units.data(), units.size()}, u'\'');
    }
    const bool hasElementForm = isNumeric(value) || kxGetClassID(value) == kxSTRING_CLASS;
    if (hasElementForm && kxGetNumberOfElements(value) == 1) return elementForm(value, 0);
    return isShortRow(value) ? rowForm(value) : sizeAndClass(value);
}

}  // namespace korvex::runtime::interpreter

namespace services::io {

std::wstring GetNewline() { return L"\n"; }

}  // namespace services::io

namespace io::legacy {

using services::io::operator<<;
namespace interpreter = korvex::runtime::interpreter;
namespace text = korvex::runtime::text;

namespace {

constexpr std::u16string_view indent = u"    ";

}  // namespace

void ioPrintScalarStructureFieldsGroup(std::wostream& stream, const kxArray* structure) {
    if (kxGetNumberOfElements(structure) == 0) return;
    for (int field = 0; field < kxGetNumberOfFields(structure); ++field) {
        std::u16string line(indent);
        line += text::fromBytes(kxGetFieldNameByNumber(structure, field)) + u": ";
        line += interpreter::shortForm(kxGetFieldByNumber(structure, 0, field));
        stream << line << services::io::GetNewline();
    }
}

}  // namespace io::legacy
