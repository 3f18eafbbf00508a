// What went wrong in a statement, as the user is told: a text and an identifier.
#pragma once

#include <exception>
#include <string>
#include <string_view>

#include "runtime/messages/host_messages.h"

namespace korvex::host {

struct Failure {
    std::string identifier;
    std::u16string text;
};

/// The texts of the host's errors.
namespace messages = KORVEX::host;

/// The catalog's text, for what stands inside of another one.
std::u16string catalogText(const resource_core::BaseMsgID& message);

/// An error of the host itself: syntax, indexing, host functions. The identifier is "KORVEX:host:" and a key.
class HostError : public std::exception {
public:
    HostError(std::string_view key, std::u16string text);
    HostError(std::string_view key, const resource_core::BaseMsgID& message);
    explicit HostError(Failure failure);

    const Failure& failure() const noexcept { return failure_; }
    const char* what() const noexcept override { return narrowText_.c_str(); }

private:
    Failure failure_;
    std::string narrowText_;
};

/// What the exception that is being handled tells the user. Call it inside of a catch block only.
Failure describeCurrentException();

/// `assert` without a text: the statement itself tells what does not hold.
class FailedAssertion : public HostError {
public:
    FailedAssertion();
    Failure failureIn(std::u16string_view statement) const;
};

Failure interruptedFailure();
/// Whether this is the user's wish to stop, whoever raised it.
bool isInterrupt(const Failure& failure);

/// A name that is neither variable, command nor function: raises "KORVEX:UndefinedFunction".
[[noreturn]] void raiseUndefined(std::string_view name);

}  // namespace korvex::host
