// Windows: the right to change a file, replacing it and setting it aside. Files inherit the access rights of
// the user's own folder.
#include <algorithm>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <vector>

#include "runtime/configuration/windows/system_calls.h"
#include "runtime/interpreter/interrupts.h"

namespace korvex::runtime::configuration {

using process::Handle;
using process::raiseSystemError;

namespace {

std::wstring folderOf(const std::wstring& path) { return path.substr(0, path.find_last_of(L"\\/")); }

void makeFolderWithThoseAbove(const std::wstring& path) {
    if (::CreateDirectoryW(path.c_str(), nullptr)) return;
    const DWORD error = ::GetLastError();
    if (error == ERROR_ALREADY_EXISTS || error == ERROR_ACCESS_DENIED) return;  // turns out with the lock
    const std::wstring above = folderOf(path);
    if (error != ERROR_PATH_NOT_FOUND || above == path) raiseSystemError(error);
    makeFolderWithThoseAbove(above);
    if (!::CreateDirectoryW(path.c_str(), nullptr) && ::GetLastError() != ERROR_ALREADY_EXISTS) {
        raiseSystemError(::GetLastError());
    }
}

/// The path of the file that a path leads to; the path itself when there is none yet.
std::wstring behindLinks(const std::wstring& path) {
    const Handle file = windows::openExisting(path, FILE_READ_ATTRIBUTES);
    if (!file.isOpen()) return path;
    std::wstring real(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = ::GetFinalPathNameByHandleW(
            file.get(), real.data(), static_cast<DWORD>(real.size()), FILE_NAME_NORMALIZED);
        if (length == 0) raiseSystemError(::GetLastError());
        const bool isWhole = length < real.size();
        real.resize(length);
        if (isWhole) return real;
    }
}

/// In steps, so that an interrupt is noticed though whoever has the lock hangs.
void waitForOtherProcess() {
    if (interpreter::isInterruptPending()) throw std::runtime_error(interruptedWaiting);
    constexpr DWORD milliseconds = 1;
    ::Sleep(milliseconds);
}

Handle lockedFileOf(const std::wstring& path) {
    // Without the right to delete, nobody can take the lock file away while it is open.
    Handle lock(::CreateFileW((path + L".lock").c_str(), GENERIC_READ | GENERIC_WRITE,
                              FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                              nullptr));
    if (!lock.isOpen()) raiseSystemError(::GetLastError());
    constexpr DWORD allBytes = std::numeric_limits<DWORD>::max();
    constexpr DWORD atOnceAndAlone = LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY;
    OVERLAPPED fromTheStart{};
    while (!::LockFileEx(lock.get(), atOnceAndAlone, 0, allBytes, allBytes, &fromTheStart)) {
        if (::GetLastError() != ERROR_LOCK_VIOLATION) raiseSystemError(::GetLastError());
        waitForOtherProcess();
    }
    return lock;
}

struct Search {
    HANDLE value;
    ~Search() { ::FindClose(value); }
};

bool isNumbered(std::wstring_view ending) noexcept {
    return !ending.empty() && ending.find_first_not_of(L"0123456789-") == std::wstring_view::npos;
}

/// Removes what killed processes have left of a file.
void removeUnfinishedFiles(const std::wstring& prefix) {
    const std::size_t nameLength = prefix.size() - folderOf(prefix).size() - 1;
    WIN32_FIND_DATAW entry{};
    const HANDLE first = ::FindFirstFileW((prefix + L'*').c_str(), &entry);
    if (first == INVALID_HANDLE_VALUE) return;
    const Search search{first};
    do {
        const std::wstring_view name = static_cast<const wchar_t*>(entry.cFileName);
        if (name.size() > nameLength && isNumbered(name.substr(nameLength))) {
            ::DeleteFileW((prefix + std::wstring(name.substr(nameLength))).c_str());
        }
    } while (::FindNextFileW(search.value, &entry));
}

/// The present time, but later than that of the file before: two changes within a tick of the system's clock
/// have different stamps then.
FILETIME timeBehind(const std::optional<FileStamp>& before) noexcept {
    FILETIME now{};
    ::GetSystemTimePreciseAsFileTime(&now);
    if (!before) return now;
    const ULARGE_INTEGER present{{now.dwLowDateTime, now.dwHighDateTime}};
    ULARGE_INTEGER next{};
    next.QuadPart = static_cast<ULONGLONG>(before->changed) + 1;
    return present.QuadPart >= next.QuadPart ? now : FILETIME{next.LowPart, next.HighPart};
}

/// `FileRenameInfoEx`, which the headers name only when built for the newest systems.
constexpr auto renameWithFlags = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);

/// Gives an open file the name of another one, which it replaces also while that is being read.
void renameOnto(HANDLE file, const std::wstring& newPath) {
    const std::size_t bytesOfName = newPath.size() * sizeof(wchar_t);
    std::vector<std::byte> memory(sizeof(FILE_RENAME_INFO) + bytesOfName);
    auto* const rename = reinterpret_cast<FILE_RENAME_INFO*>(memory.data());
    rename->Flags = FILE_RENAME_FLAG_REPLACE_IF_EXISTS | FILE_RENAME_FLAG_POSIX_SEMANTICS;
    rename->FileNameLength = static_cast<DWORD>(bytesOfName);
    newPath.copy(&rename->FileName[0], newPath.size());
    if (!::SetFileInformationByHandle(file, renameWithFlags, rename, static_cast<DWORD>(memory.size()))) {
        raiseSystemError(::GetLastError());
    }
}

/// The new content of a file while it is being written; gone with the object unless it was renamed.
class UnfinishedFile {
public:
    explicit UnfinishedFile(const std::wstring& prefix) {
        for (unsigned number = 1; !file_.isOpen(); ++number) {
            path_ = prefix + std::to_wstring(::GetCurrentProcessId()) + L'-' + std::to_wstring(number);
            file_ = Handle(::CreateFileW(path_.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE,
                                         windows::sharedByAll, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL,
                                         nullptr));
            if (!file_.isOpen() && ::GetLastError() != ERROR_FILE_EXISTS) raiseSystemError(::GetLastError());
        }
    }
    ~UnfinishedFile() {
        if (!path_.empty()) ::DeleteFileW(path_.c_str());
    }
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;

