// The form of the document: {"folders": [location text, ...]}, in the order of the path. What else stands in
// it stays.
#include "runtime/dispatcher/search_path_file.h"

#include <algorithm>
#include <optional>

#include "runtime/configuration/json_text.h"

namespace korvex::runtime::dispatcher {

namespace vfs = foundation::storage::vfs;
using nlohmann::json;

namespace {

constexpr const char* foldersKey = "folders";

/// Nothing when the value is no location.
std::optional<vfs::CanonicalAbsoluteIRI> locationOf(const json& value) {
    const std::optional<std::u16string> text = configuration::fromJson(value);
    if (!text) return std::nullopt;
    try {
        return vfs::CanonicalAbsoluteIRI(vfs::AbsoluteIRI(*text));
    } catch (const vfs::InvalidIRIException&) {
        return std::nullopt;
    }
}

bool isSearchPath(const json& document) {
    const auto folders = document.find(foldersKey);
    return folders == document.end() ||
           (folders->is_array() &&
            std::ranges::all_of(*folders, [](const json& value) { return locationOf(value).has_value(); }));
}

PathFolders foldersOf(const json& document) {
    PathFolders folders;
    const auto texts = document.find(foldersKey);
    if (texts == document.end()) return folders;
    for (const json& value : *texts) {
        if (const auto location = locationOf(value)) folders.push_back(*location);
    }
    return folders;
}

json textsOf(const PathFolders& folders) {
    json texts = json::array();
    for (const vfs::CanonicalAbsoluteIRI& folder : folders)
        texts.push_back(configuration::toJson(folder.toString()));
    return texts;
}

}  // namespace

SearchPathFile::SearchPathFile() : document_("path.json", isSearchPath) {}

PathFolders SearchPathFile::read() const { return foldersOf(document_.read()); }

void SearchPathFile::update(const std::function<void(PathFolders&)>& change) {
    document_.update([&](json& document) {
        PathFolders folders = foldersOf(document);
        change(folders);
        document[foldersKey] = textsOf(folders);
    });
}

}  // namespace korvex::runtime::dispatcher
