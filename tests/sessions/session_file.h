// A session file: the transcript that running its statements must give, in the format of
// host/kwsh/transcript_presenter.h.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace korvex::tests {

/// Lines without their ends.
std::vector<std::string> linesOf(std::string_view text);

/// The script that a session shows: its statements, comments and empty lines, without what they gave.
std::string scriptOf(const std::vector<std::string>& session);

/// Where two texts differ, as lines with their numbers behind "expected" and "actual"; empty when they do
/// not.
std::string difference(const std::vector<std::string>& expected, const std::vector<std::string>& actual);

}  // namespace korvex::tests
