// The search path: the folders in which the interpreter looks for functions, and the bridges between path
// text and locations.
#pragma once

#include <boost/range/any_range.hpp>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/storage_vfs.h"
#include "platform/user_exceptions.h"

namespace Velquist::PathManagement {

/// The location of a path or of a text with a scheme. A relative path is taken against the current folder;
/// doubled separators and a trailing one go, `.` and `..` stay as they are. Raises `InvalidIRIException` for
/// a text with a scheme that does not parse and for an empty text, `fl::filesystem::PathNotFound` for a
/// relative path when the current folder is gone.
foundation::storage::vfs::AbsoluteIRI GetIRIFromString(const std::u16string& text);

/// The text that the commands show for a location: the native path of a local one, the location's text of any
/// other. A "file" location of another machine has no native path with the POSIX style, and gives its text.
std::u16string GetStringFromIRI(const foundation::storage::vfs::AbsoluteIRI& location);

/// What a folder is to the search path.
enum PathEntryType {
    OrdinaryFolder = 0,
    ClassFolder = 1,      ///< "@name": the methods of a class
    NamespaceFolder = 2,  ///< "+name": the members of a namespace
    PrivateFolder = 3,    ///< "private": counts only from its parent folder
    ResourcesFolder = 5,  ///< "resources": what belongs to a package or a toolbox
};

/// The type of a folder with this name, its last path component. Whole words, case as the platform's names.
PathEntryType GetPathEntryTypeFromBaseName(const std::u16string& name);

/// How the names of folders are compared.
enum FilenameMatchingPolicy {
    MatchCase = 0,
    IgnoreCase = 1,
    DefaultMatching = 2,  ///< as the platform's names do
};

/// Whether two location texts are the same under a policy.
struct LocationTextComparer {
    std::function<bool(const std::u16string& a, const std::u16string& b)> areSame;
};

/// A folder that a query found. The order of the virtual operations, here and below, is the order of the
/// environment's binary interface.
class IPathItem {
public:
    /// By its name.
    virtual PathEntryType getEntryType() const = 0;
    /// It need not be there any more. The folder above it is in canonical form, and a link in there keeps its
    /// own name.
    virtual const foundation::storage::vfs::CanonicalAbsoluteIRI& getLocation() const = 0;
    /// Never null. `DefaultMatching` looks at case for what is not local.
    virtual std::shared_ptr<const LocationTextComparer> getComparer(FilenameMatchingPolicy policy) const = 0;
    virtual ~IPathItem() = default;
};
using PathItems = std::vector<std::shared_ptr<const IPathItem>>;

/// The search path as it is asked for folders.
class IPath {
public:
    /// The folders of a type in `filter` that `text` names: an absolute path names the folder of that path,
    /// any other text those whose last components equal it, by the case rule of the policy. Neither dots nor
    /// links in it are resolved; doubled separators and a trailing one do not count. Asked are the path's
    /// folders, in its order, each followed by the class, namespace and private folders in it, at any depth.
    /// No folder is given twice. One that cannot be read is passed over; raises nothing.
    virtual PathItems findEntries(const std::vector<PathEntryType>& filter, const std::u16string& text,
                                  FilenameMatchingPolicy policy) const = 0;
    virtual ~IPath() = default;
};

/// A list of locations in whatever container.
template <class Location>
using LocationRange =
    boost::any_range<Location, boost::forward_traversal_tag, const Location&, std::ptrdiff_t>;

/// The search path of the running interpreter. It is kept from one run to the next, and a change is on disk
/// when the operation returns; one that cannot be written holds for this run.
///
/// The order of the virtual operations is the order of the environment's binary interface.
class IMainSearchPathManager {
public:
    virtual ~IMainSearchPathManager() = default;
    /// Reads the path's folders again with the next look-up. `isForced` reads them at once.
    virtual void refresh(bool isForced) = 0;
    /// Takes the folders off the path. `notification` is left empty when at least one of them was on it and
    /// says so when none was. A path that cannot be written is told by a warning.
    virtual void removeEntries(LocationRange<foundation::storage::vfs::CanonicalAbsoluteIRI> entries,
                               foundation::core::except::Notification& notification) = 0;
    /// The folders of the path, in its order.
    virtual std::vector<foundation::storage::vfs::CanonicalAbsoluteIRI> getPathEntries() const = 0;
    /// Makes the path consist of just these entries, in their order, there or not. `notification` is left
    /// empty when the path could be written, and says why when it could not.
    virtual void restorePathEntries(
        const std::vector<foundation::storage::vfs::CanonicalAbsoluteIRI>& entries,
        foundation::core::except::Notification& notification) = 0;
};

/// Who is told about what happened in the environment.
class IPerKVMEventManager {
public:
    virtual ~IPerKVMEventManager() = default;
    /// A special subfolder (of a class, of a namespace, "private", "resources") of the path's entries above
    /// `location` may have come or gone.
    virtual void notifySpecialSubfolderChange(const foundation::storage::vfs::AbsoluteIRI& location) = 0;
};

/// Takes the folders off the path, be they still on disk or not. The notification is as
/// `IMainSearchPathManager::removeEntries` gives it.
foundation::core::except::Notification RemoveIRIsFromKorvexPath(
    LocationRange<foundation::storage::vfs::AbsoluteIRI> locations, IMainSearchPathManager& manager);

/// Tells the path's entries above `location` that one of their special subfolders may have gone.
void NotifyUpstreamPathEntriesOfPossibleSpecialSubfolderChanges(
    const foundation::storage::vfs::AbsoluteIRI& location, IPerKVMEventManager& eventManager);

}  // namespace Velquist::PathManagement
