// Handing out what a walk has found, folder by folder.
#pragma once

#include <string>
#include <vector>

#include "platform/listing.h"
#include "runtime/listing/listed_folder.h"

namespace korvex::runtime::listing {

/// Where what was found goes.
struct Receiver {
    std::vector<FileNameWithStatLight>& entries;
    /// Null when the entries are wanted back.
    ListingDisplay display;
    /// What the display is told with a listing.
    const std::u16string& prefix;
};

/// Hands out the folders depth first, each before those in it, in the order of names; those that could not be
/// listed are passed over. `text` is the top folder's own, `separator` stands in front of a name behind it.
/// True when there was an entry, or an empty folder of which everything was asked. Raises what the display
/// raises.
bool deliver(std::unique_ptr<ListedFolder> top, const GlobPattern& pattern, const std::u16string& text,
             char16_t separator, const Receiver& receiver);

}  // namespace korvex::runtime::listing
