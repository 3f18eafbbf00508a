// if, for, try.
#include "host/kwsh/block_runner.h"

#include <array>

#include "host/kwsh/indexing.h"
#include "host/kwsh/operators.h"

namespace korvex::host {
namespace {

/// What the variable of a `catch` holds.
Value failureValue(const Failure& failure) {
    constexpr std::array fields = {"identifier", "message"};
    Value value(kxCreateStructMatrix(1, 1, static_cast<int>(fields.size()), fields.data()));
    kxSetFieldByNumber(value.get(), 0, 0, makeText(widen(failure.identifier)).release());
    kxSetFieldByNumber(value.get(), 0, 1, makeText(failure.text).release());
    return value;
}

}  // namespace

std::optional<Failure> BlockRunner::run(const BlockStatement& statement) {
    if (const auto* choice = std::get_if<IfBlock>(&statement.action)) return runIf(*choice);
    if (const auto* loop = std::get_if<ForBlock>(&statement.action)) return runFor(*loop);
    if (const auto* attempt = std::get_if<TryBlock>(&statement.action)) return runTry(*attempt);
    return statements_.tell(statement.source, [&] {
        statements_.perform(std::get<SimpleAction>(statement.action), !statement.source.isDisplaySuppressed);
    });
}

std::optional<Failure> BlockRunner::runBody(const BlockBody& body) {
    for (const BlockStatement& statement : body) {
        std::optional<Failure> failure = run(statement);
        if (failure || workspace_.isExitRequested) return failure;
    }
    return std::nullopt;
}

std::optional<Failure> BlockRunner::runIf(const IfBlock& block) {
    for (const IfBranch& branch : block.branches) {
        bool isTaken = !branch.condition;
        if (branch.condition) {
            std::optional<Failure> failure = statements_.tell(
                branch.head, [&] { isTaken = isTrue(statements_.valueOf(*branch.condition).get()); });
            if (failure) return failure;
        }
        if (isTaken) return runBody(branch.body);
    }
    return std::nullopt;
}

std::optional<Failure> BlockRunner::runFor(const ForBlock& block) {
    Value values;
    std::optional<Failure> failure =
        statements_.tell(block.head, [&] { values = statements_.valueOf(block.loop.values); });
    if (failure) return failure;
    // Columns of no rows hold nothing that a body could work on.
    const std::size_t columns = kxIsEmpty(values.get()) ? 0 : kxGetN(values.get());
    for (std::size_t column = 0; column < columns && !workspace_.isExitRequested; ++column) {
        failure = statements_.tell(
            block.head, [&] { workspace_.variables[block.loop.variable] = columnAt(values.get(), column); });
        if (!failure) failure = runBody(block.body);
        if (failure) return failure;
    }
    return std::nullopt;
}

std::optional<Failure> BlockRunner::runTry(const TryBlock& block) {
    std::optional<Failure> failure;
    {
        const StatementRunner::CatchingScope catching(statements_);
        failure = runBody(block.body);
    }
    if (!failure || isInterrupt(*failure)) return failure;
    if (block.failureVariable) workspace_.variables[*block.failureVariable] = failureValue(*failure);
    return runBody(block.handler);
}

}  // namespace korvex::host
