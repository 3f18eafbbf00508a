// The local provider on POSIX systems: permissions, listing, making and removing.
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/location.h"
#include "runtime/storage/name_pattern.h"
#include "runtime/storage/providers/local/local_provider.h"
#include "runtime/storage/providers/local/posix/durability.h"
#include "runtime/storage/providers/local/posix/error_code.h"
#include "runtime/storage/providers/local/posix/folder_chain.h"
#include "runtime/storage/providers/local/posix/folder_entries.h"
#include "runtime/storage/providers/local/posix/found_folder.h"
#include "runtime/storage/providers/local/posix/path_lookup.h"
#include "runtime/storage/providers/local/posix/permission_bits.h"
#include "runtime/storage/providers/local/posix/place.h"
#include "runtime/storage/providers/local/posix/recent_look.h"
#include "runtime/storage/providers/local/posix/tree_operations.h"
#include "runtime/storage/transfer_progress.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::storage {

namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
using posix::FileDescriptor;
using posix::Place;
using posix::raiseSystemError;

namespace {

constexpr const char16_t* changingPermissions = u"changing permissions";
/// How often a folder is emptied that somebody keeps filling.
constexpr int mostRounds = 64;
/// So many looks take longer than to start a thread for half of them.
constexpr std::size_t worthAThread = 1024;

/// Links followed. Raises `vfs::Exception` when the system cannot tell.
bool isThere(const AbsoluteIRI& location, struct ::stat& status) {
    return posix::lookUp(location, posix::Links::follow, status, u"asking whether it is writable");
}

/// The write bits, and whether the process may write. `status` is that of what stands there, links followed.
bool isWritableAt(const AbsoluteIRI& location, const struct ::stat& status) {
    if ((status.st_mode & 0222) == 0) return false;
    const Place place(location);
    return ::faccessat(place.folder(), place.name(), W_OK, AT_EACCESS) == 0;
}

/// A folder, held open, in which something new may be made: of many locations in one folder, those where
/// nothing stands need no more than one look each.
class WritableFolder {
public:
    /// Whether nothing stands at the location, and it may be made. False, too, where it takes a closer look.
    bool hasRoomFor(const AbsoluteIRI& location) {
        const std::u16string_view path = location.parts().path;
        const std::size_t slash = path.rfind(u'/');
        if (location.parts().found || slash == 0 || slash == std::u16string_view::npos) return false;
        if (path.substr(0, slash) != path_) open(path.substr(0, slash), location);
        std::string name;
        struct ::stat status {};
        return folder_ && text::toBytes(path.substr(slash + 1), name) && name.size() <= NAME_MAX &&
               name.find('\0') == std::string::npos &&
               (isEmpty_ || (::fstatat(folder_.get(), name.c_str(), &status, 0) != 0 && errno == ENOENT));
    }

private:
    void open(std::u16string_view path, const AbsoluteIRI& location) {
        path_ = path;
        folder_ = {};
        isEmpty_ = false;
        const AbsoluteIRI above = location.getParent();
        std::string bytes;
        struct ::stat status {};
        if (!posix::nativePathOf(above, bytes)) return;
        int systemError = 0;
        FileDescriptor folder = posix::openFolderByPath(bytes, systemError);
        if (!folder || ::fstat(folder.get(), &status) != 0 || !isWritableAt(above, status)) return;
        folder_ = std::move(folder);
        isEmpty_ = hasNoEntry(folder_.get());
    }

    /// False, too, where it cannot be told.
    static bool hasNoEntry(int folder) {
        const FileDescriptor listed(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!listed) return false;
        posix::FolderEntry entry{};
        int systemError = 0;
        return !posix::FolderEntries(listed.get()).next(entry, systemError) && systemError == 0;
    }

