// Windows: opening files, stamps.
#include "runtime/configuration/windows/system_calls.h"

namespace korvex::runtime::configuration::windows {

using process::Handle;
using process::raiseSystemError;

namespace {

std::uint64_t joined(DWORD high, DWORD low) noexcept { return std::uint64_t{high} << 32 | low; }

BY_HANDLE_FILE_INFORMATION informationOn(HANDLE file) {
    BY_HANDLE_FILE_INFORMATION information{};
    if (!::GetFileInformationByHandle(file, &information)) raiseSystemError(::GetLastError());
    return information;
}

}  // namespace

Handle openExisting(const std::wstring& path, DWORD access) {
    Handle file(::CreateFileW(path.c_str(), access, sharedByAll, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL | FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    const DWORD error = ::GetLastError();
    const bool isNothing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    if (!file.isOpen() && !isNothing) raiseSystemError(error);
    return file;
}

FileStamp stampOf(HANDLE file) {
    const BY_HANDLE_FILE_INFORMATION information = informationOn(file);
    const FILETIME& changed = information.ftLastWriteTime;
    return {information.dwVolumeSerialNumber, joined(information.nFileIndexHigh, information.nFileIndexLow),
            joined(information.nFileSizeHigh, information.nFileSizeLow),
            static_cast<std::int64_t>(joined(changed.dwHighDateTime, changed.dwLowDateTime))};
}

void requireRegularFile(HANDLE file) {
    const bool isOnDisk = ::GetFileType(file) == FILE_TYPE_DISK;
    if (!isOnDisk || (informationOn(file).dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        throw std::runtime_error("Not a regular file");
    }
}

}  // namespace korvex::runtime::configuration::windows
