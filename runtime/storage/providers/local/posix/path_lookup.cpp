// Questions about one path, for paths of any length.
#include "runtime/storage/providers/local/posix/path_lookup.h"

#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "runtime/storage/providers/local/posix/entry_at.h"

namespace korvex::runtime::storage::posix {

namespace {

constexpr std::size_t pieceLimit = PATH_MAX - 1;

/// Opens the folders in front of the last piece of a path, and cuts them off; 0 or the errno. What is left is
/// short enough for one call relative to `folder`.
int enterInPieces(std::string_view& path, FileDescriptor& folder) {
    if (const int systemError = enterFolder(folder, "/")) return systemError;
    path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
    while (path.size() > pieceLimit) {
        const std::size_t end = path.rfind('/', pieceLimit - 1);
        if (end == std::string_view::npos) return ENAMETOOLONG;
        if (const int systemError = enterFolder(folder, std::string(path.substr(0, end)))) return systemError;
        path.remove_prefix(std::min(path.find_first_not_of('/', end), path.size()));
    }
    if (path.empty()) path = ".";
    return 0;
}

int statusInPieces(std::string_view path, Links links, struct ::stat& status) {
    FileDescriptor folder;
    if (const int systemError = enterInPieces(path, folder)) return systemError;
    const int flags = links == Links::follow ? 0 : AT_SYMLINK_NOFOLLOW;
    return ::fstatat(folder.get(), std::string(path).c_str(), &status, flags) == 0 ? 0 : errno;
}

/// Splits a path into its components, in reverse, behind those that are still to come.
void pushComponents(std::string_view path, std::vector<std::string>& pending) {
    std::vector<std::string> components = componentsOf(path);
    pending.insert(pending.end(), std::make_move_iterator(components.rbegin()),
                   std::make_move_iterator(components.rend()));
}

/// Resolves a path component by component, each looked up relative to the open folder before it.
class CanonicalWalk {
public:
    std::string resolve(std::string_view path, int& systemError) {
        pushComponents(path, pending_);
        systemError = start();
        while (systemError == 0 && !pending_.empty())
            systemError = step();
        if (systemError != 0) return {};
        return resolved_.empty() ? "/" : resolved_;
    }

private:
    int start() {
        resolved_.clear();
        return enterFolder(folder_, "/");
    }

    int step() {
        const std::string name = std::move(pending_.back());
        pending_.pop_back();
        if (name == ".") return 0;
        if (name == "..") {
            resolved_.resize(resolved_.empty() ? 0 : resolved_.rfind('/'));
            return enterFolder(folder_, name);
        }
        struct ::stat status {};
        if (::fstatat(folder_.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return errno;
        if (S_ISLNK(status.st_mode)) return follow(name);
        resolved_ += '/' + name;
        if (S_ISDIR(status.st_mode)) return enterFolder(folder_, name);
        return pending_.empty() ? 0 : ENOTDIR;
    }

    int follow(const std::string& name) {
        if (++linksFollowed_ > mostLinks) return ELOOP;
        const std::string target = linkTargetOf({folder_.get(), name.c_str()});
        if (target.empty()) return ENOENT;
        pushComponents(target, pending_);
        return target.front() == '/' ? start() : 0;
    }

    FileDescriptor folder_;
    std::string resolved_;
    std::vector<std::string> pending_;
    int linksFollowed_ = 0;
};

}  // namespace

std::vector<std::string> componentsOf(std::string_view path) {
    std::vector<std::string> components;
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        if (end > begin) components.emplace_back(path.substr(begin, end - begin));
        begin = end + 1;
    }
    return components;
}

int enterFolder(FileDescriptor& folder, const std::string& path) noexcept {
    const int base = folder ? folder.get() : AT_FDCWD;
    const int opened = ::openat(base, path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (opened < 0) return errno;
    folder = FileDescriptor(opened);
    return 0;
}

int statusOf(const std::string& path, Links links, struct ::stat& status) noexcept {
    const int result =
        links == Links::follow ? ::stat(path.c_str(), &status) : ::lstat(path.c_str(), &status);
    if (result == 0) return 0;
    if (errno != ENAMETOOLONG || path.size() < pieceLimit) return errno;
    try {
        return statusInPieces(path, links, status);
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    }
}

bool meansNothingThere(int systemError) noexcept {
    constexpr int errors[] = {ENOENT, ENOTDIR, ENAMETOOLONG, ELOOP, EINVAL, EILSEQ, ENXIO, ENODEV};
    return std::find(std::begin(errors), std::end(errors), systemError) != std::end(errors);
}

FileDescriptor openFolderByPath(const std::string& path, int& systemError) {
    std::string_view rest = path;
    FileDescriptor folder;
    systemError = enterInPieces(rest, folder);
    if (systemError == 0) systemError = enterFolder(folder, std::string(rest));
    return systemError == 0 ? std::move(folder) : FileDescriptor();
}

std::string canonicalPath(const std::string& path, int& systemError) {
    const std::unique_ptr<char, decltype(&::free)> resolved(::realpath(path.c_str(), nullptr), &::free);
    systemError = resolved ? 0 : errno;
    if (resolved) return resolved.get();
    return systemError == ENAMETOOLONG ? CanonicalWalk().resolve(path, systemError) : std::string();
}

}  // namespace korvex::runtime::storage::posix
