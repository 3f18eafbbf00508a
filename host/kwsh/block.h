// Statements that are ready to run, and the blocks that are made of them.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "host/kwsh/statement_reader.h"

namespace korvex::host {

using BlockBody = std::vector<BlockStatement>;

/// `if`, `elseif`, `else` with what stands behind it. An `else` has no condition.
struct IfBranch {
    SourceStatement head;
    std::optional<Expression> condition;
    BlockBody body;
};
struct IfBlock {
    std::vector<IfBranch> branches;
};

struct ForBlock {
    SourceStatement head;
    LoopHead loop;
    BlockBody body;
};

struct TryBlock {
    BlockBody body;
    /// Without a `catch` nothing is done about a failure, and it is over all the same.
    BlockBody handler;
    /// The variable that tells of the failure.
    std::optional<std::string> failureVariable;
};

using SimpleAction = std::variant<Assignment, Expression, CommandWords, ShellCommand>;

/// A statement inside of a block, or the block itself: then `source` is its first head.
struct BlockStatement {
    SourceStatement source;
    std::variant<SimpleAction, IfBlock, ForBlock, TryBlock> action;
};

/// What a statement that is no block does. Raises `HostError` when it cannot be read.
SimpleAction actionOf(const SourceStatement& statement);

}  // namespace korvex::host
