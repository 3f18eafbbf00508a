// How many outputs and arguments each exported entry takes.
#pragma once

#include "io/filesystem/filemanip/command_frame.h"

namespace korvex::filemanip::limits {

//                                          outputs, fewest and most arguments
inline constexpr ArgumentLimits copyFile{3, 1, 5};
inline constexpr ArgumentLimits moveFile{3, 1, 5};
inline constexpr ArgumentLimits makeDir{3, 1, 2};
inline constexpr ArgumentLimits removeDir{3, 1, 4};
inline constexpr ArgumentLimits fileAttrib{3, 0, 4};
inline constexpr ArgumentLimits fullDelete{0, 1, ArgumentLimits::unlimited};
inline constexpr ArgumentLimits fullRecycle{1, 0, 1};
inline constexpr ArgumentLimits fullDir{1, 0, 1};
inline constexpr ArgumentLimits fullWhat{1, 0, ArgumentLimits::unlimited};
inline constexpr ArgumentLimits isFile{1, 1, 1};
inline constexpr ArgumentLimits isFolder{1, 1, 1};

}  // namespace korvex::filemanip::limits
