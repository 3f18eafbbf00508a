// The provider of the scheme "file" on POSIX systems.
#include "runtime/storage/providers/local/local_provider.h"

#include <fcntl.h>
#include <signal.h>

#include <cerrno>
#include <exception>
#include <string>

#include "runtime/storage/location.h"
#include "runtime/storage/providers/local/posix/entry_at.h"
#include "runtime/storage/providers/local/posix/error_code.h"
#include "runtime/storage/providers/local/posix/path_lookup.h"
#include "runtime/storage/providers/local/posix/place.h"
#include "runtime/storage/providers/local/posix/recent_look.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::storage {

namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
using posix::Links;
using posix::meansNothingThere;

namespace {

constexpr const char16_t* asking = u"existence";

/// Raises `vfs::Exception` when the system cannot tell.
bool areOneItem(const AbsoluteIRI& one, const AbsoluteIRI& other, Links links) {
    struct ::stat status;
    struct ::stat otherStatus;
    return posix::lookUp(one, links, status, asking) && posix::lookUp(other, links, otherStatus, asking) &&
           posix::isSameFile(status, otherStatus);
}

}  // namespace

LocalProvider::LocalProvider() {
    // A file beyond the size that the user set as the limit is an error like others, and not the end of the
    // process. A host that has its own way with the signal keeps it.
    struct ::sigaction present {};
    const bool endsProcess = ::sigaction(SIGXFSZ, nullptr, &present) == 0 && present.sa_handler == SIG_DFL;
    if (endsProcess) ::signal(SIGXFSZ, SIG_IGN);
}

ExistenceType LocalProvider::existence(const AbsoluteIRI& location) {
    struct ::stat status;
    if (!posix::lookUp(location, Links::follow, status, asking)) return provider::AsNeither;
    return S_ISDIR(status.st_mode) ? provider::AsFolder : provider::AsFile;
}

ExistenceTypeExtended LocalProvider::extendedExistence(const AbsoluteIRI& location) {
    struct ::stat status;
    if (!posix::lookUp(location, Links::tellApart, status, asking)) return provider::ExtendedNothing;
    if (S_ISDIR(status.st_mode)) {
        location.parts().isKnownFolder = true;
        return provider::ExtendedFolder;
    }
    if (S_ISREG(status.st_mode)) {
        if ((status.st_mode & S_IWUSR) != 0) posix::rememberWritable(location);
        return provider::ExtendedFile;
    }
    if (!S_ISLNK(status.st_mode)) return provider::ExtendedDevice;
    if (!posix::lookUp(location, Links::follow, status, asking)) return provider::ExtendedBrokenLink;
    return S_ISDIR(status.st_mode) ? provider::ExtendedLinkToFolder : provider::ExtendedLinkToFile;
}

bool LocalProvider::isSameFile(const AbsoluteIRI& one, const AbsoluteIRI& other) noexcept {
    try {
        // Of two that are not there, or that are different files, the canonical forms need not be made.
        const bool isOneFile = areOneItem(one, other, Links::follow);
        return isOneFile && canonicalLocation(one) == canonicalLocation(other);
    } catch (const std::exception&) {
        return false;
    }
}

bool LocalProvider::isSameFolder(const AbsoluteIRI& one, const AbsoluteIRI& other) noexcept {
    try {
        // A folder has one name; of others the answer would be another question's.
        return extendedExistence(one) == provider::ExtendedFolder && areOneItem(one, other, Links::tellApart);
    } catch (const std::exception&) {
        return false;
    }
}

CanonicalAbsoluteIRI LocalProvider::canonicalLocation(const AbsoluteIRI& location) {
    std::string path;
    if (!posix::nativePathOf(location, path))
        throw vfs::Exception(vfs::resourceNotFound, location, u"canonical form");
    int systemError = 0;
    const std::string canonical = posix::canonicalPath(path, systemError);
    if (systemError != 0) {
        const int reported = meansNothingThere(systemError) ? ENOENT : systemError;
        posix::raiseSystemError(reported, location, u"canonical form");
    }
    return CanonicalAbsoluteIRI(
        makeLocation(std::u16string(localScheme), std::u16string(), text::fromBytes(canonical)));
}

}  // namespace korvex::runtime::storage
