// One call of a command: texts go in, arrays come out.
#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <string_view>
#include <vector>

#include "platform/kx.h"

namespace example {

using Entry = void (*)(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);

/// The outputs of one call. What a command has put into them goes with the object, also when it raised.
class Outputs {
public:
    /// A command may set its first output unasked, so there is always a slot for it.
    explicit Outputs(int wanted) : wanted_(wanted), slots_(static_cast<std::size_t>(std::max(wanted, 1))) {}
    ~Outputs() { std::ranges::for_each(slots_, kxDestroyArray); }
    Outputs(const Outputs&) = delete;
    Outputs& operator=(const Outputs&) = delete;

    int wanted() const { return wanted_; }
    kxArray** slots() { return slots_.data(); }
    /// Null where the command set nothing.
    const kxArray* operator[](std::size_t index) const { return slots_[index]; }

private:
    int wanted_;
    std::vector<kxArray*> slots_;
};

/// Calls a command with character vectors. What it raises passes through.
inline void call(Entry entry, Outputs& outputs, std::initializer_list<std::u16string_view> texts) {
    std::vector<matrix::ArrayOwner> owners;
    std::vector<const kxArray*> arguments;
    for (const std::u16string_view text : texts) {
        owners.push_back(matrix::create(text));
        arguments.push_back(owners.back().get());
    }
    const int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);  // the list ends with one
    entry(outputs.wanted(), outputs.slots(), count, arguments.data());
}

/// The units of a character array.
inline std::u16string_view textOf(const kxArray* array) {
    const auto units = kxGetChars(array);
    return {units.data(), units.size()};
}

}  // namespace example
