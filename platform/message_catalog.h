// Texts for the user by message record and locale.
#pragma once

#include <string>

#include "platform/message_record.h"

namespace fl::i18n {

/// A language and region, as "de" or "en_US".
class KwLocale {
public:
    explicit KwLocale(std::string name);

    /// The locale of the environment: the one of the process unless the host has set another.
    static KwLocale global();

    const std::string& name() const noexcept { return name_; }

private:
    std::string name_;
};

class MessageCatalog {
public:
    /// The text of the entry with its arguments filled in. An entry that the catalog does not have reads as
    /// its identifier with the arguments in brackets behind it; never fails for want of an entry.
    static std::u16string get_message(const resource_core::BaseMsgID& message, const KwLocale& locale);
};

/// ASCII or UTF-8 text as 16-bit text.
std::u16string to_ustring(const std::string& text);

namespace detail {
enum CaseSensitivity { case_sensitive, case_insensitive };

/// Orders two texts given in 16-bit units: negative, 0 when equal, positive. Folds case by the rules of
/// Unicode's default folding when asked to.
int compare(const char16_t* a, std::size_t lengthA, const char16_t* b, std::size_t lengthB,
            CaseSensitivity sensitivity);
}  // namespace detail

}  // namespace fl::i18n
