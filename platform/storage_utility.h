// foundation::storage::utility: location texts before they become locations.
#pragma once

#include <string>

namespace foundation::storage::utility {

/// Whether the slashes behind the scheme are well formed: three for "file", or two and a host; two for any
/// other scheme; no slash behind them. False for a text without a scheme prefix.
bool hasValidNumberOfSlashes(const std::u16string& text);

/// Undoes percent encoding in place. A `%` that no two hexadecimal digits follow stays; bytes that are no
/// valid UTF-8 become the unpaired units that stand for them in paths.
void decodeURL(std::u16string& text);

/// Writes a location's text in the one way of the several that mean the same: scheme and host in small
/// letters, the digits of percent escapes in capital ones, and, but for a web location, one separator instead
/// of several in the path. Dots, escapes and a user in front of the host stay. A text without a scheme and
/// two slashes behind it stays as it is.
void normalizeURL(std::u16string& text);

/// Windows: "\" becomes "/". Elsewhere a back slash is an ordinary character and stays.
void convertWindowsBackslashes(std::u16string& text);

/// Windows: blanks and dots at the end of a path go, and a single dot at the end of any component, as the
/// system itself would take them; "." and ".." stay. Nothing elsewhere. May leave an empty text.
void handleWindowsTrailingDotsAndSpaces(std::u16string& path);

}  // namespace foundation::storage::utility
