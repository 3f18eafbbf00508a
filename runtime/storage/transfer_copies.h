// The copying part of transfers between two providers: files through a buffer, folders without recursion.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "runtime/storage/transfers.h"

namespace korvex::runtime::storage {

/// What becomes of the source when everything is copied.
enum class SourceFate { stays, goes };

/// What a file was like before its content was read.
struct CopiedFile {
    std::optional<std::uint64_t> size = std::nullopt;
    std::optional<std::chrono::sys_time<std::chrono::nanoseconds>> changed = std::nullopt;
    /// Whether a change since then shows in the two above, of a file without a time only one of its size.
    /// Nobody asks it of a file that stays.
    bool isSettled = false;
};

/// What was copied of a folder, in the order of a walk: each folder before what is in it, and its end behind.
struct CopiedItem {
    enum class Kind : unsigned char { file, folder, endOfFolder };
    Kind kind = Kind::file;
    std::u16string name = {};
    CopiedFile file = {};
};
using CopiedItems = std::vector<CopiedItem>;

/// The file itself and its destination may be named by links. Of a file that goes, waits where it
/// has changed so lately that one more change could leave its time the same: some milliseconds, up to two
/// seconds where its storage keeps whole seconds. A pending interrupt ends the waiting.
CopiedFile copyNamedFile(const ServedLocation& source, const ServedLocation& destination,
                         ReplacementPolicy policy, SourceFate fate);

/// The two folders may be named by links; nothing below them is. With `copied` the source is to go, and what
/// was copied is added there.
void copyTree(const ServedLocation& source, const ServedLocation& destination, ReplacementPolicy policy,
              CopiedItems* copied);

}  // namespace korvex::runtime::storage
