// The functions that the interpreter has read from source files.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::runtime::dispatcher {

/// Source code goes before live code of the same name.
inline constexpr std::array<std::u16string_view, 2> sourceExtensions{u".k", u".klx"};

/// Source files of functions end in ".k", live code in ".klx"; case ignored.
bool isSourceFileName(const std::u16string& name);

/// The number of such an extension, which is given with its dot, from 0; -1 for any other.
int numberOfSourceExtension(std::u16string_view extension, bool isCaseExact);

/// A function that was read.
struct CachedFunction {
    std::u16string name;  ///< the file's stem
    std::u16string path;  ///< the source file's native path

    bool operator==(const CachedFunction&) const = default;
};

/// Puts the function of an existing source file into the cache; one from the same file is replaced. `path` is
/// a native path, relative ones are taken against the current folder. Raises `vfs::Exception`:
/// `unsupportedOperation` for what is not on a disk, `resourceNotFound`, `invalidLocation` when it is no
/// source file; and as `GetIRIFromString`.
void cacheFunction(const std::u16string& path);

/// In the order in which they were read.
std::vector<CachedFunction> cachedFunctions();

/// Drops what was read from this source file, and the kept view of its folder; the event goes out in any
/// case.
void clearFunctionsOf(const std::u16string& path);

}  // namespace korvex::runtime::dispatcher
