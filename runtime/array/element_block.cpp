// Memory of array elements. Large blocks reserve up to an eighth more than asked for, so that an array that
// grows element by element is not copied at each step.
#include "runtime/array/element_block.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace korvex::runtime::array {

namespace {

constexpr std::size_t exactUpTo = 4096;

// A function of the size alone: what is reserved needs no member in each array.
constexpr std::size_t reservedFor(std::size_t bytes) {
    if (bytes <= exactUpTo) return std::max<std::size_t>(bytes, 1);
    const std::size_t step = std::bit_floor(bytes) / 8;
    return (bytes + step - 1) / step * step;
}

}  // namespace

void ElementBlock::Free::operator()(void* start) const noexcept { std::free(start); }

ElementBlock::ElementBlock(std::size_t bytes) : start_(std::calloc(reservedFor(bytes), 1)), bytes_(bytes) {
    if (start_ == nullptr) throw std::bad_alloc();
}

ElementBlock::ElementBlock(ElementBlock&& other) noexcept
    : start_(std::move(other.start_)), bytes_(std::exchange(other.bytes_, 0)) {}

ElementBlock& ElementBlock::operator=(ElementBlock&& other) noexcept {
    start_ = std::move(other.start_);
    bytes_ = std::exchange(other.bytes_, 0);
    return *this;
}

void ElementBlock::resize(std::size_t bytes) {
    const std::size_t reserved = reservedFor(bytes);
    if (reserved != reservedFor(bytes_)) {
        if (void* moved = std::realloc(start_.get(), reserved)) {
            static_cast<void>(start_.release());
            start_.reset(moved);
        } else if (bytes > bytes_) {
            throw std::bad_alloc();
        }
    }
    if (bytes > bytes_) std::memset(static_cast<std::byte*>(start_.get()) + bytes_, 0, bytes - bytes_);
    bytes_ = bytes;
}

}  // namespace korvex::runtime::array
