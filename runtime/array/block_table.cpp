// Table of lent and floating blocks. Moving an entry to another address allocates nothing, so a block that
// was resized never falls out of the table.
#include "runtime/array/block_table.h"

#include <memory>
#include <utility>

#include "runtime/array/array_object.h"

namespace korvex::runtime::array {

BlockTable::Entry BlockTable::find(const void* block) const {
    const std::lock_guard lock(mutex_);
    const auto place = blocks_.find(block);
    if (place == blocks_.end()) return {};
    if (const auto* floating = std::get_if<ElementBlock>(&place->second)) {
        return {.kind = Kind::floating, .bytes = floating->bytes()};
    }
    return {.kind = Kind::lent, .owner = std::get<kxArray*>(place->second)};
}

void* BlockTable::makeFloating(std::size_t bytes) {
    ElementBlock block(bytes);
    void* const start = block.start();
    const std::lock_guard lock(mutex_);
    blocks_.emplace(start, std::move(block));
    return start;
}

void* BlockTable::resizeFloating(void* block, std::size_t bytes) {
    const std::lock_guard lock(mutex_);
    const auto place = blocks_.find(block);
    auto& floating = std::get<ElementBlock>(place->second);
    floating.resize(bytes);
    void* const after = floating.start();
    if (after != block) {
        auto entry = blocks_.extract(place);
        entry.key() = after;
        blocks_.insert(std::move(entry));
    }
    return after;
}

ElementBlock BlockTable::giveTo(kxArray* owner, const void* block) noexcept {
    const std::lock_guard lock(mutex_);
    Owner& entry = blocks_.find(block)->second;
    ElementBlock given = std::move(std::get<ElementBlock>(entry));
    entry = owner;
    return given;
}

void BlockTable::lend(const void* block, kxArray* owner) {
    const std::lock_guard lock(mutex_);
    blocks_.emplace(block, owner);
}

void BlockTable::forget(const void* block) noexcept {
    const std::lock_guard lock(mutex_);
    blocks_.erase(block);
}

BlockTable& blockTable() {
    // Never taken apart: arrays may outlive every other static object.
    static BlockTable& table = *std::make_unique<BlockTable>().release();
    return table;
}

LentBlockMove::LentBlockMove(kxArray& owner) noexcept : owner_(owner) {
    BlockTable& table = blockTable();
    const std::lock_guard lock(table.mutex_);
    entry_ = table.blocks_.extract(owner.data());
}

LentBlockMove::~LentBlockMove() {
    BlockTable& table = blockTable();
    const std::lock_guard lock(table.mutex_);
    entry_.key() = owner_.data();
    table.blocks_.insert(std::move(entry_));
}

}  // namespace korvex::runtime::array
