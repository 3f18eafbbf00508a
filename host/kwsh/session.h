// Runs statements and tells a presenter what each one gave.
#pragma once

#include "host/kwsh/command_module.h"
#include "host/kwsh/presenter.h"
#include "host/kwsh/statement_reader.h"
#include "host/kwsh/statement_runner.h"
#include "host/kwsh/workspace.h"
#include "runtime/interpreter/output.h"

namespace korvex::host {

/// How a run of statements ended.
enum class RunEnd { atEnd, atExit, atFailure, atInterrupt };

struct RunResult {
    RunEnd end = RunEnd::atEnd;
    bool hasFailed = false;
};

class Session {
public:
    /// Takes the environment's output stream, warnings and events for as long as it lives.
    Session(Presenter& presenter, CommandLookup commands);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Runs one statement, which may be a block. False when it failed. Never raises for what the statement
    /// does: an error ends in the presenter. A pending interrupt is taken at the end and makes it fail.
    bool run(const SourceStatement& statement);

    /// Runs all that the reader gives, up to `exit`, an interrupt, or, when asked to, the first failure.
    RunResult runAll(StatementReader& reader, bool stopsAtFailure);

    bool isExitRequested() const noexcept { return workspace_.isExitRequested; }
    const Workspace& workspace() const noexcept { return workspace_; }
    /// Whether what the host's own commands print may have colours.
    void setOutputColoured(bool isColoured) noexcept { workspace_.isOutputColoured = isColoured; }

private:
    Presenter& presenter_;
    CommandLookup commands_;
    Workspace workspace_;
    StatementRunner statements_;
    runtime::interpreter::OutputReceiver earlierOutput_;
    runtime::interpreter::WarningReceiver earlierWarnings_;
    runtime::dispatcher::EventWatcher earlierWatcher_;
};

/// Commands of the module and of the host: the names that have the command form.
bool isCommandName(std::string_view name);

}  // namespace korvex::host
