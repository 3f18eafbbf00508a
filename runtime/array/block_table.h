// Which addresses are blocks: those lent out by an array, and those that belong to no array yet.
//
// Every pointer that a caller hands back is looked up here before anything touches its memory. Any thread may
// use the table.
#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <variant>

#include "runtime/array/element_block.h"

struct kxArray;

namespace korvex::runtime::array {

class BlockTable {
public:
    enum class Kind { foreign, floating, lent };
    struct Entry {
        Kind kind = Kind::foreign;
        kxArray* owner = nullptr;  ///< of a lent block
        std::size_t bytes = 0;     ///< of a floating block
    };

    Entry find(const void* block) const;

    /// A new floating block. Raises `std::bad_alloc`.
    void* makeFloating(std::size_t bytes);
    /// For floating blocks only. Raises `std::bad_alloc` and leaves the block as it was.
    void* resizeFloating(void* block, std::size_t bytes);
    /// For floating blocks only: the table hands it over, and remembers it as lent out by its new owner.
    ElementBlock giveTo(kxArray* owner, const void* block) noexcept;

    /// Raises `std::bad_alloc`.
    void lend(const void* block, kxArray* owner);
    /// Takes a block out; a floating one is freed.
    void forget(const void* block) noexcept;

private:
    friend class LentBlockMove;
    using Owner = std::variant<kxArray*, ElementBlock>;  // an array, or the table itself
    using Blocks = std::map<const void*, Owner>;

    mutable std::mutex mutex_;
    Blocks blocks_;
};

/// The one table of the process.
BlockTable& blockTable();

/// While an array resizes its lent block, the block is out of the table: its old address may belong to
/// another thread as soon as it is freed. The destructor puts it back at the address the array has by then.
class LentBlockMove {
public:
    explicit LentBlockMove(kxArray& owner) noexcept;
    ~LentBlockMove();
    LentBlockMove(const LentBlockMove&) = delete;
    LentBlockMove& operator=(const LentBlockMove&) = delete;

private:
    kxArray& owner_;
    BlockTable::Blocks::node_type entry_;
};

}  // namespace korvex::runtime::array
