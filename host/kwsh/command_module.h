// The module of the file commands: which commands there are, under which names they are exported, and the
// loaded library.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/kx.h"
#include "runtime/process/process.h"

namespace korvex::host {

/// The signature of every command's entry. `plhs` has at least one slot, all null; `prhs` ends with a null
/// pointer.
using CommandEntry = void (*)(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);

/// The entry of a command, null for a name that is none. May raise when the command cannot be had.
using CommandLookup = std::function<CommandEntry(std::string_view name)>;

bool isModuleCommand(std::string_view name);
/// The names of all of them.
std::vector<std::string_view> moduleCommandNames();

class CommandModule {
public:
    /// Nothing is loaded before the first command is looked up. `programFolder` is where the program lies.
    explicit CommandModule(std::u16string programFolder) : programFolder_(std::move(programFolder)) {}
    ~CommandModule();
    CommandModule(const CommandModule&) = delete;
    CommandModule& operator=(const CommandModule&) = delete;

    /// Null for a name that is no command of the module. Raises `HostError`
    /// "commandNotAvailable".
    CommandEntry find(std::string_view name);

private:
    runtime::process::SharedLibrary& library();

    std::u16string programFolder_;
    std::optional<runtime::process::SharedLibrary> library_;
};

}  // namespace korvex::host
