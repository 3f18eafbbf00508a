// The two services that find folders by a part of their path: over the search path alone, and with the
// registered packages.
#include "runtime/dispatcher/search_path_lookup.h"

#include <utility>

#include "platform/search_space.h"
#include "runtime/configuration/stored_document.h"
#include "runtime/dispatcher/path_locations.h"
#include "runtime/dispatcher/search_path.h"
#include "runtime/dispatcher/search_path_query.h"
#include "runtime/packages/package_registry.h"

namespace korvex::runtime::dispatcher {

namespace vfs = foundation::storage::vfs;
using namespace Velquist::PathManagement;

namespace {

void askSearchPath(SearchPathQuery& query) {
    for (const vfs::CanonicalAbsoluteIRI& folder : searchPath())
        query.askPathFolder(folder);
}

/// Without a registry there are no packages to look into. The commands that work on packages say what is
/// wrong with it.
std::vector<packages::RegisteredPackage> packagesIfReadable() {
    try {
        return packages::registeredPackages();
    } catch (const configuration::ConfigurationError&) {
        return {};
    }
}

class CurrentPath : public IPath {
public:
    PathItems findEntries(const std::vector<PathEntryType>& filter, const std::u16string& text,
                          FilenameMatchingPolicy policy) const override {
        SearchPathQuery query(filter, text, policy);
        askSearchPath(query);
        return query.takeItems();
    }
};

class FileFolderResolver : public Velquist::searchspace::IFileFolderResolver {
public:
    std::vector<PathItems> findEntries(
        const std::u16string& text, const std::vector<PathEntryType>& filter, FilenameMatchingPolicy policy,
        const boost::optional<vfs::CanonicalAbsoluteIRI>& below) const override {
        SearchPathQuery query(filter, text, policy);
        std::vector<PathItems> lists;
        const auto take = [&] {
            PathItems items = query.takeItems();
            if (below) std::erase_if(items, [&](const auto& item) { return !isIn(*below, *item); });
            if (!items.empty()) lists.push_back(std::move(items));
        };
        askSearchPath(query);
        take();
        for (const packages::RegisteredPackage& package : packagesIfReadable()) {
            query.askTree(vfs::CanonicalAbsoluteIRI(vfs::AbsoluteIRI(package.root)));
            take();
        }
        return lists;
    }

private:
    static bool isIn(const vfs::CanonicalAbsoluteIRI& folder, const IPathItem& item) {
        return areSameLocations(folder, item.getLocation()) || folder.isAncestorOf(item.getLocation());
    }
};

}  // namespace

std::shared_ptr<const IPath> currentPathForLookup() {
    static const auto path = std::make_shared<const CurrentPath>();
    return path;
}

}  // namespace korvex::runtime::dispatcher

namespace Velquist::searchspace {

std::shared_ptr<const IFileFolderResolver> GetCurrentFileFolderResolver() {
    static const auto resolver = std::make_shared<const korvex::runtime::dispatcher::FileFolderResolver>();
    return resolver;
}

}  // namespace Velquist::searchspace
