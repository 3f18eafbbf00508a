// 16-bit text and the wide characters of the system's calls: the same units under two types.
#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace korvex::runtime::process {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

inline std::wstring toWide(std::u16string_view text) { return std::wstring(text.begin(), text.end()); }

inline std::u16string fromWide(std::wstring_view text) { return std::u16string(text.begin(), text.end()); }

[[noreturn]] inline void raiseSystemError(DWORD error) {
    throw std::runtime_error(std::system_category().message(static_cast<int>(error)));
}

}  // namespace korvex::runtime::process
