// From a message record to its text: look the pattern up, fill the arguments in.
#include "platform/message_catalog.h"

#include <unicode/fmtable.h>
#include <unicode/msgfmt.h>

#include <optional>

#include "runtime/messages/bundles.h"
#include "runtime/text/encoding.h"

namespace fl::i18n {
namespace {

using resource_core::BaseMsgID;
using resource_core::MessageArgument;

std::u16string textOf(const MessageArgument& argument) {
    if (const std::u16string* wide = argument.wideText()) return *wide;
    if (const std::string* narrow = argument.narrowText()) return to_ustring(*narrow);
    return {};
}

icu::UnicodeString toUnicodeString(const std::u16string& text) {
    return {text.data(), static_cast<int32_t>(text.size())};
}

/// Nothing when the pattern is malformed.
std::optional<std::u16string> filledIn(const std::u16string& pattern,
                                       const std::vector<MessageArgument>& arguments) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::MessageFormat format(toUnicodeString(pattern), icu::Locale::getRoot(), status);
    std::vector<icu::Formattable> values;
    values.reserve(arguments.size());
    for (const MessageArgument& argument : arguments)
        values.emplace_back(toUnicodeString(textOf(argument)));
    icu::UnicodeString text;
    icu::FieldPosition ignored;
    format.format(values.data(), static_cast<int32_t>(values.size()), text, ignored, status);
    if (U_FAILURE(status)) return std::nullopt;
    return std::u16string(text.getBuffer(), static_cast<std::size_t>(text.length()));
}

std::u16string withoutEntry(const BaseMsgID& message) {
    std::u16string text = to_ustring(message.identifier());
    const char16_t* separator = u" (";
    for (const MessageArgument& argument : message.args) {
        text += separator + textOf(argument);
        separator = u", ";
    }
    if (!message.args.empty()) text += u')';
    return text;
}

}  // namespace

std::u16string MessageCatalog::get_message(const BaseMsgID& message, const KwLocale& locale) {
    const auto pattern =
        korvex::runtime::messages::entryPattern(message.component, message.key, locale.name());
    std::optional<std::u16string> text;
    if (pattern) text = filledIn(*pattern, message.args);
    return text ? *std::move(text) : withoutEntry(message);
}

std::u16string to_ustring(const std::string& text) { return korvex::runtime::text::fromBytes(text); }

}  // namespace fl::i18n
