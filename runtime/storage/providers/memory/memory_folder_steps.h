// What takes a whole folder of the memory provider: copying into another one, and removal. Step by step,
// without recursion; a pending interrupt ends it between two steps.
#pragma once

#include "runtime/storage/providers/memory/memory_tree.h"
#include "runtime/storage/transfer_progress.h"

namespace korvex::runtime::storage {

/// A node and the location that messages name it by.
struct LocatedFolder {
    MemoryNode& node;
    const AbsoluteIRI& location;
};

/// Copies what is in `source` into `destination`, which is there. Raises as `Folder::copyFolder`.
void copyFolderContents(const LocatedFolder& source, const LocatedFolder& destination,
                        ReplacementPolicy policy, ProgressCounter& progress);

/// Empties the folder. What was removed before a failure is gone.
void removeFolderContents(const LocatedFolder& folder, ProgressCounter& progress);

}  // namespace korvex::runtime::storage
