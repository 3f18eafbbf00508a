// The printed form of `what`: for each folder, its groups in columns.
#pragma once

#include <string>

#include "io/filesystem/filemanip/what_classification.h"

namespace korvex::filemanip {

/// Classifies the entries and prints each group that is not empty under a header of its own, which names the
/// kind and the folder. A folder without any of them is a line end.
void showFolderContents(WhatFolderContents& contents, bool isCurrentFolder);

/// Prints one group: the header, and the names without their extensions; nothing for an empty group.
void showGroup(const WhatFolderContents& contents, std::size_t group, const std::u16string& header,
               bool keepsFirstCharacter);

}  // namespace korvex::filemanip
