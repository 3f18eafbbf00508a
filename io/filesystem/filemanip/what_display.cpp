// The printed form of `what`: for each folder, its groups in columns.
#include "io/filesystem/filemanip/what_display.h"

#include <ostream>
#include <utility>

#include "io/filesystem/filemanip/command_frame.h"
#include "io/filesystem/filemanip/dir_listing_display.h"
#include "platform/foundation_filesystem.h"
#include "platform/message_catalog.h"
#include "platform/message_identifiers.h"
#include "platform/services_io.h"

namespace korvex::filemanip {

using services::io::operator<<;

namespace {

std::u16string headerOf(std::size_t group, const std::u16string& path, bool isCurrentFolder) {
    const std::u16string label = fl::i18n::to_ustring(whatGroupNames[group].label);
    return isCurrentFolder ? labelText(KORVEX::what::CurrDir(label, path))
                           : labelText(KORVEX::what::NotcurrDir(label, path));
}

std::u16string shownName(const std::u16string& name, bool keepsFirstCharacter) {
    std::u16string stem =
        fl::filesystem::detail::extract_stem(fl::filesystem::detail::make_native_form(name, true));
    if (!keepsFirstCharacter) stem.erase(0, stem.size() - withoutMark(stem).size());
    return stem;
}

}  // namespace

void showFolderContents(WhatFolderContents& contents, bool isCurrentFolder) {
    classifyEntries(contents);
    bool isFirst = true;
    for (std::size_t group = 0; group < whatGroups; ++group) {
        if (contents.groups[group].empty()) continue;
        if (std::exchange(isFirst, false)) services::io::uout() << "\n";
        showGroup(contents, group, headerOf(group, contents.path, isCurrentFolder),
                  keepsFirstCharacter(group));
    }
    utPrintf("\n");
}

void showGroup(const WhatFolderContents& contents, std::size_t group, const std::u16string& header,
               bool keepsFirstCharacter) {
    std::vector<FileNameWithStatLight> shown;
    shown.reserve(contents.groups[group].size());
    for (const std::size_t member : contents.groups[group]) {
        const FileNameWithStatLight& entry = contents.entries[member];
        FileNameWithStatLight& row = shown.emplace_back();
        row.name = shownName(entry.name, keepsFirstCharacter);
        row.folder = entry.folder;
    }
    if (shown.empty()) return;
    // The header has no line end of its own: the columns begin with one.
    if (!header.empty()) services::io::uout() << std::left << header;
    printEntryColumns(shown);
}

}  // namespace korvex::filemanip
