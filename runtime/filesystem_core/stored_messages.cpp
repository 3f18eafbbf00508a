// From an identifier to the exception of its message class, by a search through the vocabulary.
#include "runtime/filesystem_core/stored_messages.h"

#include <tuple>

#include "platform/message_identifiers.h"

namespace korvex::runtime::filesystem_core {

namespace {

using io::filesystem::core::Status;

template <class Message>
bool storeIfNamed(Status& status, std::string_view identifier, const std::u16string& argument) {
    if constexpr (Message::template takes<const std::u16string&>) {
        if (identifier != Message::fullIdentifier) return false;
        status.exception =
            boost::copy_exception(foundation::core::except::Exception<Message>(Message(argument)));
        return true;
    }
    return false;
}

template <class... Messages>
bool storeFirstNamed(const std::tuple<Messages...>*, Status& status, std::string_view identifier,
                     const std::u16string& argument) {
    return (storeIfNamed<Messages>(status, identifier, argument) || ...);
}

}  // namespace

bool storeMessageOfOneArgument(Status& status, std::string_view identifier, const std::u16string& argument) {
    constexpr const KORVEX::Vocabulary* vocabulary = nullptr;
    return storeFirstNamed(vocabulary, status, identifier, argument);
}

}  // namespace korvex::runtime::filesystem_core
