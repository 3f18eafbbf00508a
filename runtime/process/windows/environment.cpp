// Windows: the program's arguments, its folder, the user's folders, environment variables.
#include <windows.h>

#include <shellapi.h>

#include <memory>

#include "runtime/process/process.h"
#include "runtime/process/windows/wide_text.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::process {
namespace {

struct LocalMemoryDeleter {
    void operator()(wchar_t** memory) const noexcept { ::LocalFree(memory); }
};

std::optional<std::u16string> environmentVariable(const wchar_t* name) {
    std::wstring value(256, L'\0');
    for (;;) {
        ::SetLastError(ERROR_SUCCESS);
        const DWORD length = ::GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size()));
        if (length == 0 && ::GetLastError() != ERROR_SUCCESS) return std::nullopt;
        if (length < value.size()) {
            value.resize(length);
            return fromWide(value);
        }
        value.resize(length);
    }
}

}  // namespace

// The arguments of main are in the system's code page, which does not hold every name.
std::vector<std::string> programArguments(int, char*[]) {
    int count = 0;
    const std::unique_ptr<wchar_t*, LocalMemoryDeleter> words(
        ::CommandLineToArgvW(::GetCommandLineW(), &count));
    if (!words) raiseSystemError(::GetLastError());
    std::vector<std::string> arguments;
    for (int index = 1; index < count; ++index) {
        arguments.push_back(text::toDisplayBytes(fromWide(words.get()[index])));
    }
    return arguments;
}

std::u16string programFolder() {
    std::wstring path(256, L'\0');
    for (;;) {
        const DWORD length = ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) raiseSystemError(::GetLastError());
        if (length < path.size()) {
            path.resize(length);
            break;
        }
        path.resize(2 * path.size());
    }
    return fromWide(path.substr(0, path.find_last_of(L"\\/")));
}

std::u16string defaultConfigurationFolder() {
    const std::optional<std::u16string> folder = environmentVariable(L"APPDATA");
    return folder && !folder->empty() ? *folder + u"\\korvex" : programFolder() + u"\\korvex";
}

std::optional<std::u16string> environmentVariable(const char* name) {
    return environmentVariable(toWide(text::fromBytes(name)).c_str());
}

}  // namespace korvex::runtime::process
