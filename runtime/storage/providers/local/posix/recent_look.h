// What a look at an entry of a listing has told a moment ago, so that the next question need not look again:
// whoever removes a long listing asks of each entry what it is and, at once, that it be writable.
#pragma once

#include "runtime/storage/location.h"

namespace korvex::runtime::storage::posix {

/// A look at the location has just told that a plain file stands there that its owner may write. Kept for
/// what a listing gave, nothing else.
void rememberWritable(const AbsoluteIRI& location) noexcept;

/// Whether that is so still: told within the last milliseconds, and this process has protected nothing since.
/// True once for each look. Another process may have protected the file since then, as it may the moment
/// after any look.
bool isJustSeenWritable(const AbsoluteIRI& location) noexcept;

/// Something is, or may be, protected from now on.
void forgetWritable() noexcept;

}  // namespace korvex::runtime::storage::posix
