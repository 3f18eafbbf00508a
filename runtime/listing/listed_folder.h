// What a walk has found: the folders that it visited, each with its entries. The folder texts are missing;
// they come with the delivery.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/listing.h"
#include "runtime/listing/glob_pattern.h"

namespace korvex::runtime::listing {

struct ListedFolder {
    ListedFolder() = default;
    ListedFolder(std::u16string folderName, GlobPattern::Positions folderPositions)
        : name(std::move(folderName)), positions(std::move(folderPositions)) {}
    /// Takes the tree down without recursion, whatever its depth.
    ~ListedFolder();
    ListedFolder(const ListedFolder&) = delete;
    ListedFolder& operator=(const ListedFolder&) = delete;

    /// Puts entries and folders in the order of their names.
    void sort();

    /// Of the top folder, nothing.
    std::u16string name;
    /// Where the pattern stands in this folder.
    GlobPattern::Positions positions;
    /// False for a folder that has gone meanwhile or may not be read: nothing is known of what it holds.
    bool wasListed = false;
    std::vector<FileNameWithStatLight> entries;
    std::vector<std::unique_ptr<ListedFolder>> folders;
};

}  // namespace korvex::runtime::listing
