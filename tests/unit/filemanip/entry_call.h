// Calls of the module's entries, as the interpreter makes them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/kx.h"
#include "platform/user_exceptions.h"

extern "C" {
void copyFile(int, kxArray*[], int, const kxArray*[]);
void moveFile(int, kxArray*[], int, const kxArray*[]);
void makeDir(int, kxArray*[], int, const kxArray*[]);
void removeDir(int, kxArray*[], int, const kxArray*[]);
void fileAttrib(int, kxArray*[], int, const kxArray*[]);
void bnFullDeleteFcn(int, kxArray*[], int, const kxArray*[]);
void bnFullRecycleFcn(int, kxArray*[], int, const kxArray*[]);
void bnFullDirFcn(int, kxArray*[], int, const kxArray*[]);
void bnFullWhatFcn(int, kxArray*[], int, const kxArray*[]);
void bnIsFileFcn(int, kxArray*[], int, const kxArray*[]);
void bnIsFolderFcn(int, kxArray*[], int, const kxArray*[]);
void KLInitialize_filemanip();
void KLTerminate_filemanip();
}

namespace korvex::filemanip::tests {

using Entry = void (*)(int, kxArray*[], int, const kxArray*[]);
using Array = matrix::ArrayOwner;

inline Array text(std::u16string_view value) { return matrix::create(value); }
inline Array string(std::u16string value) { return Array(kxCreateStringScalar(std::move(value))); }
inline Array missing() { return Array(kxCreateStringScalar(std::nullopt)); }
inline Array number(double value) { return Array(kxCreateDoubleScalar(value)); }
inline Array characters(std::vector<std::size_t> dimensions) { return Array(kxCreateCharArray(dimensions)); }

/// A cell array, filled in storage order; a null stays an absent element.
template <class... Arrays>
Array cell(std::vector<std::size_t> dimensions, Arrays... elements) {
    Array result(kxCreateCellArray(dimensions));
    std::size_t index = 0;
    (kxSetCell(result.get(), index++, elements.release()), ...);
    return result;
}

/// A string array, filled in storage order.
inline Array strings(std::vector<std::size_t> dimensions,
                     std::vector<std::optional<std::u16string>> elements) {
    Array result(kxCreateStringArray(dimensions));
    for (std::size_t i = 0; i < elements.size(); ++i) {
        kxSetStringElement(result.get(), i, elements[i]);
    }
    return result;
}

/// What a call left behind.
struct Outcome {
    /// Takes in what an error tells.
    void fail(const foundation::core::except::IMsgIDException& error) {
        errorIdentifier = error.get_error_id();
        errorText = error.what();
        catalogEntry = error.message().identifier();
        for (const resource_core::MessageArgument& argument : error.message().args) {
            errorArguments.push_back(argument.wideText() != nullptr ? *argument.wideText() : u"");
        }
    }

    std::vector<Array> outputs;
    std::string errorIdentifier;
    std::string errorText;
    /// The identifier of the entry that the text is from; not always that of the error.
    std::string catalogEntry;
    std::vector<std::u16string> errorArguments;
};

/// Calls an entry with borrowed arguments; an error of the user's kind ends up in the outcome.
inline Outcome call(Entry entry, int nlhs, const std::vector<const kxArray*>& arguments) {
    /// Whatever is raised, what was handed over until then goes.
    struct Slots : std::vector<kxArray*> {
        using vector::vector;
        ~Slots() { std::for_each(begin(), end(), kxDestroyArray); }
    };
    Slots plhs(static_cast<std::size_t>(std::max(nlhs, 1)), nullptr);
    std::vector<const kxArray*> prhs = arguments;
    prhs.push_back(nullptr);
    Outcome outcome;
    try {
        entry(nlhs, plhs.data(), static_cast<int>(arguments.size()), prhs.data());
    } catch (const foundation::core::except::IMsgIDException& error) {
        outcome.fail(error);
    }
    for (kxArray*& output : plhs) {
        outcome.outputs.emplace_back(std::exchange(output, nullptr));
    }
    return outcome;
}

inline std::vector<bool> logicals(const Array& array) {
    const std::span<const kxLogical> elements = kxGetLogicals(static_cast<const kxArray*>(array.get()));
    return {elements.begin(), elements.end()};
}

inline std::vector<std::size_t> dimensions(const Array& array) {
    const std::span<const std::size_t> sizes = kxGetDimensions(array.get());
    return {sizes.begin(), sizes.end()};
}

}  // namespace korvex::filemanip::tests
