// Attributes by path on Windows: the file's own, and the inverse of read-only.
//
// Other than on POSIX systems the files of a list are reached by their whole paths: a junction that somebody
// puts in a folder's place while the list is worked on is followed.
//
// The system's own header comes with the last ones: its macros take words that are names in the platform's.
#include <system_error>
#include <utility>

#include "platform/foundation_filesystem.h"
#include "platform/path_management.h"
#include "platform/storage_vfs.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/paths/path_style.h"
#include "runtime/paths/path_text.h"
#include "runtime/process/windows/handle.h"
#include "runtime/process/windows/wide_text.h"
#include "runtime/storage/transfer_progress.h"

namespace fl::filesystem {

namespace paths = korvex::runtime::paths;
namespace process = korvex::runtime::process;
namespace runtime = korvex::runtime;
namespace vfs = foundation::storage::vfs;

namespace {

struct StoredAttribute {
    file_status::perms attribute;
    DWORD bit;
};

constexpr StoredAttribute storedAttributes[] = {
    {file_status::archive_file, FILE_ATTRIBUTE_ARCHIVE},
    {file_status::hidden_file, FILE_ATTRIBUTE_HIDDEN},
    {file_status::system_file, FILE_ATTRIBUTE_SYSTEM},
};

[[noreturn]] void raiseAttributeError(DWORD error, const std::u16string& path) {
    if (error == ERROR_ACCESS_DENIED) throw AccessDenied(path);
    const bool isNothing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    throw vfs::Exception(isNothing ? vfs::resourceNotFound : vfs::unknownError,
                         Velquist::PathManagement::GetIRIFromString(path), u"attributes",
                         std::system_category().message(static_cast<int>(error)));
}

/// A path that is too long for the plain form in the long one, in which the system takes nothing for anything
/// but a name: dots go here, as they would go there.
std::u16string systemPathOf(std::u16string path) {
    constexpr auto style = paths::PathStyle::windows;
    constexpr std::size_t shortestRefused = 248;  // of a folder, which must leave room for a short name
    if (path.size() < shortestRefused || paths::isLongPath(path, style)) return path;
    path = paths::nativeForm(path, false, style);
    paths::removeSingleDots(path, style);
    paths::resolveDoubleDots(path, style);
    paths::dropTrailingDotsAndSpaces(path, style);
    return paths::isUncPath(path, style) ? u"\\\\?\\UNC" + path.substr(1) : u"\\\\?\\" + path;
}

process::Handle openEntry(const std::u16string& path, DWORD access, DWORD links) {
    constexpr DWORD sharedByAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    return process::Handle(::CreateFileW(process::toWide(systemPathOf(path)).c_str(), access, sharedByAll,
                                         nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | links,
                                         nullptr));
}

FILE_BASIC_INFO informationOn(const process::Handle& file, const std::u16string& path) {
    FILE_BASIC_INFO information{};
    if (!::GetFileInformationByHandleEx(file.get(), FileBasicInfo, &information, sizeof information))
        raiseAttributeError(::GetLastError(), path);
    return information;
}

DWORD changed(DWORD attributes, file_status::perms mask) {
    const bool isAddition = (mask & file_status::perms_add) != 0;
    const auto change = [&](DWORD bit, bool isSet) {
        attributes = isSet ? attributes | bit : attributes & ~bit;
    };
    for (const StoredAttribute& stored : storedAttributes)
        if ((mask & stored.attribute) != 0) change(stored.bit, isAddition);
    if ((mask & file_status::owner_write) != 0) change(FILE_ATTRIBUTE_READONLY, !isAddition);
    // None at all has a bit of its own: 0 would mean that they stay as they are.
    if (attributes == 0) return FILE_ATTRIBUTE_NORMAL;
    return attributes == FILE_ATTRIBUTE_NORMAL ? attributes : attributes & ~DWORD{FILE_ATTRIBUTE_NORMAL};
}

/// Whether it stands for another file or folder: a link, or a junction.
bool isLink(const process::Handle& file, const std::u16string& path) {
    FILE_ATTRIBUTE_TAG_INFO information{};
    if (!::GetFileInformationByHandleEx(file.get(), FileAttributeTagInfo, &information, sizeof information))
        raiseAttributeError(::GetLastError(), path);
    return (information.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           IsReparseTagNameSurrogate(information.ReparseTag);
}

/// `links` is 0, or FILE_FLAG_OPEN_REPARSE_POINT for what is left alone when it is a link.
void changeAttributes(const std::u16string& path, file_status::perms mask, DWORD links) {
    if ((mask & (file_status::perms_add | file_status::perms_remove)) == 0) return;
    const process::Handle file = openEntry(path, FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES, links);
    if (!file.isOpen()) raiseAttributeError(::GetLastError(), path);
    if (links != 0 && isLink(file, path)) return;
    const DWORD earlier = informationOn(file, path).FileAttributes;
    FILE_BASIC_INFO wanted{};  // times of 0 stay as they are
    wanted.FileAttributes = changed(earlier, mask);
    if (wanted.FileAttributes == earlier) return;
    if (!::SetFileInformationByHandle(file.get(), FileBasicInfo, &wanted, sizeof wanted))
        raiseAttributeError(::GetLastError(), path);
}

}  // namespace

file_status status(const std::u16string& path) {
    const std::u16string whole = absolute(path, u"");
    process::Handle file = openEntry(whole, FILE_READ_ATTRIBUTES, 0);
    // A link that leads nowhere has attributes all the same.
    if (!file.isOpen()) file = openEntry(whole, FILE_READ_ATTRIBUTES, FILE_FLAG_OPEN_REPARSE_POINT);
    if (!file.isOpen()) raiseAttributeError(::GetLastError(), whole);
    const DWORD attributes = informationOn(file, whole).FileAttributes;
    file_status::perms permissions = file_status::no_perms;
    for (const StoredAttribute& stored : storedAttributes)
        if ((attributes & stored.bit) != 0) permissions = permissions | stored.attribute;
    if ((attributes & FILE_ATTRIBUTE_READONLY) == 0) permissions = permissions | file_status::owner_write;
    return file_status(permissions, (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0);
}

void permissions(const std::u16string& path, file_status::perms mask) {
    changeAttributes(absolute(path, u""), mask, 0);
}

/// The path of `named`.
class ListedFiles::Work {
public:
    std::u16string named;
};

ListedFiles::ListedFiles(std::u16string named, const std::vector<std::u16string>*)
    : work_(std::make_unique<Work>(Work{std::move(named)})) {}

ListedFiles::~ListedFiles() = default;

void ListedFiles::permissions(const std::u16string& path, file_status::perms mask) {
    if (runtime::interpreter::isInterruptPending())
        runtime::storage::stopIfInterrupted(Velquist::PathManagement::GetIRIFromString(path));
    changeAttributes(path, mask, path == work_->named ? 0 : FILE_FLAG_OPEN_REPARSE_POINT);
}

}  // namespace fl::filesystem
