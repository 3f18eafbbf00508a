// Which of a folder's entries are files of the environment's own kinds. The order of the tests is the
// command's contract.
#include "io/filesystem/filemanip/what_classification.h"

#include <algorithm>

#include "platform/character_classes.h"
#include "platform/foundation_filesystem.h"

namespace korvex::filemanip {

namespace {

constexpr std::size_t noGroup = whatGroups;

/// Data files: the one kind whose name need not be an identifier.
constexpr std::u16string_view dataExtension = u".kat";

struct ExtensionGroup {
    std::u16string_view extension;
    WhatGroup group;
};

/// With regard to case on every platform. Compiled modules are those of the one platform that the module is
/// built for; those of others are in no group.
constexpr std::array<ExtensionGroup, 9> extensionGroups{{
    {u".k", codeGroup},
    {u".klapp", klappGroup},
    {u".kapp", kappGroup},
    {u".klx", liveCodeGroup},
    {u".p", protectedGroup},
    {u".kdl", kdlGroup},
    {u".zlx", zlxGroup},
    {u".zfx", zfxGroup},
    {u".kexw64", compiledGroup},
}};

std::size_t groupOfMark(std::u16string_view name) {
    if (name.starts_with(u'+')) return namespaceGroup;
    if (name.starts_with(u'@')) return classGroup;
    return noGroup;
}

bool isIdentifier(std::u16string_view text) { return scanIdentifier(text) == text.size(); }

std::size_t groupOfExtension(std::u16string_view extension) {
    const auto row = std::ranges::find(extensionGroups, extension, &ExtensionGroup::extension);
    return row == extensionGroups.end() ? noGroup : std::size_t{row->group};
}

std::size_t groupOf(const FileNameWithStatLight& entry) {
    const std::u16string& name = entry.name;
    const std::size_t candidate = groupOfMark(name);
    // On purpose not asked whether it is a folder: a file "@abc" is a class, too.
    if (candidate != noGroup && isIdentifier(withoutMark(name))) return candidate;

    std::u16string extension =
        fl::filesystem::detail::extract_extension(fl::filesystem::detail::make_native_form(name, true));
    if (extension.empty()) return noGroup;
    extension.insert(extension.begin(), u'.');
    if (entry.isDirectory) return noGroup;
    if (extension == dataExtension) return dataGroup;
    if (candidate != noGroup) return noGroup;

    const std::optional<std::size_t> end = scanIdentifier(name);
    if (!end || std::u16string_view(name).substr(*end) != extension) return noGroup;
    return groupOfExtension(extension);
}

}  // namespace

std::optional<std::size_t> scanIdentifier(std::u16string_view text) {
    if (text.empty() || !kwu_isalpha(text.front())) return std::nullopt;
    const auto isPart = [](char16_t unit) { return kwu_isalnum(unit) || unit == u'_'; };
    return static_cast<std::size_t>(std::ranges::find_if_not(text, isPart) - text.begin());
}

void classifyEntries(WhatFolderContents& contents) {
    for (std::size_t i = 0; i < contents.entries.size(); ++i) {
        const std::size_t group = groupOf(contents.entries[i]);
        if (group != noGroup) contents.groups[group].push_back(i);
    }
}

matrix::ArrayOwner groupToCell(const WhatFolderContents& contents, std::size_t group,
                               bool keepsFirstCharacter) {
    const std::vector<std::size_t>& members = contents.groups[group];
    matrix::ArrayOwner cell(kxCreateCellMatrix(members.size(), 1));
    for (std::size_t i = 0; i < members.size(); ++i) {
        const std::u16string_view name = contents.entries[members[i]].name;
        const std::u16string_view shown = keepsFirstCharacter ? name : withoutMark(name);
        kxSetCell(cell.get(), i, matrix::to_korvex(matrix::create(shown)));
    }
    return cell;
}

std::u16string_view withoutMark(std::u16string_view name) {
    const bool hasMark = name.starts_with(u'+') || name.starts_with(u'@');
    return hasMark ? name.substr(1) : name;
}

}  // namespace korvex::filemanip
