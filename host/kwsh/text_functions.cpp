// char, double, strcat, string.
#include "host/kwsh/text_functions.h"

#include <algorithm>
#include <cmath>

#include "host/kwsh/failure.h"
#include "platform/string_matrix.h"

namespace korvex::host {
namespace {

[[noreturn]] void raiseBad(const resource_core::BaseMsgID& message) {
    throw HostError("badArgument", message);
}

Dimensions dimensionsOf(const kxArray* array) {
    const auto dimensions = kxGetDimensions(array);
    return {dimensions.begin(), dimensions.end()};
}

char16_t unitFrom(double number) {
    if (!(number >= 0 && number <= 65535) || number != std::trunc(number))
        raiseBad(messages::codeUnitOutOfRange(widen(numberText(number))));
    return static_cast<char16_t>(number);
}

bool isMissing(const kxArray* array) { return Velquist::String::isMissingScalarString(array); }

/// A text, nothing for a missing string. Raises for anything else.
std::optional<std::u16string> textOrMissing(const kxArray* array) {
    if (isMissing(array)) return std::nullopt;
    std::optional<std::u16string> text = scalarText(array);
    if (!text) raiseBad(messages::textNeeded(sizeAndClassText(array)));
    return text;
}

Value stringsFromRows(const kxArray* chars) {
    if (kxGetDimensions(chars).size() > 2) raiseBad(messages::charMatrixOnly());
    const std::size_t rows = kxGetM(chars);
    const std::size_t columns = kxGetN(chars);
    const std::span<const char16_t> units = kxGetChars(chars);
    Value strings = makeArray(kxSTRING_CLASS, {rows, 1});
    for (std::size_t row = 0; row < rows; ++row) {
        std::u16string text(columns, u'\0');
        for (std::size_t column = 0; column < columns; ++column)
            text[column] = units[column * rows + row];
        kxSetStringElement(strings.get(), row, std::move(text));
    }
    return strings;
}

template <class TextOfElement>
Value stringsElementwise(const kxArray* array, const TextOfElement& textOfElement) {
    Value strings = makeArray(kxSTRING_CLASS, dimensionsOf(array));
    for (std::size_t at = 0; at < kxGetNumberOfElements(array); ++at) {
        kxSetStringElement(strings.get(), at, textOfElement(at));
    }
    return strings;
}

}  // namespace

Value charsOf(std::span<const Value> arguments) {
    if (arguments.size() == 1) {
        if (const std::optional<std::u16string> text = scalarText(arguments[0].get())) return makeText(*text);
    }
    std::u16string units;
    for (const Value& argument : arguments) {
        if (kxGetClassID(argument.get()) != kxDOUBLE_CLASS)
            raiseBad(messages::codeUnitsNotNumbers(sizeAndClassText(argument.get())));
        std::ranges::transform(kxGetDoubles(argument.get()), std::back_inserter(units), unitFrom);
    }
    return makeText(units);
}

Value doublesOf(std::span<const Value> arguments) {
    const kxArray* array = arguments[0].get();
    const kxClassID classID = kxGetClassID(array);
    if (classID == kxDOUBLE_CLASS) return shared(array);
    if (classID == kxCHAR_CLASS || classID == kxLOGICAL_CLASS) {
        Value doubles = makeArray(kxDOUBLE_CLASS, dimensionsOf(array));
        const std::span<double> numbers = kxGetDoubles(doubles.get());
        if (classID == kxCHAR_CLASS) {
            std::ranges::copy(kxGetChars(array), numbers.begin());
        } else {
            std::ranges::copy(kxGetLogicals(array), numbers.begin());
        }
        return doubles;
    }
    const std::optional<std::u16string> text = scalarText(array);
    if (!text) raiseBad(messages::unitsOfTextOnly(sizeAndClassText(array)));
    Value doubles = makeArray(kxDOUBLE_CLASS, {1, text->size()});
    std::ranges::copy(*text, kxGetDoubles(doubles.get()).begin());
    return doubles;
}

Value strcatOf(std::span<const Value> arguments) {
    std::u16string joined;
    bool isString = false;
    bool hasMissing = false;
    for (const Value& argument : arguments) {
        const std::optional<std::u16string> text = textOrMissing(argument.get());
        isString = isString || Velquist::String::isString(argument.get());
        hasMissing = hasMissing || !text;
        joined += text.value_or(u"");
    }
    if (hasMissing) return makeString(std::nullopt);
    return isString ? makeString(joined) : makeText(joined);
}

Value stringsFrom(std::span<const Value> arguments) {
    const kxArray* array = arguments[0].get();
    switch (kxGetClassID(array)) {
        case kxSTRING_CLASS: return shared(array);
        case kxCHAR_CLASS:
            return Velquist::String::isCharacterVector(array) ? makeString(scalarText(array))
                                                              : stringsFromRows(array);
        case kxDOUBLE_CLASS:
            return stringsElementwise(
                array, [&](std::size_t at) { return widen(numberText(kxGetDoubles(array)[at])); });
        case kxLOGICAL_CLASS:
            return stringsElementwise(array, [&](std::size_t at) {
                return std::u16string(kxGetLogicals(array)[at] ? u"true" : u"false");
            });
        case kxCELL_CLASS:
            return stringsElementwise(
                array, [&](std::size_t at) { return textOrMissing(shared(kxGetCell(array, at)).get()); });
        default: raiseBad(messages::withoutTexts(sizeAndClassText(array)));
    }
}

}  // namespace korvex::host
