// The memory behind the elements of an array: zeroed bytes that can be resized where they lie.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace korvex::runtime::array {

/// No block has more bytes than this.
inline constexpr std::size_t largestBlock = static_cast<std::size_t>(PTRDIFF_MAX);

/// Owns one block, or none. A block of 0 bytes is still one, with an address of its own.
class ElementBlock {
public:
    ElementBlock() = default;
    /// Zeroed bytes. Raises `std::bad_alloc`.
    explicit ElementBlock(std::size_t bytes);

    ElementBlock(ElementBlock&& other) noexcept;
    ElementBlock& operator=(ElementBlock&& other) noexcept;

    explicit operator bool() const noexcept { return start_ != nullptr; }
    void* start() const noexcept { return start_.get(); }
    std::size_t bytes() const noexcept { return bytes_; }

    /// Keeps the first bytes, zeroes new ones, and may move the block. Growing raises `std::bad_alloc` and
    /// leaves the block as it was; shrinking always succeeds. Only for an owner that has a block.
    void resize(std::size_t bytes);

private:
    struct Free {
        void operator()(void* start) const noexcept;
    };

    std::unique_ptr<void, Free> start_;
    std::size_t bytes_ = 0;
};

}  // namespace korvex::runtime::array
