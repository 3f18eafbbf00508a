// Windows: reading a whole file.
#include <windows.h>

#include <array>

#include "runtime/process/process.h"
#include "runtime/process/windows/handle.h"
#include "runtime/process/windows/wide_text.h"

namespace korvex::runtime::process {

std::string readFile(const std::u16string& path) {
    const Handle file(::CreateFileW(toWide(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.isOpen()) raiseSystemError(::GetLastError());

    std::string content;
    std::array<char, 65536> block{};
    for (;;) {
        DWORD count = 0;
        if (!::ReadFile(file.get(), block.data(), static_cast<DWORD>(block.size()), &count, nullptr)) {
            raiseSystemError(::GetLastError());
        }
        if (count == 0) return content;
        content.append(block.data(), count);
    }
}

}  // namespace korvex::runtime::process
