// From statements and blocks to those who run them.
#include "host/kwsh/session.h"

#include "host/kwsh/block_runner.h"
#include "host/kwsh/host_commands.h"

namespace korvex::host {

bool isCommandName(std::string_view name) {
    return isModuleCommand(name) || findHostCommand(name) != nullptr;
}

Session::Session(Presenter& presenter, CommandLookup commands)
    : presenter_(presenter),
      commands_(std::move(commands)),
      statements_(presenter_, workspace_, commands_),
      earlierOutput_(runtime::interpreter::setOutputReceiver(
          [this](std::u16string_view text) { presenter_.printed(text); })),
      earlierWarnings_(runtime::interpreter::setWarningReceiver(
          [this](const runtime::interpreter::Warning& warning) { presenter_.warned(warning); })),
      earlierWatcher_(runtime::dispatcher::watchEvents(
          [this](const runtime::dispatcher::EnvironmentEvent& event) { presenter_.told(event); })) {}

Session::~Session() {
    runtime::interpreter::setOutputReceiver(std::move(earlierOutput_));
    runtime::interpreter::setWarningReceiver(std::move(earlierWarnings_));
    runtime::dispatcher::watchEvents(std::move(earlierWatcher_));
}

bool Session::run(const SourceStatement& statement) {
    const auto* block = std::get_if<std::shared_ptr<const BlockStatement>>(&statement.content);
    if (block == nullptr) {
        return !statements_.tell(
            statement, [&] { statements_.perform(actionOf(statement), !statement.isDisplaySuppressed); });
    }
    presenter_.blockBegins(statement);
    const bool succeeded = !BlockRunner(statements_, workspace_).run(**block);
    presenter_.blockEnds();
    return succeeded;
}

RunResult Session::runAll(StatementReader& reader, bool stopsAtFailure) {
    RunResult result;
    while (const std::optional<ScriptItem> item = reader.next()) {
        if (const auto* line = std::get_if<PlainLine>(&*item)) {
            presenter_.plainLine(line->text);
            continue;
        }
        if (!run(std::get<SourceStatement>(*item))) {
            result.hasFailed = true;
            if (isInterrupt(workspace_.lastFailure)) result.end = RunEnd::atInterrupt;
            if (stopsAtFailure) result.end = RunEnd::atFailure;
        }
        if (isExitRequested()) result.end = RunEnd::atExit;
        if (result.end != RunEnd::atEnd) break;
    }
    return result;
}

}  // namespace korvex::host
