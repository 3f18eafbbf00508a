// The commands hand what they are given to the environment and make its refusals readable.
#include "host/kwsh/path_commands.h"

#include "host/kwsh/failure.h"
#include "platform/foundation_filesystem.h"
#include "platform/path_management.h"
#include "runtime/dispatcher/function_cache.h"
#include "runtime/dispatcher/search_path.h"

namespace korvex::host {

namespace environment = runtime::dispatcher;
namespace vfs = foundation::storage::vfs;
using foundation::core::except::Notification;
using Velquist::PathManagement::GetStringFromIRI;

namespace {

void warnOf(const Notification& notification) {
    for (const resource_core::BaseMsgID& message : notification.messages())
        kxWarningMsgId(message);
}

bool isPath(const std::u16string& text) {
    return vfs::hasIRIPrefix(text) || fl::filesystem::detail::extract_filename(text) != text;
}

/// Where a source file lies that may be named by its name alone.
std::u16string sourceFile(const std::u16string& named) {
    if (isPath(named)) return named;
    const std::vector<vfs::AbsoluteIRI> found = environment::findSourceFile(named);
    return found.empty() ? named : GetStringFromIRI(found.front());
}

std::u16string reasonAgainstLoading(vfs::ErrorCode code, bool isNameAlone) {
    switch (code) {
        case vfs::resourceNotFound:
            return isNameAlone ? catalogText(messages::reasonNotFoundByName())
                               : catalogText(messages::reasonNotThere());
        case vfs::invalidLocation: return catalogText(messages::reasonNoSourceFile());
        case vfs::permissionDenied: return catalogText(messages::reasonNotLookedAt());
        case vfs::unsupportedOperation: return catalogText(messages::reasonNoLocalFile());
        default: return catalogText(messages::reasonNoAnswer());
    }
}

std::vector<std::u16string> foldersNamedBy(Arguments arguments) {
    std::vector<std::u16string> folders = textArguments(arguments);
    for (const std::u16string& folder : folders)
        requireNamed(folder, messages::folderNotNamed());
    return folders;
}

}  // namespace

Outputs showPath(Workspace&, int outputs, Arguments) {
    std::vector<std::u16string> folders;
    for (const vfs::CanonicalAbsoluteIRI& folder : environment::searchPath())
        folders.push_back(GetStringFromIRI(folder));
    return linesOrPrint(folders, outputs);
}

Outputs addToPath(Workspace&, int, Arguments arguments) {
    const std::vector<std::u16string> folders = foldersNamedBy(arguments);
    try {
        warnOf(environment::addToSearchPath(folders));
    } catch (const vfs::Exception& error) {
        throw HostError("cannotAddToPath", messages::cannotAddToPath(GetStringFromIRI(error.getLocation()),
                                                                     reasonWithFolder(error.getErrorCode())));
    }
    return {};
}

Outputs removeFromPath(Workspace&, int, Arguments arguments) {
    warnOf(environment::removeFromSearchPath(foldersNamedBy(arguments)));
    return {};
}

Outputs showFunctions(Workspace&, int outputs, Arguments) {
    std::vector<std::u16string> files;
    for (const environment::CachedFunction& function : environment::cachedFunctions())
        files.push_back(function.path);
    return linesOrPrint(files, outputs);
}

Outputs loadFunction(Workspace&, int, Arguments arguments) {
    if (arguments.empty()) matrix::detail::error_minrhs();
    const std::u16string named = textArgument(arguments[0]);
    requireNamed(named, messages::sourceFileNotNamed());
    try {
        environment::cacheFunction(sourceFile(named));
    } catch (const vfs::Exception& error) {
        throw HostError("cannotLoad", messages::cannotLoad(
                                          named, reasonAgainstLoading(error.getErrorCode(), !isPath(named))));
    }
    return {};
}

}  // namespace korvex::host
