// Whether `delete` removes files for good or moves them to the recycle bin. The state lives in the
// environment's settings, as the inverse of a setting.
#pragma once

#include <string>

namespace korvex::filemanip {

/// True when recycling is on. Raises what the settings raise.
bool getRecycleState();

/// Takes the new value of the setting, and gives back whether recycling was on before.
bool setRecycleState(bool deletePermanently);

/// Moves a file, given as a native path, to the system's recycle bin. True when it took the file; otherwise
/// the file is where it was.
bool moveToRecycleBin(std::u16string path);

}  // namespace korvex::filemanip
