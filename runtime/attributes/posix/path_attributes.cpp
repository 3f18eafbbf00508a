// Attributes by path on POSIX systems.
#include "runtime/attributes/posix/path_attributes.h"

#include <cerrno>

#include "platform/foundation_filesystem.h"
#include "platform/path_management.h"
#include "runtime/attributes/posix/entry_attributes.h"
#include "runtime/storage/providers/local/posix/error_code.h"
#include "runtime/storage/providers/local/posix/place.h"

namespace korvex::runtime::attributes::posix {

namespace vfs = foundation::storage::vfs;

vfs::AbsoluteIRI locationOf(std::u16string_view path) {
    return Velquist::PathManagement::GetIRIFromString(std::u16string(path));
}

void raiseAttributeError(int systemError, std::u16string_view path) {
    if (systemError == EACCES || systemError == EPERM)
        throw fl::filesystem::AccessDenied(std::u16string(path));
    storage::posix::raiseSystemError(systemError, locationOf(path), u"attributes");
}

}  // namespace korvex::runtime::attributes::posix

namespace fl::filesystem {

namespace internal = korvex::runtime::attributes::posix;
using korvex::runtime::storage::posix::Place;

namespace {

/// The same for a short and for a very long path.
Place placeOf(const std::u16string& path) {
    int systemError = 0;
    Place place(internal::locationOf(path), systemError);
    if (systemError != 0) internal::raiseAttributeError(systemError, path);
    return place;
}

}  // namespace

file_status status(const std::u16string& path) {
    const std::u16string whole = absolute(path, u"");
    const Place place = placeOf(whole);
    file_status attributes(file_status::no_perms, false);
    if (const int systemError = internal::readAttributes({place.folder(), place.name()}, attributes))
        internal::raiseAttributeError(systemError, whole);
    return attributes;
}

void permissions(const std::u16string& path, file_status::perms mask) {
    const std::u16string whole = absolute(path, u"");
    const Place place = placeOf(whole);
    internal::AttributeChanges changes(internal::Links::follow);
    const int systemError = changes.change({place.folder(), place.name()}, mask);
    if (systemError != 0) internal::raiseAttributeError(systemError, whole);
}

}  // namespace fl::filesystem
