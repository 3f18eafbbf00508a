// Blocks of arrays in the hands of callers: lent out, grown, handed over.
#include <string>
#include <utility>

#include "runtime/array/array_checks.h"
#include "runtime/array/block_table.h"

using namespace korvex::runtime::array;

namespace {

using Kind = BlockTable::Kind;

std::size_t bytesOfShape(const kxArray& array) { return array.elements() * bytesPerElement(array); }

void* resizeLentBlock(kxArray* owner, std::size_t bytes) {
    kxArray& changed = requireSoleOwner(owner, "kxReallocExCheck");
    if (bytes < bytesOfShape(changed)) {
        misuse("kxReallocExCheck", std::to_string(bytes) + " bytes are less than the array's shape needs");
    }
    const LentBlockMove move(changed);
    changed.resizeBlock(bytes);
    return changed.data();
}

}  // namespace

void* kxGetData(kxArray* array) {
    kxArray& lender = requireSoleOwner(array, "kxGetData");
    if (lender.data() != nullptr && !lender.isLent()) {
        blockTable().lend(lender.data(), &lender);
        lender.setLent();
    }
    return lender.data();
}

void kxSetData(kxArray* array, void* block) {
    kxArray& changed = requireSoleOwner(array, "kxSetData");
    if (changed.classID() == kxSTRING_CLASS) misuse("kxSetData", "a string array has no block");
    if (block == changed.data()) return;
    const BlockTable::Entry entry = blockTable().find(block);
    if (entry.kind == Kind::lent) misuse("kxSetData", "the block belongs to another array");
    if (entry.kind == Kind::foreign) misuse("kxSetData", "the pointer is no block from kxReallocExCheck");
    if (entry.bytes < bytesOfShape(changed)) {
        misuse("kxSetData",
               "a block of " + std::to_string(entry.bytes) + " bytes is too small for the array");
    }
    if (changed.isLent()) blockTable().forget(changed.data());
    changed.replaceBlock(blockTable().giveTo(&changed, block));
    changed.setLent();
}

void* kxReallocExCheck(void* block, std::size_t bytes) {
    if (bytes > largestBlock) misuse("kxReallocExCheck", "the bytes are more than one block can hold");
    if (block == nullptr) return blockTable().makeFloating(bytes);
    const BlockTable::Entry entry = blockTable().find(block);
    switch (entry.kind) {
        case Kind::floating: return blockTable().resizeFloating(block, bytes);
        case Kind::lent: return resizeLentBlock(entry.owner, bytes);
        case Kind::foreign: break;
    }
    misuse("kxReallocExCheck", "the pointer is no block of an array and none from kxReallocExCheck");
}

void kxFree(void* block) {
    if (block == nullptr) return;
    const BlockTable::Entry entry = blockTable().find(block);
    if (entry.kind == Kind::lent) misuse("kxFree", "the block belongs to an array");
    if (entry.kind == Kind::foreign) misuse("kxFree", "the pointer is no block from kxReallocExCheck");
    blockTable().forget(block);
}
