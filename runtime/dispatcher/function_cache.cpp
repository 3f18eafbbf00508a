// The cached functions. They belong to the interpreter's thread.
#include "runtime/dispatcher/function_cache.h"

#include <algorithm>

#include "platform/dispatcher.h"
#include "platform/foundation_filesystem.h"
#include "platform/message_catalog.h"
#include "platform/path_management.h"
#include "runtime/dispatcher/environment_events.h"
#include "runtime/dispatcher/folder_views.h"
#include "runtime/dispatcher/path_locations.h"
#include "runtime/storage/location.h"

namespace korvex::runtime::dispatcher {

namespace vfs = foundation::storage::vfs;

namespace {

std::vector<CachedFunction>& functions() {
    static std::vector<CachedFunction> cache;
    return cache;
}

/// A source file goes by the name that was given for it, though that may be a link.
std::u16string sourcePath(const vfs::AbsoluteIRI& file) {
    return vfs::fromAbsoluteIRI(locationInCanonicalFolder(file));
}

void drop(const std::u16string& path) {
    std::erase_if(functions(), [&](const CachedFunction& function) {
        return areSameNames(function.path, path, paths::nativeStyle);
    });
}

}  // namespace

bool isSourceFileName(const std::u16string& name) {
    return numberOfSourceExtension(u'.' + fl::filesystem::detail::extract_extension(name), false) >= 0;
}

int numberOfSourceExtension(std::u16string_view extension, bool isCaseExact) {
    const auto sensitivity =
        isCaseExact ? fl::i18n::detail::case_sensitive : fl::i18n::detail::case_insensitive;
    const auto found = std::ranges::find_if(sourceExtensions, [&](std::u16string_view known) {
        return fl::i18n::detail::compare(extension.data(), extension.size(), known.data(), known.size(),
                                         sensitivity) == 0;
    });
    return found == sourceExtensions.end() ? -1 : static_cast<int>(found - sourceExtensions.begin());
}

void cacheFunction(const std::u16string& path) {
    const vfs::AbsoluteIRI location = Velquist::PathManagement::GetIRIFromString(path);
    if (location.getScheme() != storage::localScheme) {
        throw vfs::Exception(vfs::unsupportedOperation, location, u"cacheFunction");
    }
    const auto storage = Velquist::KorvexStorageSystem::GetStorageSystemReference();
    switch (vfs::exists(location, storage)) {
        case foundation::storage::provider::AsNeither:
            throw vfs::Exception(vfs::resourceNotFound, location, u"cacheFunction");
        case foundation::storage::provider::AsFolder:
            throw vfs::Exception(vfs::invalidLocation, location, u"cacheFunction");
        case foundation::storage::provider::AsFile: break;
    }
    CachedFunction function;
    function.path = sourcePath(location);
    function.name = fl::filesystem::detail::extract_stem(function.path);
    if (function.name.empty() || !isSourceFileName(function.path)) {
        throw vfs::Exception(vfs::invalidLocation, location, u"cacheFunction");
    }
    drop(function.path);
    functions().push_back(std::move(function));
}

std::vector<CachedFunction> cachedFunctions() { return functions(); }

void clearFunctionsOf(const std::u16string& path) {
    try {
        const vfs::AbsoluteIRI file = Velquist::PathManagement::GetIRIFromString(path);
        // Its name would be found in there although it may have gone.
        if (file.hasParent()) forgetFolderView(file.getParent());
        // With nothing in the cache the question where the file lies needs no answer.
        if (!functions().empty()) drop(sourcePath(file));
    } catch (const vfs::InvalidIRIException&) {
        // What names no place names no source file.
    } catch (const fl::filesystem::PathNotFound&) {
        // A relative path without a current folder.
    }
    announce({EnvironmentEvent::Kind::functionsCleared, {path}});
}

}  // namespace korvex::runtime::dispatcher

void kdClearFunctionsByName(const char16_t* path) { korvex::runtime::dispatcher::clearFunctionsOf(path); }
