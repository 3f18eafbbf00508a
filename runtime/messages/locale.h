// The locale of the environment.
#pragma once

#include <string>

namespace korvex::runtime::messages {

/// Sets the locale that `KwLocale::global()` gives; an empty name goes back to the process's own.
void setGlobalLocale(const std::string& name);

}  // namespace korvex::runtime::messages
