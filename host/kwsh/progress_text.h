// The progress line as a text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/kwsh/progress_pace.h"

namespace korvex::host {

/// "1,204 items, 3.61 GB, 212 MB/s: data/big.bin 45%, 0:12 left", at most `columns` wide: what matters least
/// goes, and the name is cut at its begin. Control characters of names are shown by their pictures.
std::u16string progressText(const ProgressView& view, std::size_t columns);

/// "999 B", "1.20 kB", "34.5 MB", "120 GB": three digits, in powers of 1000.
std::u16string byteText(double bytes);
/// "1,204,003".
std::u16string groupedText(std::uint64_t number);
/// "0:07", "12:30", "3:02:09".
std::u16string durationText(std::uint64_t seconds);

}  // namespace korvex::host
