// Comparison of texts with and without case.
#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <limits>
#include <stdexcept>
#include <string_view>

#include "platform/message_catalog.h"

namespace fl::i18n::detail {
namespace {

int32_t checkedLength(std::size_t length) {
    if (length > static_cast<std::size_t>(std::numeric_limits<int32_t>::max())) {
        throw std::length_error("a text is too long for a comparison without case");
    }
    return static_cast<int32_t>(length);
}

}  // namespace

int compare(const char16_t* a, std::size_t lengthA, const char16_t* b, std::size_t lengthB,
            CaseSensitivity sensitivity) {
    if (sensitivity == case_sensitive) {
        return std::u16string_view(a, lengthA).compare(std::u16string_view(b, lengthB));
    }
    // ICU takes no null pointer, not even for an empty text.
    UErrorCode status = U_ZERO_ERROR;
    return u_strCaseCompare(a == nullptr ? u"" : a, checkedLength(lengthA), b == nullptr ? u"" : b,
                            checkedLength(lengthB), U_FOLD_CASE_DEFAULT, &status);
}

}  // namespace fl::i18n::detail
