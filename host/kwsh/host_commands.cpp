// The table of the host's commands and what they do.
#include "host/kwsh/host_commands.h"

#include <algorithm>
#include <array>
#include <limits>

#include "host/kwsh/command_arguments.h"
#include "host/kwsh/failure.h"
#include "host/kwsh/help.h"
#include "host/kwsh/package_commands.h"
#include "host/kwsh/path_commands.h"
#include "platform/storage_vfs.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/interpreter/output.h"
#include "runtime/interpreter/warnings.h"
#include "runtime/text/encoding.h"

namespace korvex::host {
namespace {

using runtime::interpreter::writeOutput;
namespace vfs = foundation::storage::vfs;

constexpr std::size_t noLimit = std::numeric_limits<std::size_t>::max();

/// Text and identifier as outputs, or printed when no output is asked for.
Outputs textAndIdentifier(const std::u16string& text, const std::string& identifier, int outputs) {
    if (outputs == 0) {
        if (!text.empty() || !identifier.empty()) {
            writeOutput(text + u"\n  (" + widen(identifier) + u")\n");
        }
        return {};
    }
    Outputs values = oneText(text);
    values.push_back(makeText(widen(identifier)));
    return values;
}

// ------------------------------------------------------------------------------------ current folder

Outputs printFolder(Workspace&, int outputs, Arguments) {
    const std::u16string folder = runtime::dispatcher::currentFolderPath();
    if (outputs > 0) return oneText(folder);
    writeOutput(folder + u"\n");
    return {};
}

Outputs changeFolder(Workspace& workspace, int outputs, Arguments arguments) {
    if (arguments.empty()) return printFolder(workspace, outputs, arguments);
    const std::u16string folder = textArgument(arguments[0]);
    requireNamed(folder, messages::folderNotNamed());
    try {
        runtime::dispatcher::setCurrentFolderPath(folder);
    } catch (const vfs::Exception& error) {
        throw HostError("cannotChangeFolder",
                        messages::cannotChangeFolder(folder, reasonWithFolder(error.getErrorCode())));
    }
    return outputs > 0 ? printFolder(workspace, outputs, {}) : Outputs();
}

// ------------------------------------------------------------------------------------ errors, warnings

Outputs switchWarning(Workspace&, int, Arguments arguments) {
    const std::u16string word = arguments.empty() ? std::u16string() : textArgument(arguments[0]);
    if (word != u"on" && word != u"off") throw HostError("badArgument", messages::warningForm());
    runtime::interpreter::setWarningEnabled(arguments.size() > 1 ? nameArgument(arguments[1]) : "all",
                                            word == u"on");
    return {};
}

Outputs showLastError(Workspace& workspace, int outputs, Arguments) {
    return textAndIdentifier(workspace.lastFailure.text, workspace.lastFailure.identifier, outputs);
}

Outputs showLastWarning(Workspace&, int outputs, Arguments) {
    const runtime::interpreter::Warning& warning = runtime::interpreter::lastWarning();
    return textAndIdentifier(warning.text, warning.identifier, outputs);
}

// ------------------------------------------------------------------------------------ variables

Outputs listVariables(Workspace& workspace, int, Arguments) {
    std::u16string names;
    for (const auto& [name, value] : workspace.variables)
        names += widen(name) + u"\n";
    writeOutput(names);
    return {};
}

Outputs clearVariables(Workspace& workspace, int, Arguments arguments) {
    if (arguments.empty()) workspace.variables.clear();
    for (const Value& argument : arguments)
        workspace.variables.erase(nameArgument(argument));
    return {};
}

// ------------------------------------------------------------------------------------ the rest

Outputs showHelp(Workspace& workspace, int, Arguments arguments) {
    const PageLook look{runtime::interpreter::windowColumns(), workspace.isOutputColoured};
    const std::string part = arguments.size() > 1 ? nameArgument(arguments[1]) : std::string();
    writeOutput(arguments.empty() ? helpOverview(look) : helpOf(nameArgument(arguments[0]), part, look));
    return {};
}

Outputs requestExit(Workspace& workspace, int, Arguments) {
    workspace.isExitRequested = true;
    return {};
}

constexpr std::array commands = {
    HostCommand{"addpath", 0, noLimit, addToPath},
    HostCommand{"cd", 1, 1, changeFolder},
    HostCommand{"clear", 0, noLimit, clearVariables},
    HostCommand{"exit", 0, 0, requestExit},
    HostCommand{"functions", 1, 0, showFunctions},
    HostCommand{"help", 0, 2, showHelp},
    HostCommand{"lasterr", 2, 0, showLastError},
    HostCommand{"lastwarn", 2, 0, showLastWarning},
    HostCommand{"load", 0, 1, loadFunction},
    HostCommand{"package", 1, 4, runPackage},
    HostCommand{"path", 1, 0, showPath},
    HostCommand{"pwd", 1, 0, printFolder},
    HostCommand{"quit", 0, 0, requestExit},
    HostCommand{"rmpath", 0, noLimit, removeFromPath},
    HostCommand{"warning", 0, 2, switchWarning},
    HostCommand{"who", 0, 0, listVariables},
};
static_assert(std::ranges::is_sorted(commands, {}, &HostCommand::name));

}  // namespace

std::span<const HostCommand> hostCommands() { return commands; }

const HostCommand* findHostCommand(std::string_view name) {
    const auto found = std::ranges::lower_bound(commands, name, {}, &HostCommand::name);
    return found != commands.end() && found->name == name ? &*found : nullptr;
}

std::vector<Value> callHostCommand(const HostCommand& command, Workspace& workspace, int outputs,
                                   std::span<const Value> arguments) {
    if (outputs > command.mostOutputs) {
        // No output at all is what a call in the middle of an expression meets: it has a clearer text.
        if (command.mostOutputs == 0 && outputs == 1) {
            throw HostError("outputNotSet", messages::givesNoValue(widen(command.name)));
        }
        matrix::detail::error_maxlhs();
    }
    if (arguments.size() > command.mostArguments) matrix::detail::error_maxrhs();
    std::vector<Value> values = command.run(workspace, outputs, arguments);
    values.resize(static_cast<std::size_t>(std::max(1, outputs)));
    return values;
}

}  // namespace korvex::host
