// Which values are texts.
#include "platform/string_matrix.h"
#include "runtime/array/array_checks.h"

namespace Velquist::String {

namespace {

bool isChar(const kxArray* array) { return array != nullptr && array->classID() == kxCHAR_CLASS; }

bool isStringScalar(const kxArray* array) { return isString(array) && array->elements() == 1; }

// Of a string scalar.
bool isMissing(const kxArray& scalar) { return !scalar.strings().front().has_value(); }

}  // namespace

bool isMissingScalarString(const kxArray* array) { return isStringScalar(array) && isMissing(*array); }

bool isNonMissingScalarText(const kxArray* array, CharTolerance tolerance) {
    return isScalarText(array, tolerance == characterVectorsOnly, true);
}

bool isNonEmptyScalarText(const kxArray* array, CharTolerance tolerance) {
    if (!isNonMissingScalarText(array, tolerance)) return false;
    return isChar(array) ? array->elements() != 0 : !array->strings().front()->empty();
}

bool isScalarText(const kxArray* array, bool rowsOnly, bool rejectMissing) {
    if (isChar(array)) return !rowsOnly || isCharacterVector(array);
    return isStringScalar(array) && !(rejectMissing && isMissing(*array));
}

bool isCharacterVector(const kxArray* array) {
    if (!isChar(array) || array->dimensions().size() != 2) return false;
    return array->rows() == 1 || (array->rows() == 0 && array->columns() == 0);
}

bool isString(const kxArray* array) { return array != nullptr && array->classID() == kxSTRING_CLASS; }

StringView getString(const kxArray* array) {
    korvex::runtime::array::requireClass(array, kxSTRING_CLASS, "getString");
    return StringView(array);
}

}  // namespace Velquist::String
