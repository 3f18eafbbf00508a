// What a failure of the storage is told as, by the place where it is met.
#pragma once

#include <optional>
#include <string>

#include "platform/storage_vfs.h"
#include "tests/unit/filemanip/copy_move/copy_move_fixture.h"

namespace korvex::filemanip::tests {

/// Where in a command a call of the storage stands, and so who explains its failure.
enum class Handler {
    run,            ///< around the whole run: questions and listings
    transfer,       ///< around each transfer
    missingParent,  ///< while the folders above the destination are made
    newFolder,      ///< while a folder for the matches of a wildcard is made
    ownContents,    ///< while a folder is made for the contents of the current folder, or of one around it
    currentFolder,  ///< while the current folder is asked for
    nobody,         ///< traced and dropped: the command goes on
};

/// What is known when a failure is explained.
struct Circumstances {
    const Setting& setting;
    bool isForced;
    /// The typed source and destination; plain ones, so that shown and typed texts are the same.
    std::u16string source;
    std::u16string destination;
    /// Of the transfer that failed, if it was one.
    std::u16string item;
    std::u16string target;
    /// The location that the failure carries.
    std::u16string failed;
    /// What stands at the item and at the target when the failure is explained.
    provider::ExistenceType itemKind;
    provider::ExistenceType targetKind;
};

/// The failure that is told; none when the command passes over it.
Failure explained(Handler handler, vfs::ErrorCode code, const Circumstances& circumstances);

}  // namespace korvex::filemanip::tests
