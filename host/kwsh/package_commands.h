// The command `package`: which folders count as installed packages.
#pragma once

#include "host/kwsh/command_arguments.h"
#include "host/kwsh/workspace.h"

namespace korvex::host {

/// package add folder name [editable], package remove name, package list, package on, package off.
Outputs runPackage(Workspace& workspace, int outputs, Arguments arguments);

}  // namespace korvex::host
