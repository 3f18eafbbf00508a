// Interpreted functions that commands may call by name.
#pragma once

#include <functional>
#include <string>

#include "platform/kx.h"

namespace korvex::runtime::interpreter {

/// Called with the signature of the commands' entries.
using InterpretedFunction = std::function<void(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[])>;

/// Makes a function known under a name, or replaces it; an empty function takes the name away.
void registerFunction(const std::string& name, InterpretedFunction function);

}  // namespace korvex::runtime::interpreter
