// The shell's file operation where the desktop has none: files go to the desktop's trash.
#include "platform/shell_file_operation.h"

#include <optional>
#include <string>

#include "runtime/text/encoding.h"
#include "runtime/trash/posix/desktop_trash.h"

namespace {

constexpr int notDone = 1;

bool recycle(const std::u16string& path) {
    const std::optional<std::string> bytes = korvex::runtime::text::toBytes(path);
    return bytes && korvex::runtime::trash::moveToDesktopTrash(*bytes);
}

}  // namespace

int SHFileOperationW(SHFILEOPSTRUCTW* operation) {
    constexpr unsigned short needed = FOF_ALLOWUNDO | FOF_FILESONLY;
    if (operation->wFunc != FO_DELETE || (operation->fFlags & needed) != needed) return notDone;
    if (operation->pFrom == nullptr) return notDone;
    for (const char16_t* next = operation->pFrom; *next != u'\0';) {
        const std::u16string path(next);
        if (!recycle(path)) return notDone;
        next += path.size() + 1;
    }
    return 0;
}
