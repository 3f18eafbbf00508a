// The printed form of a listing: names in columns, folder by folder.
#include "io/filesystem/filemanip/dir_listing_display.h"

#include <algorithm>
#include <cstddef>
#include <ostream>

#include "io/filesystem/filemanip/command_frame.h"
#include "platform/dispatcher.h"
#include "platform/message_identifiers.h"
#include "platform/path_management.h"
#include "platform/services_io.h"

namespace korvex::filemanip {

using services::io::operator<<;

namespace {

constexpr std::size_t blanksBetweenColumns = 2;

std::u16string headerOf(const std::u16string& folder, const std::u16string& text) {
    const bool isCurrentFolder = folder == currentFolderText() && text.empty();
    return isCurrentFolder ? labelText(KORVEX::dir::filesFoundInCurrentFolder())
                           : labelText(KORVEX::dir::filesFoundIn(folder));
}

void printHeader(const std::u16string& header) { services::io::uout() << std::left << header << std::endl; }

std::size_t longestName(const std::vector<FileNameWithStatLight>& entries) {
    std::size_t longest = 0;
    for (const FileNameWithStatLight& entry : entries)
        longest = std::max(longest, entry.name.size());
    return longest;
}

}  // namespace

std::u16string currentFolderText() {
    const foundation::storage::vfs::Folder folder =
        Kdispatcher::getDispatcher().GetCurrentWorkingFolder().get();
    return Velquist::PathManagement::GetStringFromIRI(folder.getLocation());
}

void displayWithHeaders(std::vector<FileNameWithStatLight>& entries, const std::u16string& text,
                        bool isEmpty) {
    isEmpty ? showEmptyLocation(text, true) : showFolderListing(entries, text, true);
}

void displayPlain(std::vector<FileNameWithStatLight>& entries, const std::u16string& text, bool isEmpty) {
    isEmpty ? showEmptyLocation(text, false) : showFolderListing(entries, text, false);
}

void showEmptyLocation(const std::u16string& text, bool withHeader) {
    if (withHeader) printHeader(labelText(KORVEX::dir::filesFoundIn(text)));
    services::io::uout() << "\n" << std::left << labelText(KORVEX::dir::locationEmpty()) << std::endl << "\n";
}

void showFolderListing(std::vector<FileNameWithStatLight>& entries, const std::u16string& text,
                       bool withHeader) {
    if (entries.empty()) return;
    if (withHeader) printHeader(headerOf(*entries.front().folder, text));
    // A lister that delivers them in order is not made to pay for the sort.
    if (!std::ranges::is_sorted(entries, {}, &FileNameWithStatLight::name)) {
        std::ranges::sort(entries, {}, &FileNameWithStatLight::name);
    }
    printEntryColumns(entries);
}

void printEntryColumns(const std::vector<FileNameWithStatLight>& entries) {
    const std::size_t width = longestName(entries) + blanksBetweenColumns;
    const std::size_t count = entries.size();
    const std::size_t window = std::max<std::size_t>(ioGetNumWindowColumns(), 1);
    const std::size_t columns = std::max<std::size_t>((window - 1) / width, 1);
    // The one row more is on purpose, also where the names fill the rows evenly.
    const std::size_t rows = count / columns + 1;

    std::u16string text;
    text.reserve((width + 1) * rows * columns);
    for (std::size_t row = 0; row < rows; ++row) {
        for (std::size_t k = row; k < count; k += rows) {
            const std::u16string& name = entries[k].name;
            text += name;
            text.append(width - name.size(), u' ');
        }
        text += u'\n';
    }
    services::io::uout() << "\n" << text << std::endl;
}

}  // namespace korvex::filemanip
