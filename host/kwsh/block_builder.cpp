// Which part belongs to which block.
#include "host/kwsh/block_builder.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "host/kwsh/parser.h"
#include "host/kwsh/values.h"

namespace korvex::host {
namespace {

/// Deeper than a person would write; bounds the recursion of what runs them.
constexpr std::size_t deepestNesting = 100;

std::u16string spellingOf(BlockWord word) {
    return widen(std::ranges::find(blockWords, word, &SpelledBlockWord::word)->spelling);
}

bool opensBlock(BlockWord word) {
    return word == BlockWord::ifWord || word == BlockWord::forWord || word == BlockWord::tryWord;
}

/// The tokens have done their service.
SourceStatement withoutContent(SourceStatement statement) {
    if (auto* part = std::get_if<BlockPart>(&statement.content)) {
        part->tokens = {};
    } else {
        statement.content = std::vector<Token>();
    }
    return statement;
}

const std::vector<Token>& tokensOf(const BlockPart& part) {
    if (part.failure) throw HostError(*part.failure);
    return part.tokens;
}

}  // namespace

SimpleAction actionOf(const SourceStatement& statement) {
    if (const auto* failure = std::get_if<Failure>(&statement.content)) throw HostError(*failure);
    if (const auto* words = std::get_if<CommandWords>(&statement.content)) return *words;
    if (const auto* shell = std::get_if<ShellCommand>(&statement.content)) return *shell;
    Statement parsed = parseStatement(std::get<std::vector<Token>>(statement.content));
    return std::visit([](auto& content) { return SimpleAction(std::move(content)); }, parsed);
}

void BlockBuilder::add(SourceStatement statement) {
    if (isBlockHead(statement)) {
        addPart(std::move(statement));
    } else if (leftOut_ == 0) {
        addAction(std::move(statement));
    }
}

std::shared_ptr<const BlockStatement> BlockBuilder::take() {
    if (isOpen()) {
        refuse(messages::blockNotClosed(spellingOf(open_.back().word)), open_.back().position);
    }
    if (firstFailure_) throw HostError(*firstFailure_);
    return std::move(whole_);
}

void BlockBuilder::addPart(SourceStatement statement) {
    const BlockPart& part = std::get<BlockPart>(statement.content);
    const bool isDeeper = opensBlock(part.word);
    if (isDeeper && (leftOut_ > 0 || open_.size() == deepestNesting)) {
        refuse(messages::blocksNestedTooDeeply(), part.position);
        ++leftOut_;
    } else if (leftOut_ > 0) {
        if (part.word == BlockWord::endWord) --leftOut_;
    } else if (isDeeper) {
        open(std::move(statement));
    } else if (part.word == BlockWord::endWord) {
        close(part);
    } else if (part.word == BlockWord::catchWord) {
        addHandler(part);
    } else {
        addBranch(std::move(statement));
    }
}

void BlockBuilder::addAction(SourceStatement statement) {
    noteFailureOf([&] {
        SimpleAction action = actionOf(statement);
        body().push_back({withoutContent(std::move(statement)), std::move(action)});
    });
}

void BlockBuilder::open(SourceStatement head) {
    const BlockPart& part = std::get<BlockPart>(head.content);
    OpenBlock block;
    block.word = part.word;
    block.position = part.position;
    if (part.word == BlockWord::forWord) {
        ForBlock loop;
        noteFailureOf([&] { loop.loop = parseLoopHead(tokensOf(part)); });
        loop.head = withoutContent(head);
        block.statement.action = std::move(loop);
    } else if (part.word == BlockWord::tryWord) {
        block.statement.action = TryBlock();
    } else {
        block.statement.action = IfBlock();
    }
    block.statement.source = withoutContent(head);
    open_.push_back(std::move(block));
    if (isInside(BlockWord::ifWord)) addBranch(std::move(head));
}

void BlockBuilder::addBranch(SourceStatement head) {
    const BlockPart& part = std::get<BlockPart>(head.content);
    if (!isInside(BlockWord::ifWord)) {
        return refuse(messages::partOutsideOfBlock(spellingOf(part.word), spellingOf(BlockWord::ifWord)),
                      part.position);
    }
    OpenBlock& block = open_.back();
    if (block.isInLastPart) {
        return refuse(messages::partTwice(spellingOf(BlockWord::elseWord), spellingOf(part.word)),
                      part.position);
    }
    block.isInLastPart = part.word == BlockWord::elseWord;
    IfBranch branch;
    if (!block.isInLastPart) {
        noteFailureOf([&] { branch.condition = parseCondition(tokensOf(part)); });
    }
    branch.head = withoutContent(std::move(head));
    std::get<IfBlock>(block.statement.action).branches.push_back(std::move(branch));
}

void BlockBuilder::addHandler(const BlockPart& part) {
    if (!isInside(BlockWord::tryWord)) {
        return refuse(messages::partOutsideOfBlock(spellingOf(part.word), spellingOf(BlockWord::tryWord)),
                      part.position);
    }
    OpenBlock& block = open_.back();
    if (block.isInLastPart) {
        return refuse(messages::partTwice(spellingOf(part.word), spellingOf(part.word)), part.position);
    }
    block.isInLastPart = true;
    noteFailureOf(
        [&] { std::get<TryBlock>(block.statement.action).failureVariable = parseCatchHead(tokensOf(part)); });
}

void BlockBuilder::close(const BlockPart& part) {
    if (!isOpen()) return refuse(messages::endOutsideOfBlock(), part.position);
    noteFailureOf([&] { requireNothing(tokensOf(part)); });
    BlockStatement closed = std::move(open_.back().statement);
    open_.pop_back();
    if (isOpen()) {
        body().push_back(std::move(closed));
    } else {
        whole_ = std::make_shared<const BlockStatement>(std::move(closed));
    }
}

BlockBody& BlockBuilder::body() {
    OpenBlock& block = open_.back();
    if (auto* choice = std::get_if<IfBlock>(&block.statement.action)) return choice->branches.back().body;
    if (auto* loop = std::get_if<ForBlock>(&block.statement.action)) return loop->body;
    TryBlock& attempt = std::get<TryBlock>(block.statement.action);
    return block.isInLastPart ? attempt.handler : attempt.body;
}

void BlockBuilder::refuse(const resource_core::BaseMsgID& message, const Position& position) {
    noteFailureOf([&] { throw syntaxError(message, position); });
}

/// Only the first failure is told: the others may come from it.
template <class Step>
void BlockBuilder::noteFailureOf(const Step& step) {
    try {
        step();
    } catch (const HostError& error) {
        if (!firstFailure_) firstFailure_ = error.failure();
    }
}

}  // namespace korvex::host
