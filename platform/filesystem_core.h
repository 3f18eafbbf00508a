// libkwfilesystemcore: what the file commands share with the rest of the environment.
#pragma once

#include <boost/exception_ptr.hpp>
#include <cstdint>
#include <string>

#include "platform/kx.h"
#include "platform/message_record.h"

namespace korvex::io::filesystem::core {

/// The outcome of an engine's work. A message may stand under a success code, as a note.
struct Status {
    static constexpr std::int32_t success = 1;
    static constexpr std::int32_t failure = 2;

    std::int32_t code = success;
    /// Holds a `foundation::core::except::Exception`; null while nothing was reported.
    boost::exception_ptr exception;

    /// Appends the message's text to a list, on a line of its own. True when the list has reached its limit
    /// (4096 units): the caller appends no more.
    static bool AppendWithLimit(std::u16string& list, const resource_core::BaseMsgID& message);
};

namespace detail {

/// The identifier and the text of a stored exception; empty for null.
std::string GetID(const boost::exception_ptr& exception);
std::u16string GetUnicodeMessageTxt(const boost::exception_ptr& exception);

}  // namespace detail

/// Turns the outcome of a command into its outputs.
class ResultHandler {
public:
    /// Sets as many outputs as `nlhs` asks for, of three: a logical (success or not), the message's text, its
    /// identifier; both texts are empty where there is no message. With no output asked for, a failure raises
    /// its exception and a success does nothing. A failure without a message reads as "OSError".
    static void HandleStatus(Status status, int nlhs, kxArray* plhs[]);
};

/// Makes the letters A to Z small, in place; all other units stay.
void makeLowerCase(std::u16string& text);

/// A network path, as `\\host\share`, by the rules of the platform's path style. None with the POSIX style.
bool isUNCPath(const std::u16string& text);

/// A path of the long form that begins with `\\?\`, by the rules of the platform's path style.
bool isLongPath(const std::u16string& text);

}  // namespace korvex::io::filesystem::core
