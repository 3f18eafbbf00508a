// Functions of the host, for making arguments and looking at results.
#pragma once

#include <span>
#include <string_view>

#include "host/kwsh/values.h"

namespace korvex::host {

struct HostFunction {
    std::string_view name;
    std::size_t fewestArguments;
    std::size_t mostArguments;
    Value (*compute)(std::span<const Value> arguments);
    /// Its form and what it gives, for `help`.
    std::string_view form;
    std::string_view meaning;
};

std::span<const HostFunction> hostFunctions();
/// Null when there is none of that name.
const HostFunction* findHostFunction(std::string_view name);

/// Raises the interpreter's count errors, and `HostError` "badArgument", "arrayTooLarge".
Value callHostFunction(const HostFunction& function, int outputs, std::span<const Value> arguments);

}  // namespace korvex::host
