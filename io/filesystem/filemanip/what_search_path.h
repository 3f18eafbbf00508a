// Where `what` looks for a name that is no full path: on the search path and below the current folder.
#pragma once

#include <string>

#include "platform/kx.h"
#include "platform/path_management.h"

namespace korvex::filemanip {

struct PathHits {
    /// The name stands for one of the folders exactly, not only for the end of its path.
    bool exact = false;
    /// At least one folder was reported.
    bool found = false;
};

/// Reports all folders of the search path, and of the packages where they are in force, that `inputPath`
/// names. It must not be empty: that raises `std::logic_error`. Raises what `reportFolder` raises.
PathHits kPathWhat(const std::u16string& inputPath, Velquist::PathManagement::FilenameMatchingPolicy policy,
                   kxArray* result);

/// Reports the folder of that name below the current one; true when it is there. Raises what `reportFolder`
/// raises.
bool whatInCurrentFolder(const std::u16string& name, Velquist::PathManagement::FilenameMatchingPolicy policy,
                         kxArray* result);

/// Whether an item is a private folder of the current folder. Raises nothing: without a current folder it is
/// none.
bool isChildOfCurrentFolder(const Velquist::PathManagement::IPathItem& item,
                            Velquist::PathManagement::FilenameMatchingPolicy policy);

}  // namespace korvex::filemanip
