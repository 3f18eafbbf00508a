// What is asked of the storage layer for many files at once, so that it need not begin anew with each.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "platform/storage_vfs.h"

namespace foundation::storage::vfs {

/// The place of the first item for which `isWritable` says no, or the number of items. One for which it
/// raises `vfs::Exception` counts as writable; `onFailure` is called while that exception is being handled.
/// Raises `UnsupportedIRISchemeException`.
std::size_t firstUnwritable(const std::vector<Item>& items, const std::function<void()>& onFailure);

/// Says that these files (source, destination) will be copied one after another, in this order, by
/// `File::copyFile` with this policy, from the thread that makes the object. Nothing that is asked for
/// changes: each `copyFile` does its work and raises its own failure. But a provider may have further threads
/// copy a bounded number of files ahead of what was asked for, each onto nothing. What was made ahead and is
/// not asked for is gone again when the object ends, or when a copy is asked for that is another one or
/// cannot be made onto nothing. One at a time for a thread.
class CopiesAhead {
public:
    /// The files are looked at while the object is made, and no longer.
    CopiesAhead(const std::vector<std::pair<const File*, const File*>>& files,
                const provider::ReplacementPolicy& policy);
    CopiesAhead(const CopiesAhead&) = delete;
    CopiesAhead& operator=(const CopiesAhead&) = delete;

private:
    std::shared_ptr<void> work_;
};

}  // namespace foundation::storage::vfs
