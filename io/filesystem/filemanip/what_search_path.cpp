// Where `what` looks for a name that is no full path: on the search path and below the current folder.
#include "io/filesystem/filemanip/what_search_path.h"

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <vector>

#include "io/filesystem/filemanip/dir_listing_display.h"
#include "io/filesystem/filemanip/what_folder_names.h"
#include "io/filesystem/filemanip/what_report.h"
#include "platform/dispatcher.h"
#include "platform/foundation_filesystem.h"
#include "platform/packages.h"
#include "platform/search_space.h"

namespace korvex::filemanip {

namespace vfs = foundation::storage::vfs;
using namespace Velquist::PathManagement;
using Velquist::current_working_folder::FailedToAbsolutizeException;
using Velquist::current_working_folder::ICurrentWorkingFolder;
using Velquist::KorvexComponents::ComponentFeature;

namespace {

/// Paths in the current folder of this length in 16-bit units, and longer ones, are not looked for.
constexpr std::size_t pathLimit = 1024;

ICurrentWorkingFolder& currentFolder() { return Kdispatcher::getDispatcher().GetCurrentWorkingFolder(); }

const std::vector<PathEntryType>& soughtTypes() {
    static const std::vector<PathEntryType> types{OrdinaryFolder, NamespaceFolder, ClassFolder,
                                                  PrivateFolder};
    return types;
}

std::optional<vfs::AbsoluteIRI> absolutized(const std::u16string& text) {
    try {
        return currentFolder().absolutize(text);
    } catch (const FailedToAbsolutizeException&) {
        return std::nullopt;
    }
}

PathItems itemsNamed(const std::u16string& text, FilenameMatchingPolicy policy) {
    if (!ComponentFeature::IsOn()) {
        return Kdispatcher::getDispatcher().GetCurrentPath()->findEntries(soughtTypes(), text, policy);
    }
    PathItems items;
    const auto resolver = Velquist::searchspace::GetCurrentFileFolderResolver();
    for (const PathItems& list : resolver->findEntries(text, soughtTypes(), policy, boost::none))
        items.insert(items.end(), list.begin(), list.end());
    return items;
}

/// None when it would be too long.
std::optional<std::u16string> pathInCurrentFolder(const std::u16string& name) {
    std::u16string path = fl::filesystem::detail::make_native_form(currentFolderText(), true);
    if (path.size() + 1 + name.size() > pathLimit) return std::nullopt;
    if (!name.empty()) path = fl::filesystem::detail::concatenate_pathname(path, name, true);
    if (path.size() >= pathLimit) return std::nullopt;
    return path;
}

std::optional<std::u16string> resolvedInCurrentFolder(const std::u16string& name,
                                                      FilenameMatchingPolicy policy) {
    try {
        std::optional<std::u16string> path = pathInCurrentFolder(name);
        if (!path) return std::nullopt;
        return resolveFolderName(policy, *path, true);
    } catch (...) {
        // Whatever it was: without a current folder that can be used there is nothing below it.
        return std::nullopt;
    }
}

}  // namespace

PathHits kPathWhat(const std::u16string& inputPath, FilenameMatchingPolicy policy, kxArray* result) {
    if (inputPath.empty()) throw std::logic_error("io/filesystem/filemanip/what:361: !inputPath.empty()");
    PathHits hits;
    const std::optional<vfs::AbsoluteIRI> inputLocation = absolutized(inputPath);
    if (!inputLocation) return hits;
    for (const std::shared_ptr<const IPathItem>& item : itemsNamed(inputPath, policy)) {
        if (item->getEntryType() == PrivateFolder && !isChildOfCurrentFolder(*item, policy)) continue;
        const bool isReported =
            reportFolder(GetStringFromIRI(item->getLocation()), false, result, false, false);
        hits.found = hits.found || isReported;
        // On purpose asked, too, of an item that is not there, once another one was reported.
        if (hits.found && !hits.exact) {
            hits.exact =
                item->getComparer(policy)->areSame(item->getLocation().toString(), inputLocation->toString());
        }
    }
    return hits;
}

bool whatInCurrentFolder(const std::u16string& name, FilenameMatchingPolicy policy, kxArray* result) {
    const std::optional<std::u16string> resolved = resolvedInCurrentFolder(name, policy);
    return resolved && reportFolder(*resolved, false, result, false, false);
}

bool isChildOfCurrentFolder(const IPathItem& item, FilenameMatchingPolicy policy) {
    if (item.getEntryType() != PrivateFolder) return false;
    try {
        return item.getComparer(policy)->areSame(item.getLocation().getParent().toString(),
                                                 currentFolder().get().getLocation().toString());
    } catch (const fl::filesystem::PathNotFound&) {
        return false;
    }
}

}  // namespace korvex::filemanip
