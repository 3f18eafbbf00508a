// Taking a session apart, and comparing two.
#include "tests/sessions/session_file.h"

#include <algorithm>

#include "host/kwsh/transcript_presenter.h"

namespace korvex::tests {
namespace {

using host::continuationMark;
using host::statementMark;

std::string_view withoutBlankAtEnd(std::string_view mark) { return mark.substr(0, mark.size() - 1); }

/// A line that begins with the mark, or consists of it where an editor has dropped the blank at its end.
bool hasMark(std::string_view line, std::string_view mark) {
    return line.starts_with(mark) || line == withoutBlankAtEnd(mark);
}

std::string behindMark(std::string_view line, std::string_view mark) {
    return std::string(line.substr(std::min(mark.size(), line.size())));
}

/// Empty lines belong to the script when a statement, a comment or the end follows them.
bool belongsToScript(const std::vector<std::string>& lines, std::size_t emptyLine) {
    const auto next = std::find_if(lines.begin() + static_cast<std::ptrdiff_t>(emptyLine), lines.end(),
                                   [](const std::string& line) { return !line.empty(); });
    return next == lines.end() || next->starts_with('%') || hasMark(*next, statementMark);
}

void appendLines(std::string& text, std::string_view what, const std::vector<std::string>& lines,
                 std::size_t begin, std::size_t end) {
    text += what;
    if (begin == end) text += " nothing there, before line " + std::to_string(begin + 1);
    text += '\n';
    for (std::size_t at = begin; at < end; ++at) {
        text += "  " + std::to_string(at + 1) + ": " + lines[at] + '\n';
    }
}

}  // namespace

std::vector<std::string> linesOf(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        if (line.ends_with('\r')) line.remove_suffix(1);
        lines.emplace_back(line);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

std::string scriptOf(const std::vector<std::string>& session) {
    std::string script;
    for (std::size_t at = 0; at < session.size(); ++at) {
        const std::string& line = session[at];
        if (hasMark(line, statementMark)) {
            script += behindMark(line, statementMark) + '\n';
        } else if (hasMark(line, continuationMark)) {
            script += behindMark(line, continuationMark) + '\n';
        } else if (line.starts_with('%') || (line.empty() && belongsToScript(session, at))) {
            script += line + '\n';
        }
    }
    return script;
}

std::string difference(const std::vector<std::string>& expected, const std::vector<std::string>& actual) {
    if (expected == actual) return {};
    const std::size_t shorter = std::min(expected.size(), actual.size());
    std::size_t begin = 0;
    while (begin < shorter && expected[begin] == actual[begin])
        ++begin;
    std::size_t equalAtEnd = 0;
    while (equalAtEnd < shorter - begin &&
           expected[expected.size() - 1 - equalAtEnd] == actual[actual.size() - 1 - equalAtEnd]) {
        ++equalAtEnd;
    }
    std::string text;
    appendLines(text, "expected:", expected, begin, expected.size() - equalAtEnd);
    appendLines(text, "actual:", actual, begin, actual.size() - equalAtEnd);
    return text;
}

}  // namespace korvex::tests
