// The process's working folder, which the environment reads once.
#pragma once

#include <string>

namespace korvex::runtime::dispatcher {

/// The working folder of the process as a native path of any length; empty when it is gone.
std::u16string processWorkingFolder();

}  // namespace korvex::runtime::dispatcher
