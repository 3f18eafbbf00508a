// What the exception template needs of the catalog.
#include "platform/user_exceptions.h"

#include "platform/message_catalog.h"
#include "runtime/text/encoding.h"

namespace foundation::core::except::detail {

std::u16string catalogText(const resource_core::BaseMsgID& message) {
    return fl::i18n::MessageCatalog::get_message(message, fl::i18n::KwLocale::global());
}

std::string toUtf8(const std::u16string& text) { return korvex::runtime::text::toDisplayBytes(text); }

std::u16string fromUtf8(const std::string& text) { return korvex::runtime::text::fromBytes(text); }

}  // namespace foundation::core::except::detail