    void write(std::string_view content) {
        while (!content.empty()) {
            constexpr std::size_t atOnce = 1 << 20;
            DWORD count = 0;
            const auto length = static_cast<DWORD>(std::min(content.size(), atOnce));
            if (!::WriteFile(file_.get(), content.data(), length, &count, nullptr)) {
                raiseSystemError(::GetLastError());
            }
            content.remove_prefix(count);
        }
    }
    FileStamp finish(const FILETIME& changed, const std::wstring& newPath) {
        if (!::SetFileTime(file_.get(), nullptr, nullptr, &changed) || !::FlushFileBuffers(file_.get())) {
            raiseSystemError(::GetLastError());
        }
        renameOnto(file_.get(), newPath);
        path_.clear();
        // The flush of the file brings the journal with its new name to the disk.
        if (!::FlushFileBuffers(file_.get())) raiseSystemError(::GetLastError());
        return windows::stampOf(file_.get());
    }

private:
    std::wstring path_;
    Handle file_;
};

}  // namespace

struct LockedFile::State {
    explicit State(std::wstring file) : path(std::move(file)), lock(lockedFileOf(path)) {}

    std::wstring path;
    Handle lock;
};

LockedFile::LockedFile(const std::u16string& path) {
    const std::wstring wide = process::toWide(path);
    makeFolderWithThoseAbove(folderOf(wide));
    state_ = std::make_unique<State>(behindLinks(wide));
}

LockedFile::~LockedFile() = default;

FileStamp LockedFile::replaceWith(std::string_view content) {
    std::optional<FileStamp> before;
    {
        const Handle file = windows::openExisting(state_->path, GENERIC_READ);
        if (file.isOpen()) {
            windows::requireRegularFile(file.get());
            before = windows::stampOf(file.get());
        }
    }
    const DWORD attributes = ::GetFileAttributesW(state_->path.c_str());
    if (before && attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        raiseSystemError(ERROR_ACCESS_DENIED);
    }
    const std::wstring prefix = state_->path + L".writing-";
    removeUnfinishedFiles(prefix);
    UnfinishedFile file(prefix);
    file.write(content);
    return file.finish(timeBehind(before), state_->path);
}

std::u16string LockedFile::setAside() {
    for (unsigned number = 1;; ++number) {
        const std::wstring newPath = state_->path + L".damaged-" + std::to_wstring(number);
        if (::MoveFileExW(state_->path.c_str(), newPath.c_str(), MOVEFILE_WRITE_THROUGH)) {
            return process::fromWide(newPath);
        }
        if (::GetLastError() != ERROR_ALREADY_EXISTS) raiseSystemError(::GetLastError());
    }
}

}  // namespace korvex::runtime::configuration
