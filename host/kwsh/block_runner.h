// Runs blocks: which of their statements, how often, and what becomes of failures.
#pragma once

#include <optional>

#include "host/kwsh/block.h"
#include "host/kwsh/statement_runner.h"
#include "host/kwsh/workspace.h"

namespace korvex::host {

class BlockRunner {
public:
    BlockRunner(StatementRunner& statements, Workspace& workspace)
        : statements_(statements), workspace_(workspace) {}

    /// Runs a statement of a block, or a whole block. Gives the failure that has ended it, told already, and
    /// nothing when it went to its end or to `exit`.
    std::optional<Failure> run(const BlockStatement& statement);

private:
    std::optional<Failure> runBody(const BlockBody& body);
    std::optional<Failure> runIf(const IfBlock& block);
    std::optional<Failure> runFor(const ForBlock& block);
    std::optional<Failure> runTry(const TryBlock& block);

    StatementRunner& statements_;
    Workspace& workspace_;
};

}  // namespace korvex::host
