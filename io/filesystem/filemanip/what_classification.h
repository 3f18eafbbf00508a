// Which of a folder's entries are files of the environment's own kinds, told by their names alone.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/kx.h"
#include "platform/listing.h"

namespace korvex::filemanip {

/// The groups, in the order of the display and of the structure's fields.
enum WhatGroup : std::size_t {
    codeGroup,
    klappGroup,
    kappGroup,
    liveCodeGroup,
    dataGroup,
    compiledGroup,
    kdlGroup,
    zlxGroup,
    zfxGroup,
    protectedGroup,
    classGroup,
    namespaceGroup,
};
inline constexpr std::size_t whatGroups = 12;

struct WhatGroupNames {
    const char* field;
    const char* label;
};

/// By group. The capital F, and a field that is not named as its label, are on purpose: scripts read both.
inline constexpr std::array<WhatGroupNames, whatGroups> whatGroupNames{{
    {"k", "KORVEX Code files"},
    {"klapp", "KLAPP-files"},
    {"kapp", "KAPP-files"},
    {"klx", "KORVEX Live Code"},
    {"kat", "KAT-files"},
    {"kex", "KEX-files"},
    {"kdl", "KDL-files"},
    {"zlx", "ZLX-files"},
    {"zfx", "ZFX-Files"},
    {"p", "P-files"},
    {"classes", "Classes"},
    {"packages", "Namespaces"},
}};

/// Whether the names of a group are shown as they are; those of classes and namespaces lose their first unit.
constexpr bool keepsFirstCharacter(std::size_t group) noexcept { return group <= protectedGroup; }

/// One folder on its way into the output.
struct WhatFolderContents {
    /// Everything in the folder, in the lister's order, which is the order of the output.
    std::vector<FileNameWithStatLight> entries;
    /// The members of each group, by their places in `entries`.
    std::array<std::vector<std::size_t>, whatGroups> groups;
    /// The folder, as the output shows it.
    std::u16string path;
    /// How it was named: by a network path, by a location.
    bool isUNC = false;
    bool isIRI = false;
};

/// Where the identifier ends that a text begins with: a letter, and letters, digits and `_` behind it. None
/// when it begins with no letter.
std::optional<std::size_t> scanIdentifier(std::u16string_view text);

/// Adds each entry to the group that it belongs to, if any. One pass over the names; no file is touched.
void classifyEntries(WhatFolderContents& contents);

/// A cell column of the names of a group, extensions included; 0-by-1 for an empty group.
/// `keepsFirstCharacter` false drops the "@" or "+" in front.
matrix::ArrayOwner groupToCell(const WhatFolderContents& contents, std::size_t group,
                               bool keepsFirstCharacter);

/// A name without the "@" or "+" that tells a class or a namespace.
std::u16string_view withoutMark(std::u16string_view name);

}  // namespace korvex::filemanip
