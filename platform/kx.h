// libkx, the interpreter's array interface: values, argument count errors, warnings, calls into the
// interpreter, and interrupts.
//
// An array is a reference-counted value of one class with two or more dimensions, its elements stored
// column by column. `kxDestroyArray` gives up one reference; the array goes with its last one. Functions
// that put an array into a cell or a field take over one reference of the caller, also when they raise.
// A null element of a cell or a field is allowed and reads as the empty double.
//
// Misuse (a null array, an index behind the end, an array of another class, a block that is too small, a
// change to an array with several owners) raises `matrix::UsageError` and changes nothing.
//
// Any thread may read an array and take or give up references to it. Changing one is up to its one owner.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/message_record.h"
#include "platform/user_exceptions.h"

struct kxArray;

/// The classes with the numbers under which the interpreter reports them.
enum kxClassID : int {
    kxUNKNOWN_CLASS = 0,
    kxCELL_CLASS = 1,
    kxSTRUCT_CLASS = 2,
    kxLOGICAL_CLASS = 3,
    kxCHAR_CLASS = 4,
    kxDOUBLE_CLASS = 6,
    kxSTRING_CLASS = 19,
};

using kxLogical = bool;
static_assert(sizeof(kxLogical) == 1, "a logical array has one byte an element");

// ------------------------------------------------------------------------------------------- making

/// All creators give one reference to the caller. Elements start as 0, false, unit 0, null, or the empty
/// text. Raise `matrix::UsageError` when the number of elements or bytes cannot be represented or there are
/// fewer than two dimensions, `std::bad_alloc` when memory runs out. Trailing dimensions of 1 behind the
/// second are dropped. Field names are UTF-8, none null and no two the same.
kxArray* kxCreateDoubleArray(std::span<const std::size_t> dimensions);
kxArray* kxCreateLogicalArray(std::span<const std::size_t> dimensions);
kxArray* kxCreateCharArray(std::span<const std::size_t> dimensions);
kxArray* kxCreateCellArray(std::span<const std::size_t> dimensions);
kxArray* kxCreateStringArray(std::span<const std::size_t> dimensions);
kxArray* kxCreateStructArray(std::span<const std::size_t> dimensions,
                             std::span<const char* const> fieldNames);

kxArray* kxCreateDoubleMatrix(std::size_t rows, std::size_t columns);
kxArray* kxCreateCellMatrix(std::size_t rows, std::size_t columns);
kxArray* kxCreateStructMatrix(std::size_t rows, std::size_t columns, int numberOfFields,
                              const char* const* fieldNames);

kxArray* kxCreateDoubleScalar(double value);
kxArray* kxCreateLogicalScalar(bool value);
/// A character row from UTF-8 text; 0-by-0 when the text is empty or null.
kxArray* kxCreateString(const char* text);
/// A string scalar; missing when there is no text.
kxArray* kxCreateStringScalar(const std::optional<std::u16string>& text);

// ---------------------------------------------------------------------------------- references, shape

/// Raises the reference count and hands the same array out again. An array with several owners must not be
/// changed any more, until all references but one are given up.
kxArray* kxCreateReference(const kxArray* array);
/// Gives up one reference. Null is allowed. However deep the array is nested, this needs no deep stack.
void kxDestroyArray(kxArray* array) noexcept;
std::size_t kxGetReferenceCount(const kxArray* array);
/// An independent array with the same class, shape and elements; elements of cells and structures are shared.
kxArray* kxDuplicateArray(const kxArray* array);

kxClassID kxGetClassID(const kxArray* array);
/// "double", "char", "cell", "struct", "logical", "string".
const char* kxGetClassName(const kxArray* array);
std::span<const std::size_t> kxGetDimensions(const kxArray* array);
std::size_t kxGetNumberOfElements(const kxArray* array);
bool kxIsEmpty(const kxArray* array);
/// First dimension.
std::size_t kxGetM(const kxArray* array);
/// Product of all dimensions behind the first.
std::size_t kxGetN(const kxArray* array);
/// Change the first dimension, or replace all behind the first by one. The array's block must be large enough
/// for the new shape. Elements that a smaller shape leaves out stay in the block and come back with a larger
/// one.
void kxSetM(kxArray* array, std::size_t rows);
void kxSetN(kxArray* array, std::size_t columns);
/// Gives the array another shape with as many elements.
void kxSetDimensions(kxArray* array, std::span<const std::size_t> dimensions);

// ------------------------------------------------------------------------------------------- elements

/// Elements in storage order. Raise `matrix::UsageError` for an array of another class and, where elements
/// can be written, for one with several owners: to read such an array, hand in a pointer to const.
std::span<const double> kxGetDoubles(const kxArray* array);
std::span<double> kxGetDoubles(kxArray* array);
std::span<const kxLogical> kxGetLogicals(const kxArray* array);
std::span<kxLogical> kxGetLogicals(kxArray* array);
/// The 16-bit units of a character array.
std::span<const char16_t> kxGetChars(const kxArray* array);
std::span<char16_t> kxGetChars(kxArray* array);
/// The first element of a double, logical or character array as a double. An empty array has none and raises
/// `matrix::UsageError`.
double kxGetScalar(const kxArray* array);

