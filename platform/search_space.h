// The search space: the folders of the search path together with those of the registered packages.
#pragma once

#include <boost/optional.hpp>
#include <memory>
#include <string>
#include <vector>

#include "platform/path_management.h"
#include "platform/storage_vfs.h"

namespace Velquist::searchspace {

/// Finds folders by a part of their path.
class IFileFolderResolver {
public:
    /// What `IPath::findEntries` gives for the text, and behind it, a list for each package in which there is
    /// something: the package's root folder and all folders below it that the text names by the same rule,
    /// each before those in it, in the order of their names. Links in packages are not followed, and
    /// "resources" folders are left out with all they hold. `below`, where it is given, leaves out what is
    /// neither that folder nor in it. No folder is given twice, and no list is empty. What cannot be read is
    /// passed over, the registry of packages too; raises nothing.
    virtual std::vector<PathManagement::PathItems> findEntries(
        const std::u16string& text, const std::vector<PathManagement::PathEntryType>& filter,
        PathManagement::FilenameMatchingPolicy policy,
        const boost::optional<foundation::storage::vfs::CanonicalAbsoluteIRI>& below) const = 0;
    virtual ~IFileFolderResolver() = default;
};

/// Never null.
std::shared_ptr<const IFileFolderResolver> GetCurrentFileFolderResolver();

}  // namespace Velquist::searchspace
