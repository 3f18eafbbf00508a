// The desktop's trash, through GIO.
#include "runtime/trash/posix/desktop_trash.h"

#include <fcntl.h>
#include <gio/gio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string_view>

namespace korvex::runtime::trash {

namespace {

struct Unreference {
    void operator()(gpointer object) const noexcept { g_object_unref(object); }
};

struct Free {
    void operator()(char* text) const noexcept { ::free(text); }
};

bool isFolder(const std::string& path) {
    struct ::stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::string folderOf(const std::string& path) { return path.substr(0, path.rfind('/') + 1); }

/// Where the folder keeps it, GIO would find out only when it has written the record of where the file was.
bool mayLeaveItsFolder(const std::string& path) {
    return ::faccessat(AT_FDCWD, folderOf(path).c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

bool hasDoubleDots(std::string_view path) {
    constexpr std::string_view dots = "..";
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        if (path.substr(begin, end - begin) == dots) return true;
        begin = end + 1;
    }
    return false;
}

/// GIO takes ".." together with the name in front of it, as text. Where that name is a link, another file
/// would go than the one that the path leads to, so the system has to resolve it. Empty when it cannot.
std::string withoutDoubleDots(const std::string& path) {
    if (!hasDoubleDots(path)) return path;
    const std::string above = folderOf(path);
    const std::unique_ptr<char, Free> folder(::realpath(above.c_str(), nullptr));
    if (!folder) return {};
    return (std::filesystem::path(folder.get()) / path.substr(above.size())).native();
}

}  // namespace

bool moveToDesktopTrash(const std::string& path) {
    if (isFolder(path) || !mayLeaveItsFolder(path)) return false;
    const std::string taken = withoutDoubleDots(path);
    if (taken.empty()) return false;
    // Of the local file system itself: the desktop's own layer above it would start a message bus.
    const std::unique_ptr<GFile, Unreference> file(g_vfs_get_file_for_path(g_vfs_get_local(), taken.c_str()));
    return g_file_trash(file.get(), nullptr, nullptr) != FALSE;
}

}  // namespace korvex::runtime::trash
