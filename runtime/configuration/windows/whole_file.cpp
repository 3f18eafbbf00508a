// Windows: files that are read whole.
#include "runtime/configuration/whole_file.h"

#include <array>

#include "runtime/configuration/windows/system_calls.h"

namespace korvex::runtime::configuration {

using process::Handle;
using process::raiseSystemError;
using process::toWide;

std::optional<WholeFile> readWholeFile(const std::u16string& path) {
    const Handle file = windows::openExisting(toWide(path), GENERIC_READ);
    if (!file.isOpen()) return std::nullopt;
    windows::requireRegularFile(file.get());

    // The stamp is older than the content: a change in between is seen as one the next time.
    WholeFile whole{{}, windows::stampOf(file.get())};
    std::array<char, 16384> block{};
    for (;;) {
        DWORD count = 0;
        if (!::ReadFile(file.get(), block.data(), static_cast<DWORD>(block.size()), &count, nullptr)) {
            raiseSystemError(::GetLastError());
        }
        if (count == 0) return whole;
        whole.content.append(block.data(), count);
    }
}

std::optional<FileStamp> stampOfFile(const std::u16string& path) {
    const Handle file = windows::openExisting(toWide(path), FILE_READ_ATTRIBUTES);
    if (!file.isOpen()) return std::nullopt;
    return windows::stampOf(file.get());
}

}  // namespace korvex::runtime::configuration
