// What `delete` does with one name.
#pragma once

#include <string>

namespace korvex::filemanip {

struct DeletionOptions {
    bool recycle;       ///< local files go to the recycle bin
    bool resolveLinks;  ///< what a link leads to is removed, and the link stays
};

/// Deletes the file of a name, or those that match its last component where that holds `*`. A failure is a
/// warning. Raises "KORVEX:DELETE:pathnameTooLong" for a name of 1024 units or more, and what is no failure
/// of storage.
void deleteOneName(const std::u16string& givenName, const DeletionOptions& options);

}  // namespace korvex::filemanip