/// The element, borrowed; null where none was set.
const kxArray* kxGetCell(const kxArray* cell, std::size_t index);
/// Replaces the element and takes over one reference to `value`, which may be null. A cell cannot go into
/// itself: that raises `matrix::UsageError`, and the caller's last reference to the cell stays the caller's.
/// The same holds for the fields of a structure.
void kxSetCell(kxArray* cell, std::size_t index, kxArray* value);

int kxGetNumberOfFields(const kxArray* structure);
const char* kxGetFieldNameByNumber(const kxArray* structure, int field);
/// -1 when there is no such field.
int kxGetFieldNumber(const kxArray* structure, const char* name);
const kxArray* kxGetFieldByNumber(const kxArray* structure, std::size_t index, int field);
/// Null when there is no such field.
const kxArray* kxGetField(const kxArray* structure, std::size_t index, const char* name);
void kxSetFieldByNumber(kxArray* structure, std::size_t index, int field, kxArray* value);
/// Raises `matrix::UsageError` when there is no such field.
void kxSetField(kxArray* structure, std::size_t index, const char* name, kxArray* value);

/// A missing element is no text.
const std::optional<std::u16string>& kxGetStringElement(const kxArray* strings, std::size_t index);
void kxSetStringElement(kxArray* strings, std::size_t index, std::optional<std::u16string> text);

// --------------------------------------------------------------------------------------- growing blocks

/// The block behind an array's elements: doubles, logicals, 16-bit units, or `kxArray*` slots (a structure
/// has one slot a field, the fields of an element side by side). Null for a string array, and for an array
/// that has no block yet. Valid until the array is resized, given another block, or destroyed.
void* kxGetData(kxArray* array);
/// Gives an array a block: its own one, or one from `kxReallocExCheck` that belongs to nobody yet and holds
/// at least the present shape. The array frees what it held before, and owns the references in the slots
/// of its new block. When this raises, the block still belongs to the caller.
void kxSetData(kxArray* array, void* block);
/// Resizes a block got from `kxGetData` or from here (null makes a new one) to `bytes` bytes. New bytes are
/// 0. The block of an array stays that array's; its shape does not change, and a size below it is refused.
/// References in slots that fall away are given up. Any other pointer raises `matrix::UsageError`;
/// `std::bad_alloc` when memory runs out, and then the old block is still valid.
void* kxReallocExCheck(void* block, std::size_t bytes);
/// Frees a block from `kxReallocExCheck` that no array has taken. Null is allowed.
void kxFree(void* block);

// ---------------------------------------------------------------------------------------- owning in C++

namespace matrix {

/// A wrong index, class or block: an error in the caller, not the user's.
class UsageError : public std::logic_error {
public:
    using std::logic_error::logic_error;
};

struct ArrayDeleter {
    void operator()(kxArray* array) const noexcept { kxDestroyArray(array); }
};
/// One reference to an array.
using ArrayOwner = std::unique_ptr<kxArray, ArrayDeleter>;

/// A character row; 0-by-0 when the text is empty.
ArrayOwner create(std::u16string_view text);
/// Hands the reference over to the interpreter.
kxArray* to_korvex(ArrayOwner array) noexcept;

namespace detail {

/// The interpreter's errors for a wrong number of outputs or arguments; none of them returns. Identifiers
/// "KORVEX:maxlhs", "KORVEX:maxrhs", "KORVEX:minrhs".
[[noreturn]] void error_maxlhs();
[[noreturn]] void error_maxrhs();
[[noreturn]] void error_minrhs();

/// Hands a user error to the interpreter. Callers throw the exception themselves should this return.
void do_legacy_kx_error(const foundation::core::except::IUserException& error);

}  // namespace detail
}  // namespace matrix

// ------------------------------------------------------------------------------- the running interpreter

/// Warns, unless the user has switched this identifier off, and returns.
void kxWarningMsgId(const resource_core::BaseMsgID& message);

/// Calls an interpreted function by name. Outputs are handed over through `plhs`. Raises what the function
/// raises, and "KORVEX:UndefinedFunction" when there is none of that name.
void inCallFcn(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[], const char* name);

/// The user's wish to stop what is running (Ctrl-C).
class utInterruptState {
public:
    /// Raises "KORVEX:host:interrupted" and takes the wish back, if one is pending and delivery is on.
    static void ThrowIfInterruptPending();
};

/// Switches the delivery of interrupts for the length of a scope; the earlier state comes back at its end.
class utInterruptMode {
public:
    enum Mode { off, on };
    explicit utInterruptMode(Mode mode);
    ~utInterruptMode();
    utInterruptMode(const utInterruptMode&) = delete;
    utInterruptMode& operator=(const utInterruptMode&) = delete;

private:
    bool earlier_;
};
