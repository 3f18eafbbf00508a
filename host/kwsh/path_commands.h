// Commands of the host for the search path and the function cache.
#pragma once

#include "host/kwsh/command_arguments.h"
#include "host/kwsh/workspace.h"

namespace korvex::host {

/// path: the folders of the search path.
Outputs showPath(Workspace& workspace, int outputs, Arguments arguments);
/// addpath folder...: to the front, in their order. All must exist, otherwise nothing changes.
Outputs addToPath(Workspace& workspace, int outputs, Arguments arguments);
/// rmpath folder...: there or not; a warning when none was on the path.
Outputs removeFromPath(Workspace& workspace, int outputs, Arguments arguments);

/// functions: the source files of the cached functions.
Outputs showFunctions(Workspace& workspace, int outputs, Arguments arguments);
/// load file: a path, or a name that is looked for in the current folder and on the search path.
Outputs loadFunction(Workspace& workspace, int outputs, Arguments arguments);

}  // namespace korvex::host
