// The search path as it is asked for folders.
#pragma once

#include <memory>

#include "platform/path_management.h"

namespace korvex::runtime::dispatcher {

/// The path as it is with each question. Never null.
std::shared_ptr<const Velquist::PathManagement::IPath> currentPathForLookup();

}  // namespace korvex::runtime::dispatcher
