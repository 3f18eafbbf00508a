// The one place where 16-bit text and bytes meet.
//
// Names on a POSIX disk are bytes, mostly UTF-8. A byte that is no part of valid UTF-8 becomes the unpaired
// unit 0xDC00 + byte (0xDC80 to 0xDCFF) and turns back into that byte, so that every name can be told, listed
// and opened again.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace korvex::runtime::text {

/// Bytes as 16-bit text. Never fails; the way back gives the same bytes.
std::u16string fromBytes(std::string_view bytes);

/// 16-bit text as bytes. Nothing when an unpaired surrogate stands for no byte: no name on disk reads so.
std::optional<std::string> toBytes(std::u16string_view text);

/// The same into a buffer that the caller keeps, for loops over many names. False, with the buffer in an
/// unspecified state, where `toBytes` gives nothing.
bool toBytes(std::u16string_view text, std::string& bytes);

/// 16-bit text for people and logs: like `toBytes`, but an unpaired surrogate that stands for no byte becomes
/// U+FFFD.
std::string toDisplayBytes(std::u16string_view text);

}  // namespace korvex::runtime::text
