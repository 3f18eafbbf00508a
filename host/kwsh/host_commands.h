// Commands of the host itself: current folder, warnings, variables, help.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "host/kwsh/values.h"
#include "host/kwsh/workspace.h"

namespace korvex::host {

struct HostCommand {
    std::string_view name;
    int mostOutputs;
    std::size_t mostArguments;
    /// Gives the outputs that it sets; none when it prints instead.
    std::vector<Value> (*run)(Workspace& workspace, int outputs, std::span<const Value> arguments);
};

/// In the order of their names.
std::span<const HostCommand> hostCommands();

/// Null when there is none of that name.
const HostCommand* findHostCommand(std::string_view name);

/// Gives at least one slot, and `outputs` of them when more were asked for; null where nothing was set.
/// Raises the interpreter's count errors and `HostError`.
std::vector<Value> callHostCommand(const HostCommand& command, Workspace& workspace, int outputs,
                                   std::span<const Value> arguments);

}  // namespace korvex::host
