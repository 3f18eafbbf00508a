// The array itself: reference count, class, shape, and the elements or the references it owns.
//
// Small arrays have their elements right behind the object, in the same allocation; larger ones, and those
// that were grown or given a block, in an `ElementBlock`. The block may hold more than the shape shows; what
// lies outside the shape is owned all the same. Nothing here checks what callers hand in: that is the part of
// the functions of platform/kx.h.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/kx.h"
#include "runtime/array/element_block.h"

namespace korvex::runtime::array {

using FieldNames = std::vector<std::string>;
using StringElements = std::vector<std::optional<std::u16string>>;

/// What only some arrays have.
struct ArrayExtras {
    std::vector<std::size_t> dimensions;           ///< all of them, when there are more than two
    std::shared_ptr<const FieldNames> fieldNames;  ///< of a structure; its duplicates share them
    StringElements strings;                        ///< of a string array, those outside the shape included
};

/// Dimensions as they are kept: trailing ones dropped, counted, found to be representable.
struct Shape {
    std::span<const std::size_t> dimensions;  ///< borrowed
    std::size_t rows = 0;
    std::size_t columns = 0;  ///< product of all dimensions behind the first
};

}  // namespace korvex::runtime::array

struct kxArray {
public:
    using FieldNames = korvex::runtime::array::FieldNames;
    using StringElements = korvex::runtime::array::StringElements;
    using ElementBlock = korvex::runtime::array::ElementBlock;
    using Shape = korvex::runtime::array::Shape;

    /// A new array of `bytes` zeroed bytes, with no strings yet. `fieldNames` is for structures only.
    static matrix::ArrayOwner make(kxClassID classID, const Shape& shape, std::size_t bytes,
                                   std::shared_ptr<const FieldNames> fieldNames = nullptr);
    kxArray(const kxArray&) = delete;
    kxArray& operator=(const kxArray&) = delete;

    /// Raises `matrix::UsageError` when there are too many references to count.
    void addReference() const;
    /// Gives one reference up. What goes with it is taken apart without recursion, however deep it is nested.
    static void dropReference(kxArray* array) noexcept;
    std::size_t references() const noexcept { return references_.load(std::memory_order_acquire); }

    kxClassID classID() const noexcept { return static_cast<kxClassID>(class_); }
    bool ownsReferences() const noexcept { return class_ == kxCELL_CLASS || class_ == kxSTRUCT_CLASS; }

    std::span<const std::size_t> dimensions() const noexcept;
    std::size_t rows() const noexcept { return shape_[0]; }
    std::size_t columns() const noexcept { return shape_[1]; }
    std::size_t elements() const noexcept { return shape_[0] * shape_[1]; }
    /// Raises `std::bad_alloc`, with the shape unchanged, only for more than two dimensions.
    void setShape(const Shape& shape);
    void setRows(std::size_t rows) noexcept;
    void setColumns(std::size_t columns) noexcept;

    /// Fields of a structure; of no other class.
    const FieldNames& fieldNames() const noexcept { return *extras_->fieldNames; }
    const std::shared_ptr<const FieldNames>& sharedFieldNames() const noexcept { return extras_->fieldNames; }
    /// Elements of a string array; of no other class.
    StringElements& strings() noexcept { return extras_->strings; }
    const StringElements& strings() const noexcept { return extras_->strings; }

    /// The block, null when there is none.
    void* data() noexcept { return block_ ? block_.start() : inlineStart(); }
    const void* data() const noexcept { return const_cast<kxArray*>(this)->data(); }
    /// Size of the block in bytes.
    std::size_t capacity() const noexcept { return block_ ? block_.bytes() : inlineBytes_; }
    template <class Element>
    Element* elementsAs() noexcept {
        return static_cast<Element*>(data());
    }
    template <class Element>
    const Element* elementsAs() const noexcept {
        return static_cast<const Element*>(data());
    }

    /// Resizes the block, giving up the references in slots that fall away. Raises `std::bad_alloc` and then
    /// has changed nothing.
    void resizeBlock(std::size_t bytes);
    /// Puts `block` in the place of the present one, whose references are given up.
    void replaceBlock(ElementBlock block) noexcept;

    /// Whether the block stands in the table of lent blocks, which then has to hear of each change but for
    /// the end of the array.
    bool isLent() const noexcept { return isLent_; }
    void setLent() noexcept { isLent_ = true; }

private:
    struct InlineBytes {
        std::size_t count;
    };

    kxArray(kxClassID classID, std::size_t inlineBytes) noexcept;
    ~kxArray();

    // The elements of a small array follow the object, so its allocation is larger than its type.
    static void* operator new(std::size_t size, InlineBytes inlineBytes);
    static void operator delete(void* memory, InlineBytes) noexcept { ::operator delete(memory); }
    static void operator delete(void* memory) noexcept { ::operator delete(memory); }

    korvex::runtime::array::ArrayExtras& extras();
    void* inlineStart() noexcept { return inlineBytes_ == 0 ? nullptr : this + 1; }
    std::span<kxArray*> slots() noexcept;
    /// Whether this was the last one. Nobody can add to a last reference but its owner, so that it need not
    /// be counted down.
    bool dropOne() noexcept {
        return references_.load(std::memory_order_acquire) == 1 ||
               references_.fetch_sub(1, std::memory_order_acq_rel) == 1;
    }
    void dropSlots(std::size_t first) noexcept;

    // The order keeps the object at 48 bytes: a listing has millions of them.
    mutable std::atomic<std::uint32_t> references_{1};
    std::uint16_t inlineBytes_;
    std::uint8_t class_;
    bool isLent_ = false;
    union {
        std::size_t shape_[2];  // rows; product of all dimensions behind
        kxArray* nextDying_;    // an array that nobody refers to any more has no use for a shape
    };
    ElementBlock block_;
    std::unique_ptr<korvex::runtime::array::ArrayExtras> extras_;
};
