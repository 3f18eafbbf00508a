// From the text that a user typed to a location, and from a location back to a text for the user.
#include "io/filesystem/filemanip/command_frame_path_intake.h"

#include "io/filesystem/filemanip/command_frame_status_messages.h"
#include "io/filesystem/filemanip/existence_queries_web_location.h"
#include "platform/filesystem_shared.h"
#include "platform/message_identifiers.h"
#include "platform/storage_utility.h"

namespace korvex::filemanip {

namespace core = korvex::io::filesystem::core;
namespace utility = foundation::storage::utility;
namespace vfs = foundation::storage::vfs;

bool isRemoteLocation(const vfs::AbsoluteIRI& location) { return location.getScheme() != u"file"; }

std::u16string locationText(const vfs::AbsoluteIRI& location, bool isRemote) {
    if (!isRemote) return vfs::fromAbsoluteIRI(location);
    std::u16string text = location.toString();
    utility::decodeURL(text);
    return text;
}

void reportInvalidIRI(const std::u16string& text, core::Status& status) {
    std::u16string decoded = text;
    utility::decodeURL(decoded);
    storeFailure(status, KORVEX::virtualfilesystem::invalidIRI(decoded));
}

void reportInvalidLocation(const vfs::AbsoluteIRI& location, core::Status& status) {
    storeFailure(status, KORVEX::virtualfilesystem::invalidLocation(
                             locationText(location, isRemoteLocation(location))));
}

TakenPath takeInPath(std::u16string& text, core::ResolveSymbolicLinks mode, bool& isIRI,
                     core::Status& status) {
    if (!vfs::hasIRIPrefix(text)) {
        // On purpose not asked: a path that cannot be used is empty now, and the caller judges that.
        core::setupPathForURLConstruction(text, mode);
        return TakenPath::localPath;
    }
    const bool hasDots = filesystemSharedFcns::containsDotOrDotDotExpression(text);
    if (!utility::hasValidNumberOfSlashes(text) || hasDots) {
        reportInvalidIRI(text, status);
        return TakenPath::refused;
    }
    isIRI = true;
    text = normalizeHttpLocation(text);
    return TakenPath::location;
}

}  // namespace korvex::filemanip
