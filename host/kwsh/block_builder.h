// Puts statements together to a block, as they come from the lines.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "host/kwsh/block.h"

namespace korvex::host {

/// What is wrong with one statement does not keep the others from being taken: the block ends where its `end`
/// stands, and not where it could not be understood any more.
class BlockBuilder {
public:
    /// A statement or a part of a block; the first one opens it.
    void add(SourceStatement statement);

    bool isOpen() const noexcept { return !open_.empty(); }

    /// The whole block. Raises `HostError` "KORVEX:host:syntax" for the first thing that was wrong, or when
    /// the block is still open.
    std::shared_ptr<const BlockStatement> take();

private:
    struct OpenBlock {
        BlockStatement statement;
        BlockWord word = BlockWord::ifWord;
        Position position;
        /// The `else` or `catch` was there.
        bool isInLastPart = false;
    };

    void addPart(SourceStatement statement);
    void addAction(SourceStatement statement);
    void open(SourceStatement head);
    void addBranch(SourceStatement head);
    void addHandler(const BlockPart& part);
    void close(const BlockPart& part);
    BlockBody& body();
    bool isInside(BlockWord word) const { return isOpen() && open_.back().word == word; }
    void refuse(const resource_core::BaseMsgID& message, const Position& position);
    template <class Step>
    void noteFailureOf(const Step& step);

    std::vector<OpenBlock> open_;
    /// Blocks inside of the innermost open one that are nested too deeply and left out.
    std::size_t leftOut_ = 0;
    std::shared_ptr<const BlockStatement> whole_;
    std::optional<Failure> firstFailure_;
};

}  // namespace korvex::host
