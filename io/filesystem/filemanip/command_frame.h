// What all commands have in common: the signature of their entries, the check of argument counts, the reading
// of text arguments, and the ways in which a user error leaves.
#pragma once

#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include "platform/kx.h"
#include "platform/message_catalog.h"
#include "platform/module_entry.h"
#include "platform/user_exceptions.h"

namespace korvex::filemanip {

/// How many outputs and arguments a command takes.
struct ArgumentLimits {
    static constexpr int unlimited = std::numeric_limits<int>::max();

    int mostOutputs;
    int fewestArguments;
    int mostArguments;
};

/// Raises the interpreter's count error for the first limit that is broken: outputs, then too many arguments,
/// then too few.
void checkArgumentCounts(const ArgumentLimits& limits, int nlhs, int nrhs);

/// The 16-bit units of a text argument, borrowed from it. Raises
/// "KORVEX:string:MustBeStringScalarOrCharacterVector" for null and for what is no text,
/// "KORVEX:string:MissingNotSupported" for a missing string. A character array counts when it is a row or
/// 0-by-0; with `strict` false, whatever its shape, in storage order.
std::u16string_view textOfArgument(const kxArray* argument, bool strict);

/// Judges an argument that must name something; `prefix` is the command's word, as "COPYFILE". True when the
/// command may go on. An empty text delivers "KORVEX:<prefix>:IllegalName" through the outputs (or raises it,
/// where there are none) and gives false: the entry returns at once. Raises
/// "KORVEX:string:MissingNotSupported" for a missing string and "KORVEX:string" for what is not one text.
bool validateNameArgument(int nlhs, kxArray* plhs[], const kxArray* argument, std::string_view prefix);

/// Raises a user error: hands it to the interpreter, and throws it should that return.
template <class Tag>
[[noreturn]] void raise(const foundation::core::except::Exception<Tag>& error) {
    matrix::detail::do_legacy_kx_error(error);
    throw error;
}

/// Raises a message under its own identifier.
template <class Tag>
[[noreturn]] void raise(const Tag& message) {
    raise(foundation::core::except::Exception<Tag>(message));
}

/// Raises the text of a message under another identifier.
template <class Tag>
[[noreturn]] void raise(const Tag& message, std::string identifier) {
    raise(foundation::core::except::Exception<Tag>(message, std::move(identifier)));
}

/// The text of a message in the global locale, arguments filled in: to be printed, or for another message.
inline std::u16string labelText(const resource_core::BaseMsgID& label) {
    return fl::i18n::MessageCatalog::get_message(label, fl::i18n::KwLocale::global());
}

}  // namespace korvex::filemanip
