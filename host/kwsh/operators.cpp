// Truth, comparisons of numbers, comparisons of texts.
#include "host/kwsh/operators.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/kwsh/failure.h"
#include "platform/string_matrix.h"

namespace korvex::host {
namespace {

[[noreturn]] void raiseBad(const resource_core::BaseMsgID& message) {
    throw HostError("badOperand", message);
}

Dimensions dimensionsOf(const kxArray* array) {
    const auto dimensions = kxGetDimensions(array);
    return {dimensions.begin(), dimensions.end()};
}

// ------------------------------------------------------------------------------------------- numbers

bool isComparable(const kxArray* array) {
    const kxClassID classID = kxGetClassID(array);
    return classID == kxDOUBLE_CLASS || classID == kxLOGICAL_CLASS || classID == kxCHAR_CLASS;
}

/// The element of an array that is comparable, as a number.
double numberAt(const kxArray* array, std::size_t index) {
    switch (kxGetClassID(array)) {
        case kxLOGICAL_CLASS: return kxGetLogicals(array)[index] ? 1 : 0;
        case kxCHAR_CLASS: return kxGetChars(array)[index];
        default: return kxGetDoubles(array)[index];
    }
}

/// Whether the element is not zero. Raises the error of this key for NaN.
bool truthAt(const kxArray* array, std::size_t index, std::string_view key) {
    const double number = numberAt(array, index);
    if (std::isnan(number)) throw HostError(key, messages::nanIsNoTruth());
    return number != 0;
}

bool holds(Operator comparison, double left, double right) {
    switch (comparison) {
        case Operator::equal: return left == right;
        case Operator::notEqual: return left != right;
        case Operator::less: return left < right;
        case Operator::lessOrEqual: return left <= right;
        case Operator::greater: return left > right;
        default: return left >= right;
    }
}

// ---------------------------------------------------------------------------------------- both sides

/// A logical array of the answers for the elements of two sides, the one element of a side for all of the
/// other.
template <class Answer>
Value answersOf(const kxArray* left, const kxArray* right, const Answer& answer) {
    const kxArray* shape = isScalar(left) ? right : left;
    Value answers = makeArray(kxLOGICAL_CLASS, dimensionsOf(shape));
    const std::span<kxLogical> truths = kxGetLogicals(answers.get());
    for (std::size_t at = 0; at < truths.size(); ++at)
        truths[at] = answer(isScalar(left) ? 0 : at, isScalar(right) ? 0 : at);
    return answers;
}

bool haveFittingSizes(const kxArray* left, const kxArray* right) {
    return isScalar(left) || isScalar(right) ||
           std::ranges::equal(kxGetDimensions(left), kxGetDimensions(right));
}

void requireFittingSizes(Operator comparison, const kxArray* left, const kxArray* right) {
    if (haveFittingSizes(left, right)) return;
    const std::u16string spelling(spellingOf(comparison));
    if (kxGetClassID(left) == kxCHAR_CLASS || kxGetClassID(right) == kxCHAR_CLASS) {
        throw HostError("differentSizes",
                        messages::differentTextSizes(spelling, sizeText(left), sizeText(right)));
    }
    throw HostError("differentSizes", messages::differentSizes(spelling, sizeText(left), sizeText(right)));
}

// --------------------------------------------------------------------------------------------- texts

using Text = std::optional<std::u16string>;

/// A string array as it is, a character row as a string; null for anything else.
Value asStrings(const kxArray* array) {
    if (Velquist::String::isString(array)) return shared(array);
    return Velquist::String::isCharacterVector(array) ? makeString(scalarText(array)) : Value();
}

Value comparedTexts(Operator comparison, const kxArray* left, const kxArray* right) {
    const Value leftTexts = asStrings(left);
    const Value rightTexts = asStrings(right);
    if (!leftTexts || !rightTexts) {
        raiseBad(messages::cannotCompare(std::u16string(spellingOf(comparison)), sizeAndClassText(left),
                                         sizeAndClassText(right)));
    }
    if (comparison != Operator::equal && comparison != Operator::notEqual) {
        raiseBad(messages::mustBeEqualOperator(std::u16string(spellingOf(comparison))));
    }
    requireFittingSizes(comparison, leftTexts.get(), rightTexts.get());
    return answersOf(leftTexts.get(), rightTexts.get(), [&](std::size_t leftAt, std::size_t rightAt) {
        const Text& leftText = kxGetStringElement(leftTexts.get(), leftAt);
        const Text& rightText = kxGetStringElement(rightTexts.get(), rightAt);
        const bool areSame = leftText && rightText && *leftText == *rightText;
        return areSame == (comparison == Operator::equal);
    });
}

/// A cell or string array, of which each element counts for itself.
bool isTextArray(const kxArray* array) {
    return kxGetClassID(array) == kxCELL_CLASS || Velquist::String::isString(array);
}

/// One side of `strcmp` at an index; any other array than a text array is the same at each.
Value itemAt(const kxArray* array, std::size_t index) {
    if (kxGetClassID(array) == kxCELL_CLASS) return shared(kxGetCell(array, index));
    return Velquist::String::isString(array) ? makeString(kxGetStringElement(array, index)) : shared(array);
}

bool areSameTexts(const kxArray* left, const kxArray* right) {
    const Text leftText = scalarText(left);
    const Text rightText = scalarText(right);
    if (leftText && rightText) return *leftText == *rightText;
    // Matrices of characters are no single texts.
    return kxGetClassID(left) == kxCHAR_CLASS && kxGetClassID(right) == kxCHAR_CLASS &&
           std::ranges::equal(kxGetDimensions(left), kxGetDimensions(right)) &&
           std::ranges::equal(kxGetChars(left), kxGetChars(right));
}

}  // namespace

bool isTrue(const kxArray* condition) {
    if (!isComparable(condition))
        throw HostError("badCondition", messages::conditionNotTruth(sizeAndClassText(condition)));
    const std::size_t count = kxGetNumberOfElements(condition);
    for (std::size_t at = 0; at < count; ++at) {
        if (!truthAt(condition, at, "badCondition")) return false;
    }
    return count > 0;
}

Value negated(const kxArray* array) {
    if (!isComparable(array)) raiseBad(messages::operandNotTruth(u"~", sizeAndClassText(array)));
    Value truths = makeArray(kxLOGICAL_CLASS, dimensionsOf(array));
    const std::span<kxLogical> negations = kxGetLogicals(truths.get());
    for (std::size_t at = 0; at < negations.size(); ++at)
        negations[at] = !truthAt(array, at, "badOperand");
    return truths;
}

Value withSign(char16_t sign, const kxArray* array) {
    if (kxGetClassID(array) != kxDOUBLE_CLASS) raiseBad(messages::signNeedsNumber(sizeAndClassText(array)));
    Value numbers(kxDuplicateArray(array));
    if (sign == u'-')
        std::ranges::transform(kxGetDoubles(array), kxGetDoubles(numbers.get()).begin(), std::negate<>());
    return numbers;
}

Value compared(Operator comparison, const kxArray* left, const kxArray* right) {
    if (!isComparable(left) || !isComparable(right)) return comparedTexts(comparison, left, right);
    requireFittingSizes(comparison, left, right);
    return answersOf(left, right, [&](std::size_t leftAt, std::size_t rightAt) {
        return holds(comparison, numberAt(left, leftAt), numberAt(right, rightAt));
    });
}

Value sameTexts(std::span<const Value> arguments) {
    const kxArray* left = arguments[0].get();
    const kxArray* right = arguments[1].get();
    if (!isTextArray(left) && !isTextArray(right)) return makeLogical(areSameTexts(left, right));
    // The other side as one element, whatever its size.
    const Value one = makeLogical(true);
    const kxArray* leftShape = isTextArray(left) ? left : one.get();
    const kxArray* rightShape = isTextArray(right) ? right : one.get();
    if (!haveFittingSizes(leftShape, rightShape)) {
        throw HostError("differentSizes",
                        messages::differentSizes(u"strcmp", sizeText(left), sizeText(right)));
    }
    return answersOf(leftShape, rightShape, [&](std::size_t leftAt, std::size_t rightAt) {
        return areSameTexts(itemAt(left, leftAt).get(), itemAt(right, rightAt).get());
    });
}

}  // namespace korvex::host
