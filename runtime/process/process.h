// The process around the environment: its arguments, where its files lie, shared libraries, the terminal, the
// system's shell.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::runtime::process {

/// The arguments of `main` without the program's name, in the bytes of runtime/text/encoding.h.
std::vector<std::string> programArguments(int count, char* arguments[]);

/// The folder that holds the running program, links resolved. Native path.
std::u16string programFolder();

/// The folder for the user's settings of this environment when none is named. Native path.
std::u16string defaultConfigurationFolder();

/// The value of an environment variable, or nothing.
std::optional<std::u16string> environmentVariable(const char* name);

/// A shared library, loaded as long as the object lives.
class SharedLibrary {
public:
    /// Raises `std::runtime_error` with the system's words when it cannot be loaded.
    explicit SharedLibrary(const std::u16string& path);
    ~SharedLibrary();
    SharedLibrary(SharedLibrary&&) noexcept;
    SharedLibrary& operator=(SharedLibrary&&) noexcept;

    /// The address of an exported symbol; null when there is none.
    void* symbol(const char* name) const noexcept;
    /// The file name of a library of this name on this platform, as "libkwfilemanip.so".
    static std::u16string fileName(const std::u16string& name);

private:
    void* handle_ = nullptr;
};

enum class Stream { input, output, error };
bool isTerminal(Stream stream) noexcept;
/// Columns of the terminal behind a stream, or nothing.
std::optional<unsigned> terminalColumns(Stream stream) noexcept;

/// Waits until a read of standard input would not wait. False when an interrupt is pending, before the wait
/// or during it.
bool waitForInput() noexcept;

/// Ctrl-C raises the pending-interrupt flag from now on and does not kill the process. What is being written
/// is written to its end.
void handleInterruptKey();

/// As long as the object lives, Ctrl-C ends a read that waits, as at its end of input.
class InterruptibleReading {
public:
    InterruptibleReading() noexcept;
    ~InterruptibleReading();
    InterruptibleReading(const InterruptibleReading&) = delete;
    InterruptibleReading& operator=(const InterruptibleReading&) = delete;
};

/// What a command of the shell reads as its standard input.
enum class ShellInput { empty, ofThisProcess };

/// Runs a command line in the system's shell, in `folder`, its standard output and standard error handed to
/// `receive` as they come, in bytes. Gives its exit status, 128 and the signal's number when a signal ended
/// it. Raises `std::runtime_error` when it cannot be started. An interrupt is the shell's to obey; what it
/// leaves running in the background is not waited for then.
int runShellCommand(const std::u16string& command, const std::u16string& folder,
                    const std::function<void(std::string_view)>& receive,
                    ShellInput input = ShellInput::empty);

/// Whole content of a file in bytes, for the host's scripts. Raises `std::runtime_error` with the system's
/// words.
std::string readFile(const std::u16string& path);

/// A new, empty folder of the user's own among the system's temporary ones. Native path. Raises
/// `std::runtime_error` with the system's words.
std::u16string makeTemporaryFolder();

}  // namespace korvex::runtime::process
