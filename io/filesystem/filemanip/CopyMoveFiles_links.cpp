// Copying a symbolic link as a link: the one step of a transfer that goes around the storage layer.
#include <filesystem>

#include "io/filesystem/filemanip/CopyMoveFiles.h"
#include "io/filesystem/filemanip/command_frame_trace.h"
#include "platform/foundation_filesystem.h"
#include "platform/message_identifiers.h"
#include "platform/path_management.h"

namespace korvex::filemanip {

namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
using Velquist::PathManagement::GetStringFromIRI;

namespace {

/// Local paths only; what stands at the target is never replaced. Raises `std::filesystem::filesystem_error`.
void copyLink(const vfs::AbsoluteIRI& source, const vfs::AbsoluteIRI& target) {
    std::filesystem::copy_symlink(fl::filesystem::system_path(GetStringFromIRI(source)),
                                  fl::filesystem::system_path(GetStringFromIRI(target)));
}

}  // namespace

void CopyMoveFiles::copySymbolicLink(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                                     const std::u16string& destinationPath) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, copyMoveSourceFile, __LINE__);
    using namespace KORVEX::io::filesystem::symlink;
    const ExistenceType kind =
        vfs::exists(destination, Velquist::KorvexStorageSystem::GetStorageSystemReference());
    if (kind == provider::AsFolder) {
        try {
            copyLink(source, AbsoluteIRI(destination, source.getName()));
        } catch (const std::filesystem::filesystem_error&) {
            setStatusException("CannotCreateSymlinkInDestFolder",
                               CannotCreateSymlinkInDestFolder(source.getName(), destinationPath));
        }
        return;
    }
    try {
        copyLink(source, destination);
    } catch (const std::filesystem::filesystem_error&) {
        // The key is longer than the message's own name, on purpose.
        setStatusException("CannotCreateSymlinkInDestFolderWithName",
                           CannotCreateSymlinkWithName(destination.getName(), GetStringFromIRI(destination)));
    }
}

}  // namespace korvex::filemanip
