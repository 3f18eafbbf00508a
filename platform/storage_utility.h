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

}  // namespace foundation::storage::utility
