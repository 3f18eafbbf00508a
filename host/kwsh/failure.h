// What went wrong in a statement, as the user is told: a text and an identifier.
#pragma once

#include <exception>
#include <string>
#include <string_view>

namespace korvex::host {

struct Failure {
    std::string identifier;
    std::u16string text;
};

/// An error of the host itself: syntax, indexing, host functions. The identifier is "KORVEX:host:" and a key.
class HostError : public std::exception {
public:
    HostError(std::string_view key, std::u16string text);
    explicit HostError(Failure failure);

    const Failure& failure() const noexcept { return failure_; }
    const char* what() const noexcept override { return narrowText_.c_str(); }

private:
    Failure failure_;
    std::string narrowText_;
};

/// What the exception that is being handled tells the user. Call it inside of a catch block only.
Failure describeCurrentException();

inline constexpr std::string_view interruptedIdentifier = "KORVEX:host:interrupted";
Failure interruptedFailure();

/// A name that is neither variable, command nor function: raises "KORVEX:UndefinedFunction".
[[noreturn]] void raiseUndefined(std::string_view name);

}  // namespace korvex::host
