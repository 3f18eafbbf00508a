// Making and describing arrays.
#include "host/kwsh/values.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "host/kwsh/failure.h"
#include "platform/string_matrix.h"
#include "runtime/text/encoding.h"

namespace korvex::host {
namespace {

std::size_t bytesPerElement(kxClassID classID, std::size_t fields) {
    switch (classID) {
        case kxLOGICAL_CLASS: return sizeof(kxLogical);
        case kxCHAR_CLASS: return sizeof(char16_t);
        case kxSTRING_CLASS: return sizeof(std::optional<std::u16string>);
        case kxSTRUCT_CLASS: return sizeof(kxArray*) * fields;
        default: return sizeof(double);
    }
}

/// Drops dimensions of 1 at the end and raises when the array would be too large.
Dimensions checkedDimensions(Dimensions dimensions, std::size_t elementBytes) {
    while (dimensions.size() > 2 && dimensions.back() == 1)
        dimensions.pop_back();
    // Each single dimension is bounded too, so that an empty array cannot have sizes that overflow elsewhere.
    std::size_t count = elementBytes == 0 ? 1 : elementBytes;
    bool isTooLarge = false;
    bool isEmpty = false;
    for (const std::size_t dimension : dimensions) {
        isTooLarge = isTooLarge || dimension > largestArrayBytes;
        isEmpty = isEmpty || dimension == 0;
        if (!isTooLarge && dimension != 0) {
            count *= dimension;
            isTooLarge = count > largestArrayBytes;
        }
    }
    if (isTooLarge) {
        if (isEmpty) throw HostError("arrayTooLarge", messages::emptyArrayTooLarge());
        throw HostError("arrayTooLarge", messages::arrayTooLarge());
    }
    return dimensions;
}

}  // namespace

Value shared(const kxArray* array) {
    return Value(array == nullptr ? kxCreateDoubleMatrix(0, 0) : kxCreateReference(array));
}

Value makeText(std::u16string_view text) { return matrix::create(text); }

Value makeString(const std::optional<std::u16string>& text) { return Value(kxCreateStringScalar(text)); }

Value makeDouble(double number) { return Value(kxCreateDoubleScalar(number)); }

Value makeLogical(bool truth) { return Value(kxCreateLogicalScalar(truth)); }

Value makeArray(kxClassID classID, Dimensions dimensions) {
    dimensions = checkedDimensions(std::move(dimensions), bytesPerElement(classID, 0));
    switch (classID) {
        case kxLOGICAL_CLASS: return Value(kxCreateLogicalArray(dimensions));
        case kxCHAR_CLASS: return Value(kxCreateCharArray(dimensions));
        case kxCELL_CLASS: return Value(kxCreateCellArray(dimensions));
        case kxSTRING_CLASS: return Value(kxCreateStringArray(dimensions));
        default: return Value(kxCreateDoubleArray(dimensions));
    }
}

Value makeArrayLike(const kxArray* model, Dimensions dimensions) {
    if (kxGetClassID(model) != kxSTRUCT_CLASS) return makeArray(kxGetClassID(model), std::move(dimensions));
    std::vector<const char*> names;
    for (int field = 0; field < kxGetNumberOfFields(model); ++field) {
        names.push_back(kxGetFieldNameByNumber(model, field));
    }
    dimensions = checkedDimensions(std::move(dimensions), bytesPerElement(kxSTRUCT_CLASS, names.size()));
    return Value(kxCreateStructArray(dimensions, names));
}

void copyElement(kxArray* target, std::size_t targetIndex, const kxArray* source, std::size_t sourceIndex) {
    switch (kxGetClassID(source)) {
        case kxDOUBLE_CLASS: kxGetDoubles(target)[targetIndex] = kxGetDoubles(source)[sourceIndex]; break;
        case kxLOGICAL_CLASS: kxGetLogicals(target)[targetIndex] = kxGetLogicals(source)[sourceIndex]; break;
        case kxCHAR_CLASS: kxGetChars(target)[targetIndex] = kxGetChars(source)[sourceIndex]; break;
        case kxSTRING_CLASS:
            kxSetStringElement(target, targetIndex, kxGetStringElement(source, sourceIndex));
            break;
        case kxCELL_CLASS:
            kxSetCell(target, targetIndex, shared(kxGetCell(source, sourceIndex)).release());
            break;
        case kxSTRUCT_CLASS:
            for (int field = 0; field < kxGetNumberOfFields(source); ++field) {
                kxSetFieldByNumber(target, targetIndex, field,
                                   shared(kxGetFieldByNumber(source, sourceIndex, field)).release());
            }
            break;
        default: throw HostError("unknownClass", messages::unknownClass());
    }
}

std::optional<std::u16string> scalarText(const kxArray* array) {
    if (Velquist::String::isString(array)) {
        return kxGetNumberOfElements(array) == 1 ? kxGetStringElement(array, 0) : std::nullopt;
    }
    if (!Velquist::String::isCharacterVector(array)) return std::nullopt;
    const std::span<const char16_t> units = kxGetChars(array);
    return std::u16string(units.begin(), units.end());
}

bool isScalar(const kxArray* array) { return kxGetNumberOfElements(array) == 1; }

std::u16string sizeText(const kxArray* array) {
    std::u16string text;
    for (const std::size_t dimension : kxGetDimensions(array)) {
        if (!text.empty()) text += u'x';
        text += countText(dimension);
    }
    return text;
}

std::u16string sizeAndClassText(const kxArray* array) {
    return sizeText(array) + u' ' + widen(kxGetClassName(array));
}

std::u16string widen(std::string_view text) { return runtime::text::fromBytes(text); }

std::u16string countText(std::size_t count) { return widen(std::to_string(count)); }

std::string numberText(double number) {
    if (std::isnan(number)) return "NaN";
    if (std::isinf(number)) return number < 0 ? "-Inf" : "Inf";
    std::array<char, 400> digits{};
    const bool isPlainWhole = number == std::trunc(number) && std::abs(number) < 1e15;
    const std::to_chars_result end =
        isPlainWhole
            ? std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed)
            : std::to_chars(digits.data(), digits.data() + digits.size(), number);
    return std::string(digits.data(), end.ptr);
}

}  // namespace korvex::host
