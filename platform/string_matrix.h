// The interpreter's string library: is this argument a text, and which texts does it hold.
//
// A character vector is a two-dimensional character array whose first dimension is 1, or 0-by-0.
#pragma once

#include <cstddef>
#include <exception>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/kx.h"

namespace Velquist::String {

/// Which character arrays count as one text. Empty texts count under both.
enum CharTolerance {
    characterVectorsOnly = 0,  ///< rows and 0-by-0
    anyCharacterArray = 1,     ///< whatever its shape, in storage order
};

/// A string scalar whose one element is missing.
bool isMissingScalarString(const kxArray* array);
/// One text that is not missing: a character array that the tolerance lets through, or a string scalar.
bool isNonMissingScalarText(const kxArray* array, CharTolerance tolerance);
/// Such a text with at least one unit.
bool isNonEmptyScalarText(const kxArray* array, CharTolerance tolerance);
/// With (true, false): character vectors and string scalars pass, a missing string too.
/// `rowsOnly` false lets every character array through, `rejectMissing` true turns a missing string away.
bool isScalarText(const kxArray* array, bool rowsOnly, bool rejectMissing);
/// A two-dimensional character array whose first dimension is 1, or 0-by-0.
bool isCharacterVector(const kxArray* array);

/// A string array, whatever its shape. Null is none.
bool isString(const kxArray* array);

/// The elements of a string array, borrowed from it.
class StringView {
public:
    explicit StringView(const kxArray* strings) : strings_(strings) {}

    std::span<const std::size_t> dimensions() const { return kxGetDimensions(strings_); }
    std::size_t size() const { return kxGetNumberOfElements(strings_); }
    /// No text where the element is missing.
    const std::optional<std::u16string>& operator[](std::size_t index) const {
        return kxGetStringElement(strings_, index);
    }

private:
    const kxArray* strings_;
};

/// Raises `matrix::UsageError` for an array of another class.
StringView getString(const kxArray* array);

namespace TextDispatch {

/// Signals that an argument is of none of the kinds that hold texts.
class NotText : public std::exception {
public:
    const char* what() const noexcept override { return "the argument holds no text"; }
};

enum Access { ReadOnly, Writable };

namespace Wrappers {

/// A string array: each element a text, or missing.
template <Access access>
class StringWrapper {
public:
    explicit StringWrapper(const kxArray* array) : strings_(getString(array)) {}
    std::span<const std::size_t> dimensions() const { return strings_.dimensions(); }
    std::size_t size() const { return strings_.size(); }
    const std::optional<std::u16string>& operator[](std::size_t index) const { return strings_[index]; }

private:
    StringView strings_;
};

/// A character vector: one text.
template <Access access>
class CharVectorWrapper {
public:
    explicit CharVectorWrapper(const kxArray* array) : units_(kxGetChars(array)) {}
    std::u16string_view text() const { return {units_.data(), units_.size()}; }

private:
    std::span<const char16_t> units_;
};

/// A cell array whose elements must all be character vectors.
template <Access access>
class StrictCellWrapper {
public:
    explicit StrictCellWrapper(const kxArray* array) : cell_(array) {}
    std::span<const std::size_t> dimensions() const { return kxGetDimensions(cell_); }
    std::size_t size() const { return kxGetNumberOfElements(cell_); }
    /// No text where the element is absent or no character vector.
    std::optional<std::u16string_view> operator[](std::size_t index) const {
        const kxArray* element = kxGetCell(cell_, index);
        if (element == nullptr || !isCharacterVector(element)) return std::nullopt;
        const std::span<const char16_t> units = kxGetChars(element);
        return std::u16string_view(units.data(), units.size());
    }

private:
    const kxArray* cell_;
};

}  // namespace Wrappers

/// Hands the argument to the visitor's operator for its kind: string array, character vector, cell array, in
/// this order; an array of any other kind, and null, raise `NotText`.
template <class Visitor>
auto dispatch(const kxArray* argument, Visitor&& visitor) {
    if (isString(argument)) return visitor(Wrappers::StringWrapper<Writable>(argument));
    if (argument != nullptr && isCharacterVector(argument)) {
        return visitor(Wrappers::CharVectorWrapper<ReadOnly>(argument));
    }
    if (argument != nullptr && kxGetClassID(argument) == kxCELL_CLASS) {
        return visitor(Wrappers::StrictCellWrapper<ReadOnly>(argument));
    }
    throw NotText();
}

}  // namespace TextDispatch
}  // namespace Velquist::String
