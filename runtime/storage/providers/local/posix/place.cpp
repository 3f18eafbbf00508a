// One entry to act on, named relative to a folder.
#include "runtime/storage/providers/local/posix/place.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>

#include <cerrno>

#include "runtime/storage/location.h"
#include "runtime/storage/providers/local/posix/error_code.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::storage::posix {

namespace vfs = foundation::storage::vfs;

namespace {

/// The last component of the path of an entry that a listing gave: a name that this disk has.
std::string nativeNameOf(const vfs::AbsoluteIRI& location) {
    const std::u16string_view path = location.parts().path;
    std::string bytes;
    if (!text::toBytes(path.substr(path.rfind(u'/') + 1), bytes) || bytes.find('\0') != std::string::npos)
        throw vfs::Exception(vfs::invalidLocation, location);
    return bytes;
}

/// 0 or the errno.
int statusOfFound(const vfs::AbsoluteIRI& location, Links links, struct ::stat& status) {
    int systemError = 0;
    const Place place(location, systemError);
    if (systemError != 0) return systemError;
    const int flags = links == Links::follow ? 0 : AT_SYMLINK_NOFOLLOW;
    return ::fstatat(place.folder(), place.name(), &status, flags) == 0 ? 0 : errno;
}

/// Room for the name of a temporary file in the same folder.
constexpr std::size_t longestDirectPath = PATH_MAX - 64;

}  // namespace

bool nativePathOf(const vfs::AbsoluteIRI& location, std::string& bytes) {
    const vfs::AbsoluteIRI::Parts& parts = location.parts();
    return parts.host.empty() && text::toBytes(parts.path, bytes) && bytes.find('\0') == std::string::npos;
}

std::string nativePathOf(const vfs::AbsoluteIRI& location) {
    std::string bytes;
    if (!nativePathOf(location, bytes)) throw vfs::Exception(vfs::invalidLocation, location);
    return bytes;
}

Place::Place(const vfs::AbsoluteIRI& location, int& systemError)
    : found_(FoundFolder::of(location)), folder_(AT_FDCWD) {
    systemError = 0;
    if (found_) {
        name_ = nativeNameOf(location);
        held_ = found_->handle(systemError);
        folder_ = held_ ? held_->get() : -1;
        return;
    }
    name_ = nativePathOf(location);
    if (name_.size() < longestDirectPath) return;
    const std::size_t slash = name_.rfind('/');
    opened_ = openFolderByPath(name_.substr(0, slash), systemError);
    folder_ = opened_.get();
    name_.erase(0, slash + 1);
}

Place::Place(const vfs::AbsoluteIRI& location) : folder_(AT_FDCWD) {
    int systemError = 0;
    *this = Place(location, systemError);
    if (systemError != 0) raiseSystemError(systemError, location, u"opening the folder");
}

Place::Place(const Place& other, const std::string& name)
    : found_(other.found_), held_(other.held_), folder_(other.folder_) {
    const std::size_t slash = other.name_.rfind('/');
    name_ = (slash == std::string::npos ? std::string() : other.name_.substr(0, slash + 1)) + name;
}

std::string Place::lastComponent() const { return name_.substr(name_.rfind('/') + 1); }

bool lookUp(const vfs::AbsoluteIRI& location, Links links, struct ::stat& status, const char16_t* context) {
    // The buffer lives on: this is called in loops over very many locations.
    thread_local std::string path;
    if (!nativePathOf(location, path)) return false;
    const int systemError =
        location.parts().found ? statusOfFound(location, links, status) : statusOf(path, links, status);
    if (systemError == 0) return true;
    if (meansNothingThere(systemError)) return false;
    raiseSystemError(systemError, location, context);
}

vfs::AbsoluteIRI behindLink(const vfs::AbsoluteIRI& location) {
    const Place place(location);
    struct ::stat status {};
    const bool isLink =
        ::fstatat(place.folder(), place.name(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode);
    if (!isLink) return location;
    const bool leadsToFile =
        ::fstatat(place.folder(), place.name(), &status, 0) == 0 && S_ISREG(status.st_mode);
    int systemError = 0;
    const std::string path = leadsToFile ? canonicalPath(nativePathOf(location), systemError) : std::string();
    if (path.empty()) return location;
    return makeLocation(std::u16string(localScheme), std::u16string(), text::fromBytes(path));
}

}  // namespace korvex::runtime::storage::posix
