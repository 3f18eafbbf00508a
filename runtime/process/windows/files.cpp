// Windows: reading a whole file, and a folder for scratch work.
#include <windows.h>

#include <array>

#include "runtime/process/process.h"
#include "runtime/process/windows/handle.h"
#include "runtime/process/windows/wide_text.h"

namespace korvex::runtime::process {

std::u16string makeTemporaryFolder() {
    std::array<wchar_t, MAX_PATH + 1> parent{};
    if (::GetTempPathW(static_cast<DWORD>(parent.size()), parent.data()) == 0) raiseSystemError(::GetLastError());
    for (DWORD attempt = ::GetTickCount();; ++attempt) {
        const std::wstring path = parent.data() + (L"kwsh-" + std::to_wstring(attempt));
        if (::CreateDirectoryW(path.c_str(), nullptr) != 0) return fromWide(path);
        if (::GetLastError() != ERROR_ALREADY_EXISTS) raiseSystemError(::GetLastError());
    }
}

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
