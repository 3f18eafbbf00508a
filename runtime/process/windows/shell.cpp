// Windows: a command line in the command interpreter, its output through a pipe.
#include <windows.h>

#include <array>

#include "runtime/process/process.h"
#include "runtime/process/windows/handle.h"
#include "runtime/process/windows/wide_text.h"

namespace korvex::runtime::process {
namespace {

struct Pipe {
    Handle readEnd;
    Handle writeEnd;
};

/// Only the write end is handed on to the new process.
Pipe openPipe() {
    SECURITY_ATTRIBUTES inherited{};
    inherited.nLength = sizeof inherited;
    inherited.bInheritHandle = TRUE;
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    if (!::CreatePipe(&readEnd, &writeEnd, &inherited, 0)) raiseSystemError(::GetLastError());
    Pipe pipe{Handle(readEnd), Handle(writeEnd)};
    if (!::SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0)) raiseSystemError(::GetLastError());
    return pipe;
}

/// A handle that the new process may have.
Handle openInput(ShellInput input) {
    if (input == ShellInput::ofThisProcess) {
        HANDLE inherited = nullptr;
        const HANDLE self = ::GetCurrentProcess();
        if (!::DuplicateHandle(self, ::GetStdHandle(STD_INPUT_HANDLE), self, &inherited, 0, TRUE,
                               DUPLICATE_SAME_ACCESS)) {
            raiseSystemError(::GetLastError());
        }
        return Handle(inherited);
    }
    SECURITY_ATTRIBUTES inherited{};
    inherited.nLength = sizeof inherited;
    inherited.bInheritHandle = TRUE;
    Handle nothing(::CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                                 OPEN_EXISTING, 0, nullptr));
    if (!nothing.isOpen()) raiseSystemError(::GetLastError());
    return nothing;
}

Handle startShell(const std::u16string& command, const std::u16string& folder, const Handle& input,
                  const Handle& output) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.get();
    startup.hStdOutput = output.get();
    startup.hStdError = output.get();
    // The switch makes the interpreter take everything between the first and the last quote as the command.
    std::wstring commandLine = toWide(u"cmd.exe /d /s /c \"" + command + u"\"");
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr,
                          toWide(folder).c_str(), &startup, &process)) {
        raiseSystemError(::GetLastError());
    }
    const Handle thread(process.hThread);
    return Handle(process.hProcess);
}

}  // namespace

int runShellCommand(const std::u16string& command, const std::u16string& folder,
                    const std::function<void(std::string_view)>& receive, ShellInput input) {
    Pipe pipe = openPipe();
    const Handle shell = startShell(command, folder, openInput(input), pipe.writeEnd);
    pipe.writeEnd.close();

    std::array<char, 4096> block{};
    DWORD count = 0;
    while (::ReadFile(pipe.readEnd.get(), block.data(), static_cast<DWORD>(block.size()), &count, nullptr) &&
           count > 0) {
        receive({block.data(), count});
    }
    ::WaitForSingleObject(shell.get(), INFINITE);
    DWORD status = 0;
    if (!::GetExitCodeProcess(shell.get(), &status)) raiseSystemError(::GetLastError());
    return static_cast<int>(status);
}

}  // namespace korvex::runtime::process
