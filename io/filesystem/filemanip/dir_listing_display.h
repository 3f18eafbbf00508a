// The printed form of a listing: names in columns, folder by folder.
#pragma once

#include <string>
#include <vector>

#include "platform/listing.h"

namespace korvex::filemanip {

/// The text of the environment's current folder, asked for anew. Raises what the dispatcher raises.
std::u16string currentFolderText();

/// The two displays that a lister calls for each folder (platform/listing.h): with the folder's name above
/// its entries, and without. Both sort the entries.
void displayWithHeaders(std::vector<FileNameWithStatLight>& entries, const std::u16string& text,
                        bool isEmpty);
void displayPlain(std::vector<FileNameWithStatLight>& entries, const std::u16string& text, bool isEmpty);

/// Says that a folder holds nothing.
void showEmptyLocation(const std::u16string& text, bool withHeader);

/// Prints the entries of one folder, sorted; nothing at all without entries.
void showFolderListing(std::vector<FileNameWithStatLight>& entries, const std::u16string& text,
                       bool withHeader);

/// Prints the names down the columns, as many columns as the window holds, a blank line before and behind.
void printEntryColumns(const std::vector<FileNameWithStatLight>& entries);

}  // namespace korvex::filemanip
