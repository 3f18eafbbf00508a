// Windows: what stands behind the standard streams, and the interrupt key.
#include <windows.h>

#include "runtime/interpreter/interrupts.h"
#include "runtime/process/process.h"
#include "runtime/process/windows/wide_text.h"

namespace korvex::runtime::process {
namespace {

HANDLE handleOf(Stream stream) noexcept {
    switch (stream) {
        case Stream::input: return ::GetStdHandle(STD_INPUT_HANDLE);
        case Stream::output: return ::GetStdHandle(STD_OUTPUT_HANDLE);
        case Stream::error: return ::GetStdHandle(STD_ERROR_HANDLE);
    }
    return nullptr;
}

BOOL WINAPI onInterruptKey(DWORD event) {
    if (event != CTRL_C_EVENT) return FALSE;
    interpreter::raiseInterrupt();
    return TRUE;
}

}  // namespace

bool isTerminal(Stream stream) noexcept {
    DWORD mode = 0;
    return ::GetConsoleMode(handleOf(stream), &mode) != 0;
}

std::optional<unsigned> terminalColumns(Stream stream) noexcept {
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    if (!::GetConsoleScreenBufferInfo(handleOf(stream), &screen)) return std::nullopt;
    const int columns = screen.srWindow.Right - screen.srWindow.Left + 1;
    if (columns <= 0) return std::nullopt;
    return static_cast<unsigned>(columns);
}

bool waitForInput() noexcept {
    constexpr DWORD lookAgainAfter = 200;  // milliseconds
    for (;;) {
        if (interpreter::isInterruptPending()) return false;
        // Where waiting fails, the read itself will tell.
        if (::WaitForSingleObject(handleOf(Stream::input), lookAgainAfter) != WAIT_TIMEOUT) return true;
    }
}

void handleInterruptKey() {
    if (!::SetConsoleCtrlHandler(onInterruptKey, TRUE)) raiseSystemError(::GetLastError());
}

// The system ends a read from the console by itself when the key is pressed.
InterruptibleReading::InterruptibleReading() noexcept = default;
InterruptibleReading::~InterruptibleReading() = default;

}  // namespace korvex::runtime::process
