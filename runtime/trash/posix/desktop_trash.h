// The desktop's trash, by the rules that its file managers keep to.
#pragma once

#include <string>

namespace korvex::runtime::trash {

/// Moves what stands at a native path (bytes, absolute) into the trash that belongs to its disk, from where a
/// file manager can restore it. A link goes itself, a folder does not go. False when no trash can take it; it
/// stays where it is then.
bool moveToDesktopTrash(const std::string& path);

}  // namespace korvex::runtime::trash
