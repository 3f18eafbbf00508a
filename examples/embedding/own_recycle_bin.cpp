// platform/shell_file_operation.h, all of it: the recycle bin is a folder "bin" in the folder in which the
// host was started.
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/foundation_filesystem.h"
#include "platform/shell_file_operation.h"

namespace {

/// What lies in the bin already stays.
void moveIntoBin(const std::filesystem::path& file) {
    const std::filesystem::path bin = "bin";
    std::filesystem::create_directory(bin);
    std::filesystem::path place = bin / file.filename();
    while (std::filesystem::exists(std::filesystem::symlink_status(place)))
        place += "~";
    std::filesystem::rename(file, place);
}

bool isFolder(const std::filesystem::path& file) {
    return std::filesystem::is_directory(std::filesystem::symlink_status(file));
}

}  // namespace

int SHFileOperationW(SHFILEOPSTRUCTW* operation) {
    constexpr unsigned short needed = FOF_ALLOWUNDO | FOF_FILESONLY;
    constexpr int failure = 1;
    if (operation->wFunc != FO_DELETE || (operation->fFlags & needed) != needed) return failure;
    try {
        // Paths, each ended by a null, the list by one more.
        for (std::u16string_view path = operation->pFrom; !path.empty();
             path = path.data() + path.size() + 1) {
            const std::filesystem::path file = fl::filesystem::system_path(std::u16string(path));
            if (isFolder(file)) return failure;
            moveIntoBin(file);
        }
        return 0;
    } catch (const std::filesystem::filesystem_error&) {
        return failure;
    }
}
