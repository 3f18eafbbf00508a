// Folders are walked with a list of those that wait, so that no depth is too deep.
#include "runtime/dispatcher/search_path_query.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "runtime/dispatcher/folder_views.h"
#include "runtime/dispatcher/path_entry_type.h"
#include "runtime/storage/location.h"

namespace korvex::runtime::dispatcher {

namespace vfs = foundation::storage::vfs;
using namespace Velquist::PathManagement;
using Location = SearchPathQuery::Location;

namespace {

vfs::Folder folderAt(const vfs::AbsoluteIRI& location) {
    return vfs::Folder(location, Velquist::KorvexStorageSystem::GetStorageSystemReference());
}

/// The names of local disks by the policy, those of other storages with regard to case unless it says no.
CaseRule caseRuleAt(const vfs::AbsoluteIRI& location, FilenameMatchingPolicy policy) {
    const bool isLocal = location.parts().scheme == storage::localScheme;
    return caseRuleOf(policy, isLocal ? paths::nativeStyle : paths::PathStyle::posix);
}

class PathItem : public IPathItem {
public:
    PathItem(PathEntryType type, Location location) : type_(type), location_(std::move(location)) {}

    PathEntryType getEntryType() const override { return type_; }
    const Location& getLocation() const override { return location_; }
    std::shared_ptr<const LocationTextComparer> getComparer(FilenameMatchingPolicy policy) const override {
        const CaseRule rule = caseRuleAt(location_, policy);
        return std::make_shared<const LocationTextComparer>(LocationTextComparer{
            [rule](const std::u16string& a, const std::u16string& b) { return areSameTexts(a, b, rule); }});
    }

private:
    const PathEntryType type_;
    const Location location_;
};

/// None when it is gone or the storage does not tell.
std::optional<Location> canonicalForm(const Location& folder) {
    try {
        return folderAt(folder).getCanonicalLocation();
    } catch (const vfs::Exception&) {
        return std::nullopt;
    } catch (const vfs::UnsupportedIRISchemeException&) {
        return std::nullopt;
    }
}

Location childOf(const Location& folder, const std::u16string& name) {
    return Location(vfs::AbsoluteIRI(folder, name));
}

/// And no link to one. What the storage does not tell about is none.
bool isFolderItself(const vfs::AbsoluteIRI& location) {
    try {
        return vfs::existsExtended(location, Velquist::KorvexStorageSystem::GetStorageSystemReference()) ==
               foundation::storage::provider::ExtendedFolder;
    } catch (const vfs::Exception&) {
        return false;
    }
}

vfs::FolderListing<vfs::ListEntry> entriesOf(const Location& folder) {
    try {
        return folderAt(folder).listAll(u"");
    } catch (const vfs::Exception&) {
        return {};
    } catch (const vfs::UnsupportedIRISchemeException&) {
        return {};
    }
}

/// Without links and "resources", in the order of their names.
std::vector<Location> subfoldersOf(const Location& folder) {
    std::vector<Location> subfolders;
    for (const vfs::ListEntry& entry : entriesOf(folder)) {
        if (boost::get<vfs::Folder>(&entry.getFileOrFolder()) == nullptr) continue;
        const std::u16string& name = entry.getLocation().getName();
        if (GetPathEntryTypeFromBaseName(name) == ResourcesFolder) continue;
        const Location subfolder = childOf(folder, name);
        if (isFolderItself(subfolder)) subfolders.push_back(subfolder);
    }
    return subfolders;
}

}  // namespace

SearchPathQuery::SearchPathQuery(const Filter& filter, const std::u16string& text, Policy policy)
    : filter_(filter), tail_(text, paths::nativeStyle), policy_(policy) {}

void SearchPathQuery::askPathFolder(const Location& folder) {
    if (!mayNameSpecialFolder()) return ask(folder);
    // A link among these folders may lead back to one that holds it: none is entered twice.
    std::unordered_set<std::u16string> entered;
    std::vector<Location> waiting{folder};
    while (!waiting.empty()) {
        const Location next = std::move(waiting.back());
        waiting.pop_back();
        ask(next);
        const std::optional<Location> canonical = canonicalForm(next);
        if (!canonical || !entered.insert(canonical->toString()).second) continue;
        const std::shared_ptr<const FolderView> view = folderView(*canonical);
        for (auto name = view->specialSubfolders.rbegin(); name != view->specialSubfolders.rend(); ++name) {
            if (GetPathEntryTypeFromBaseName(*name) != ResourcesFolder) {
                waiting.push_back(childOf(*canonical, *name));
            }
        }
    }
}

void SearchPathQuery::askTree(const Location& root) {
    std::vector<Location> waiting{root};
    while (!waiting.empty()) {
        const Location next = std::move(waiting.back());
        waiting.pop_back();
        ask(next);
        const std::vector<Location> subfolders = subfoldersOf(next);
        waiting.insert(waiting.end(), subfolders.rbegin(), subfolders.rend());
    }
}

PathItems SearchPathQuery::takeItems() { return std::exchange(items_, {}); }

void SearchPathQuery::ask(const Location& folder) {
    const PathEntryType type = GetPathEntryTypeFromBaseName(folder.getName());
    if (std::ranges::find(filter_, type) == filter_.end()) return;
    if (!tail_.names(folder, caseRuleAt(folder, policy_))) return;
    if (!found_.insert(folder.toString()).second) return;
    items_.push_back(std::make_shared<const PathItem>(type, folder));
}

bool SearchPathQuery::mayNameSpecialFolder() const {
    // By the rules that ignore case: the policy may do so too.
    return pathEntryType(tail_.lastName(), paths::PathStyle::windows) != OrdinaryFolder;
}

}  // namespace korvex::runtime::dispatcher
