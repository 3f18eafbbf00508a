// From one folder to the output of `what`: an element of the result, or a printed block.
#pragma once

#include <string>

#include "platform/kx.h"

namespace korvex::filemanip {

/// The structure array before any folder was found: 0-by-1, the field "path" and one for each group.
matrix::ArrayOwner makeEmptyWhatResult();

/// Reports a folder: appends an element to `result`, or prints a block when `result` is null. False, and no
/// message, when no folder is there or nobody can tell. Raises what the lister raises when it fails on a
/// folder that is there; nothing is reported of it then.
bool reportFolder(const std::u16string& text, bool isCurrentFolder, kxArray* result, bool isUNC, bool isIRI);

}  // namespace korvex::filemanip
