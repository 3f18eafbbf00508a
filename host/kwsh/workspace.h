// What a session remembers from one statement to the next.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "host/kwsh/failure.h"
#include "host/kwsh/values.h"

namespace korvex::host {

struct Workspace {
    bool hasVariable(std::string_view name) const { return variables.contains(name); }

    std::map<std::string, Value, std::less<>> variables;
    /// Of the last statement that failed; empty at first.
    Failure lastFailure;
    bool isExitRequested = false;
    /// What is printed may have colours.
    bool isOutputColoured = false;
};

}  // namespace korvex::host
