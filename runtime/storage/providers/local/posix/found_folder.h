// A folder that was listed, held for the sake of the entries that the listing gave.
//
// What is done to such an entry goes by the open folder and the entry's name, not by its path: a link that
// somebody puts in the place of the folder, or of one above it, leads nowhere.
#pragma once

#include <memory>
#include <string>

#include "runtime/storage/location.h"
#include "runtime/storage/providers/local/posix/file_descriptor.h"

namespace korvex::runtime::storage::posix {

/// An open folder, one of a bounded number.
class KeptFolder;

class FoundFolder : public FoundPlace {
public:
    /// Keeps a folder that is open for listing; `location` is its own. When handles run short, the folder is
    /// kept as a path, without links, below one that is open. Null when there is none above it either.
    static std::shared_ptr<const FoundFolder> keep(FileDescriptor folder, const AbsoluteIRI& location);
    /// The folder in which a location was found; null for one that no listing gave.
    static std::shared_ptr<const FoundFolder> of(const AbsoluteIRI& location) noexcept;

    FoundFolder(std::shared_ptr<const KeptFolder> kept, std::string below)
        : kept_(std::move(kept)), below_(std::move(below)) {}

    /// The descriptor to look names up in; `opened` owns it where it had to be opened. -1 and the errno when
    /// the folder is not to be found any more.
    int handle(FileDescriptor& opened, int& systemError) const;

private:
    std::shared_ptr<const KeptFolder> kept_;
    /// From the open folder down, "/" between names; empty for that folder itself.
    std::string below_;
};

}  // namespace korvex::runtime::storage::posix
