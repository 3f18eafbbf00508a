// The search path: the folders in which the interpreter looks for functions, and the bridges between path
// text and locations.
#pragma once

#include <boost/range/any_range.hpp>
#include <cstddef>
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

/// A list of locations in whatever container.
template <class Location>
using LocationRange =
    boost::any_range<Location, boost::forward_traversal_tag, const Location&, std::ptrdiff_t>;

/// The search path of the running interpreter. It is kept from one run to the next, and a change is on disk
/// when the operation returns; what keeps it from being written comes back as a notification, and the change
/// holds for this run.
///
/// The order of the virtual operations is the order of the environment's binary interface.
class IMainSearchPathManager {
public:
    virtual ~IMainSearchPathManager() = default;
    /// Reads the path's folders again with the next look-up. `isForced` reads them at once.
    virtual void refresh(bool isForced) = 0;
    /// Takes the folders off the path. `notification` is left empty when at least one of them was on it and
    /// says so when none was.
    virtual void removeEntries(LocationRange<foundation::storage::vfs::CanonicalAbsoluteIRI> entries,
                               foundation::core::except::Notification& notification) = 0;
    /// The folders of the path, in its order.
    virtual std::vector<foundation::storage::vfs::CanonicalAbsoluteIRI> getPathEntries() const = 0;
    /// Makes the path consist of just these entries, in their order, there or not. `notification` is left
    /// empty when the path could be written.
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
