// Path text as the core library of the file commands judges it.
#include "platform/filesystem_core.h"
#include "runtime/paths/path_style.h"

namespace korvex::io::filesystem::core {

namespace paths = korvex::runtime::paths;

void makeLowerCase(std::u16string& text) {
    for (char16_t& unit : text) {
        if (unit >= u'A' && unit <= u'Z') unit = static_cast<char16_t>(unit + (u'a' - u'A'));
    }
}

bool isUNCPath(const std::u16string& text) { return paths::isUncPath(text, paths::nativeStyle); }

bool isLongPath(const std::u16string& text) { return paths::isLongPath(text, paths::nativeStyle); }

}  // namespace korvex::io::filesystem::core
