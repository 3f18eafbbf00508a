// Lines of one file.
#include "host/kwsh/history_file.h"

#include <algorithm>
#include <exception>
#include <optional>

#include "platform/foundation_filesystem.h"
#include "runtime/configuration/whole_file.h"
#include "runtime/text/encoding.h"

namespace korvex::host {

namespace configuration = runtime::configuration;

namespace {

/// The newest lines of a content, in bytes.
std::vector<std::string> newestLines(std::string_view content) {
    std::vector<std::string> lines;
    while (!content.empty()) {
        const std::size_t end = std::min(content.find('\n'), content.size());
        if (end > 0) lines.emplace_back(content.substr(0, end));
        content.remove_prefix(std::min(end + 1, content.size()));
    }
    if (lines.size() > HistoryFile::mostLines) {
        lines.erase(lines.begin(), lines.end() - HistoryFile::mostLines);
    }
    return lines;
}

std::vector<std::string> linesOf(const std::u16string& path) {
    const std::optional<configuration::WholeFile> file = configuration::readWholeFile(path);
    return file ? newestLines(file->content) : std::vector<std::string>();
}

}  // namespace

HistoryFile::HistoryFile(const std::u16string& folder)
    : path_(folder.empty() ? folder : fl::filesystem::absolute(u"history", folder)) {}

std::vector<std::u16string> HistoryFile::lines() const {
    std::vector<std::u16string> lines;
    if (path_.empty()) return lines;
    try {
        for (const std::string& line : linesOf(path_))
            lines.push_back(runtime::text::fromBytes(line));
    } catch (const std::exception&) {
        lines.clear();
    }
    return lines;
}

void HistoryFile::add(std::u16string_view line) const {
    const std::optional<std::string> bytes = runtime::text::toBytes(line);
    if (path_.empty() || line.empty() || line.size() > longestLine || !bytes) return;
    if (bytes->find_first_of(std::string_view("\n\0", 2)) != std::string::npos) return;
    try {
        configuration::LockedFile file(path_);
        std::vector<std::string> lines = linesOf(path_);
        if (!lines.empty() && lines.back() == *bytes) return;
        if (lines.size() == mostLines) lines.erase(lines.begin());
        lines.push_back(*bytes);
        std::string content;
        for (const std::string& kept : lines)
            content += kept + '\n';
        file.replaceWith(content);
    } catch (const std::exception&) {
        // The line is still in the memory of this session.
    }
}

}  // namespace korvex::host
