// Stand-ins for the platform's clean-ups of path text, by the rules of Windows; those that change a path go
// into the log of `fakePlatform()`.
#include "platform/filesystem_shared.h"
#include "platform/storage_utility.h"
#include "platform/storage_vfs.h"
#include "runtime/paths/path_style.h"
#include "runtime/paths/path_text.h"
#include "tests/unit/filemanip/fake_platform_paths.h"

namespace paths = korvex::runtime::paths;

namespace {

constexpr paths::PathStyle windows = paths::PathStyle::windows;

using CleanUp = void (*)(std::u16string& path, paths::PathStyle style);

void cleanUp(const std::u16string& name, CleanUp change, std::u16string& path) {
    korvex::filemanip::tests::fakePlatform().calls.push_back(name + u'(' + path + u')');
    change(path, windows);
}

}  // namespace

namespace filesystemSharedFcns {

bool isPathSeparator(const char16_t& unit) noexcept { return paths::isSeparator(unit, windows); }

bool containsDotOrDotDotExpression(const std::u16string& text) {
    return paths::hasDotComponent(text, windows);
}

void replaceSlashesOnWindows(std::u16string& path) {
    cleanUp(u"replaceSlashesOnWindows", paths::replaceSlashes, path);
}

void handleSingleDots(std::u16string& path) { cleanUp(u"handleSingleDots", paths::removeSingleDots, path); }

void handleDotDots(std::u16string& path) { cleanUp(u"handleDotDots", paths::resolveDoubleDots, path); }

}  // namespace filesystemSharedFcns

namespace foundation::storage::utility {

void normalizeURL(std::u16string&) {}

void convertWindowsBackslashes(std::u16string& text) {
    cleanUp(u"convertWindowsBackslashes", paths::replaceBackslashes, text);
}

void handleWindowsTrailingDotsAndSpaces(std::u16string& path) {
    cleanUp(u"handleWindowsTrailingDotsAndSpaces", paths::dropTrailingDotsAndSpaces, path);
}

}  // namespace foundation::storage::utility
