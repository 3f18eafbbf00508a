// Web locations: how a text is told to be one, and how it is made to parse.
#include "io/filesystem/filemanip/existence_queries_web_location.h"

#include "platform/filesystem_core.h"
#include "platform/storage_vfs.h"

namespace korvex::filemanip {

namespace vfs = foundation::storage::vfs;

bool isHttpLocation(std::u16string_view text) {
    constexpr std::u16string_view longestPrefix = u"https://";
    std::u16string beginning(text.substr(0, longestPrefix.size()));
    korvex::io::filesystem::core::makeLowerCase(beginning);
    return beginning.starts_with(u"http://") || beginning.starts_with(longestPrefix);
}

std::u16string normalizeHttpLocation(std::u16string_view text) {
    std::u16string location(text);
    const bool mayGetSlash = !text.ends_with(u'/') && !text.ends_with(u'*');
    try {
        (void)vfs::AbsoluteIRI(location);
        return location;
    } catch (const vfs::InvalidIRIException&) {
        if (!mayGetSlash) throw;
    }
    location += u'/';
    (void)vfs::AbsoluteIRI(location);
    return location;
}

}  // namespace korvex::filemanip