    std::u16string path_;
    FileDescriptor folder_;
    bool isEmpty_ = false;
};

mode_t bitsOf(mode_t mode) noexcept { return mode & 07777; }

mode_t withWriteBits(mode_t mode, bool isWritable) noexcept {
    return isWritable ? bitsOf(mode) | 0200 : bitsOf(mode) & ~mode_t{0222};
}

bool leadsToFolder(int folder, const char* name) noexcept {
    struct ::stat status {};
    return ::fstatat(folder, name, &status, 0) == 0 && S_ISDIR(status.st_mode);
}

FileDescriptor openListedFolder(const AbsoluteIRI& location) {
    const Place place(location);
    const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (location.parts().isKnownFolder ? O_NOFOLLOW : 0);
    FileDescriptor folder(::openat(place.folder(), place.name(), flags));
    if (!folder) raiseSystemError(errno, location, u"listing");
    return folder;
}

/// Sorted by name, with the place where they were found. Entries are large: they move once only.
std::vector<ListedEntry> inOrder(std::vector<ListedEntry>& entries,
                                 const std::shared_ptr<const FoundPlace>& found) {
    std::vector<ListedEntry*> order;
    order.reserve(entries.size());
    for (ListedEntry& entry : entries)
        order.push_back(&entry);
    std::sort(order.begin(), order.end(),
              [](const ListedEntry* a, const ListedEntry* b) { return a->name < b->name; });
    std::vector<ListedEntry> sorted;
    sorted.reserve(entries.size());
    for (ListedEntry* const entry : order) {
        sorted.push_back(std::move(*entry));
        sorted.back().found = found;
    }
    return sorted;
}

/// Opens the folder itself, no link in its place.
FileDescriptor openFolderAt(const Place& place, const AbsoluteIRI& location) {
    FileDescriptor folder(
        ::openat(place.folder(), place.name(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder) raiseSystemError(errno, location, u"opening the folder");
    return folder;
}

/// What is mounted inside a tree is no part of it, and stays when the tree goes.
void refuseInMount(const Place& place, const AbsoluteIRI& location) {
    if (place.isMountedInTree()) raiseSystemError(EBUSY, location, u"removing");
}

}  // namespace

bool LocalProvider::isWritable(const AbsoluteIRI& location) {
    struct ::stat status {};
    if (isThere(location, status)) return isWritableAt(location, status);
    if (!location.hasParent()) return false;
    // What does not exist is as writable as the folder that would hold it.
    const AbsoluteIRI parent = location.getParent();
    return isThere(parent, status) && S_ISDIR(status.st_mode) && isWritableAt(parent, status);
}

std::size_t LocalProvider::firstUnwritable(std::span<const AbsoluteIRI> locations,
                                           const std::function<void()>& onFailure) {
    std::vector<char> hasRoom(locations.size());
    const auto lookAt = [&](std::size_t begin, std::size_t end) noexcept {
        try {
            WritableFolder folder;
            for (std::size_t i = begin; i < end; ++i)
                hasRoom[i] = folder.hasRoomFor(locations[i]);
        } catch (const std::exception&) {
            // The closer look below says what it is.
        }
    };
    const bool isSplit = locations.size() >= worthAThread && std::thread::hardware_concurrency() > 1;
    const std::size_t middle = isSplit ? locations.size() / 2 : 0;
    {
        std::jthread firstHalf;
        try {
            if (isSplit) firstHalf = std::jthread([&] { lookAt(0, middle); });
        } catch (const std::system_error&) {
            lookAt(0, middle);
        }
        lookAt(middle, locations.size());
    }
    for (std::size_t i = 0; i < locations.size(); ++i) {
        if (hasRoom[i] != 0) continue;
        if (Provider::firstUnwritable(locations.subspan(i, 1), onFailure) == 0) return i;
    }
    return locations.size();
}

void LocalProvider::setWritable(const AbsoluteIRI& location, bool isWritable) {
    // Protection is taken off for what is to come, and that will not come.
    if (isWritable) stopIfInterrupted(location);
    if (isWritable && posix::isJustSeenWritable(location)) return;
    if (!isWritable) posix::forgetWritable();
    const Place place(location);
    struct ::stat status {};
    const auto isRight = [&] {
        return S_ISLNK(status.st_mode) || withWriteBits(status.st_mode, isWritable) == bitsOf(status.st_mode);
    };
    // A link that a listing gave stands for itself: what it leads to may lie outside of what is worked on.
    const int links = place.isFound() ? AT_SYMLINK_NOFOLLOW : 0;
    if (::fstatat(place.folder(), place.name(), &status, links) != 0)
        raiseSystemError(errno, location, changingPermissions);
    if (isRight()) return;
    // The bits are read from the very file that gets them back: by its name it could be another one by then.
    const int flags = O_PATH | O_CLOEXEC | (place.isFound() ? O_NOFOLLOW : 0);
    const FileDescriptor file(::openat(place.folder(), place.name(), flags));
    if (!file || ::fstat(file.get(), &status) != 0) raiseSystemError(errno, location, changingPermissions);
    if (isRight()) return;
    const mode_t bits = withWriteBits(status.st_mode, isWritable);
    if (const int systemError = posix::changeBits(file.get(), bits))
        raiseSystemError(systemError, location, changingPermissions);
}

std::vector<ListedEntry> LocalProvider::list(const AbsoluteIRI& location, std::u16string_view pattern) {
    stopIfInterrupted(location);
    const NamePattern wanted(pattern);
    FileDescriptor folder = openListedFolder(location);
    posix::FolderEntries entries(folder.get());
    posix::FolderEntry entry{};
    int systemError = 0;
    std::vector<ListedEntry> listed;
    while (entries.next(entry, systemError)) {
        if (interpreter::isInterruptPending()) stopIfInterrupted(location);
        std::u16string name = text::fromBytes(entry.name);
        if (!wanted.matches(name)) continue;
        const bool isFolder =
            entry.kind == posix::EntryKind::folder ||
            (entry.kind == posix::EntryKind::link && leadsToFolder(folder.get(), entry.name));
        listed.push_back({std::move(name), isFolder, entry.kind == posix::EntryKind::file, nullptr});
    }
    if (systemError != 0) raiseSystemError(systemError, location, u"listing");
    return inOrder(listed, posix::FoundFolder::keep(std::move(folder), location));
}

std::shared_ptr<const FoundPlace> LocalProvider::hold(const AbsoluteIRI& folder) {
    return posix::FoundFolder::keep(openListedFolder(folder), folder);
}

void LocalProvider::removeFile(const AbsoluteIRI& file) {
    stopIfInterrupted(file);
    const Place place(file);
    refuseInMount(place, file);
    if (::unlinkat(place.folder(), place.name(), 0) == 0) return;
    // Some systems say EPERM for a folder.
    struct ::stat status {};
    const int systemError = errno;
    const bool isFolder =
        ::fstatat(place.folder(), place.name(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
    raiseSystemError(isFolder ? EISDIR : systemError, file, u"removing");
}

void LocalProvider::removeFolder(const AbsoluteIRI& folder, FolderRemovalPolicy policy) {
    // What was made in vain is taken back after an interrupt too, and that is asked for with this policy.
    if (policy != vfs::RemoveEmptyFolder) stopIfInterrupted(folder);
    const Place place(folder);
    refuseInMount(place, folder);
    // The system would refuse such a name in the end, but by then the folder it leads to would be empty.
    const std::string name = place.lastComponent();
    if (name == "." || name == "..") throw vfs::Exception(vfs::invalidLocation, folder, u"removing");
    struct ::stat status {};
    if (::fstatat(place.folder(), place.name(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        raiseSystemError(errno, folder, u"removing");
    }
    if (S_ISLNK(status.st_mode)) stopIfInterrupted(folder);
    // A link to a folder goes itself; what it leads to stays.
    const int flags = S_ISLNK(status.st_mode) ? 0 : AT_REMOVEDIR;
    for (int round = 0;; ++round) {
        if (::unlinkat(place.folder(), place.name(), flags) == 0) {
            // Of one that was emptied, what it held has been told.
            if (round == 0 && policy == vfs::RemoveWithContents) tellOfOneItem([&] { return folder; });
            return;
        }
        const bool isNotEmpty = errno == ENOTEMPTY || errno == EEXIST;
        if (!isNotEmpty) raiseSystemError(errno, folder, u"removing");
        if (policy == vfs::RemoveEmptyFolder || round == mostRounds)
            raiseSystemError(ENOTEMPTY, folder, u"removing");
        posix::removeTreeContents({openFolderAt(place, folder), folder});
    }
}

void LocalProvider::createFolder(const AbsoluteIRI& folder) {
    const Place place(folder);
    if (::mkdirat(place.folder(), place.name(), 0777) != 0) raiseSystemError(errno, folder, u"creating");
}

void LocalProvider::makeDurable(const AbsoluteIRI& location) {
    const Place place(posix::behindLink(location));
    const FileDescriptor opened(
        ::openat(place.folder(), place.name(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct ::stat status {};
    int systemError = 0;
    if (!opened) {
        systemError = errno == EACCES ? posix::syncAll() : errno;
    } else if (::fstat(opened.get(), &status) != 0) {
        systemError = errno;
    } else if (S_ISDIR(status.st_mode)) {
        systemError = posix::syncFileSystem(opened.get());
    } else {
        systemError = posix::syncFile(opened.get());
        if (systemError == 0) systemError = posix::syncFolderOf(place.folder(), place.name());
    }
    if (systemError != 0) raiseSystemError(systemError, location, u"writing");
}

void LocalProvider::createFolderRecursive(const AbsoluteIRI& folder) { posix::createFolderChain(folder); }

}  // namespace korvex::runtime::storage
