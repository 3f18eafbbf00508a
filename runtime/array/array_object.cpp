// Life of an array: made with its elements beside it where they are few, grown, taken apart.
#include "runtime/array/array_object.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "runtime/array/block_table.h"

using korvex::runtime::array::ArrayExtras;
using korvex::runtime::array::blockTable;

namespace {

// Scalars, dates and most file names need one allocation instead of two.
constexpr std::size_t largestInlineBlock = 256;

// Half of what the counter holds: threads that overshoot at the same time cannot make it wrap around.
constexpr std::uint32_t mostReferences = std::uint32_t{1} << 31;

}  // namespace

static_assert(sizeof(kxArray) == 48);
static_assert(sizeof(kxArray) % alignof(double) == 0 && sizeof(kxArray) % alignof(kxArray*) == 0);

matrix::ArrayOwner kxArray::make(kxClassID classID, const Shape& shape, std::size_t bytes,
                                 std::shared_ptr<const FieldNames> fieldNames) {
    const std::size_t inlineBytes = bytes <= largestInlineBlock ? bytes : 0;
    matrix::ArrayOwner array(new (InlineBytes{inlineBytes}) kxArray(classID, inlineBytes));
    if (bytes > inlineBytes) array->block_ = ElementBlock(bytes);
    if (classID == kxSTRUCT_CLASS) array->extras().fieldNames = std::move(fieldNames);
    if (classID == kxSTRING_CLASS) array->extras();
    array->setShape(shape);
    return array;
}

kxArray::kxArray(kxClassID classID, std::size_t inlineBytes) noexcept
    : inlineBytes_(static_cast<std::uint16_t>(inlineBytes)),
      class_(static_cast<std::uint8_t>(classID)),
      shape_{0, 0} {
    if (inlineBytes != 0) std::memset(inlineStart(), 0, inlineBytes);
}

kxArray::~kxArray() {
    if (isLent_) blockTable().forget(data());
}

void* kxArray::operator new(std::size_t size, InlineBytes inlineBytes) {
    return ::operator new(size + inlineBytes.count);
}

void kxArray::addReference() const {
    if (references_.fetch_add(1, std::memory_order_relaxed) >= mostReferences) {
        references_.fetch_sub(1, std::memory_order_relaxed);
        throw matrix::UsageError("an array has too many references");
    }
}

void kxArray::dropReference(kxArray* array) noexcept {
    if (!array->dropOne()) return;
    kxArray* dying = array;
    dying->nextDying_ = nullptr;
    while (dying != nullptr) {
        kxArray* const current = std::exchange(dying, dying->nextDying_);
        for (kxArray* element : current->slots()) {
            if (element == nullptr || !element->dropOne()) continue;
            if (element->ownsReferences()) {
                element->nextDying_ = std::exchange(dying, element);
            } else {
                delete element;
            }
        }
        delete current;
    }
}

std::span<const std::size_t> kxArray::dimensions() const noexcept {
    if (extras_ != nullptr && !extras_->dimensions.empty()) return extras_->dimensions;
    return shape_;
}

void kxArray::setShape(const Shape& shape) {
    if (shape.dimensions.size() > 2) {
        extras().dimensions = std::vector<std::size_t>(shape.dimensions.begin(), shape.dimensions.end());
    } else if (extras_ != nullptr) {
        extras_->dimensions.clear();
    }
    shape_[0] = shape.rows;
    shape_[1] = shape.columns;
}

void kxArray::setRows(std::size_t rows) noexcept {
    if (extras_ != nullptr && !extras_->dimensions.empty()) extras_->dimensions.front() = rows;
    shape_[0] = rows;
}

void kxArray::setColumns(std::size_t columns) noexcept {
    if (extras_ != nullptr) extras_->dimensions.clear();
    shape_[1] = columns;
}

void kxArray::resizeBlock(std::size_t bytes) {
    if (block_) {
        dropSlots(bytes / sizeof(kxArray*));
        block_.resize(bytes);
    } else {
        ElementBlock moved(bytes);
        dropSlots(bytes / sizeof(kxArray*));
        std::copy_n(elementsAs<std::byte>(), std::min(capacity(), bytes),
                    static_cast<std::byte*>(moved.start()));
        block_ = std::move(moved);
    }
}

void kxArray::replaceBlock(ElementBlock block) noexcept {
    dropSlots(0);
    block_ = std::move(block);
}

ArrayExtras& kxArray::extras() {
    if (extras_ == nullptr) extras_ = std::make_unique<ArrayExtras>();
    return *extras_;
}

std::span<kxArray*> kxArray::slots() noexcept {
    if (!ownsReferences()) return {};
    return {elementsAs<kxArray*>(), capacity() / sizeof(kxArray*)};
}

void kxArray::dropSlots(std::size_t first) noexcept {
    const std::span<kxArray*> all = slots();
    for (std::size_t index = first; index < all.size(); ++index) {
        kxDestroyArray(std::exchange(all[index], nullptr));
    }
}
