// Windows: what the files of this folder share.
#pragma once

#include <windows.h>

#include <string>

#include "runtime/configuration/whole_file.h"
#include "runtime/process/windows/handle.h"
#include "runtime/process/windows/wide_text.h"

namespace korvex::runtime::configuration::windows {

/// Everybody may read, write and rename the file while it is open.
inline constexpr DWORD sharedByAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// The file of a path, links followed; not open when nothing is there.
process::Handle openExisting(const std::wstring& path, DWORD access);

FileStamp stampOf(HANDLE file);

/// Raises for a folder or device.
void requireRegularFile(HANDLE file);

}  // namespace korvex::runtime::configuration::windows
