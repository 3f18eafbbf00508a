// The lines that were typed, kept from one session to the next and shared by sessions that run side by side.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace korvex::host {

/// A file of lines in UTF-8, bytes that are none as they were typed, the newest line last. Only the user may
/// read it. It is replaced as a whole, so that a crash leaves the old or the new one. Nothing here raises:
/// without a history one can still type.
class HistoryFile {
public:
    static constexpr std::size_t mostLines = 1000;
    /// In 16-bit units; a longer line is not kept.
    static constexpr std::size_t longestLine = 10000;

    /// `folder` is a native path; nothing is kept when it is empty.
    explicit HistoryFile(const std::u16string& folder);

    /// From the oldest to the newest; none when the file is missing or cannot be read.
    std::vector<std::u16string> lines() const;
    /// Adds a line behind what other sessions have added meanwhile, unless it is the last one already. The
    /// oldest lines go. Makes the folder when it is missing.
    void add(std::u16string_view line) const;

private:
    std::u16string path_;
};

}  // namespace korvex::host
