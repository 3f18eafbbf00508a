// What a session remembers from one statement to the next.
#pragma once

#include <map>
#include <string>

#include "host/kwsh/failure.h"
#include "host/kwsh/values.h"

namespace korvex::host {

struct Workspace {
    std::map<std::string, Value, std::less<>> variables;
    /// Of the last statement that failed; empty at first.
    Failure lastFailure;
    bool isExitRequested = false;
};

}  // namespace korvex::host
