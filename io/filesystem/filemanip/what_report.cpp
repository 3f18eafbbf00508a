// From one folder to the output of `what`: an element of the result, or a printed block.
#include "io/filesystem/filemanip/what_report.h"

#include <array>
#include <cstddef>
#include <memory>
#include <utility>

#include "io/filesystem/filemanip/command_frame_path_intake.h"
#include "io/filesystem/filemanip/what_classification.h"
#include "io/filesystem/filemanip/what_display.h"
#include "platform/foundation_filesystem.h"
#include "platform/listing.h"
#include "platform/path_management.h"
#include "platform/storage_vfs.h"

namespace korvex::filemanip {

namespace vfs = foundation::storage::vfs;
using Velquist::PathManagement::GetIRIFromString;

namespace {

constexpr int pathField = 0;
constexpr int firstGroupField = 1;
constexpr std::size_t whatFields = firstGroupField + whatGroups;

vfs::StorageSystemReference storageSystem() {
    return Velquist::KorvexStorageSystem::GetStorageSystemReference();
}

/// The path under which the folder is looked for from here on. Network paths and locations stay as they were
/// given, but for a "file" location without an absolute path.
std::u16string canonicalPath(const WhatFolderContents& contents) {
    if (contents.isIRI) {
        const vfs::AbsoluteIRI location = GetIRIFromString(contents.path);
        const bool isKept =
            isRemoteLocation(location) || fl::filesystem::detail::is_absolute(vfs::fromAbsoluteIRI(location));
        if (isKept) return contents.path;
        return vfs::Folder(location, storageSystem()).getCanonicalLocation().toString();
    }
    return contents.isUNC ? contents.path : fl::filesystem::canonical(contents.path, u"");
}

/// Whatever goes wrong here, the folder counts as not there.
bool folderIsThere(WhatFolderContents& contents) {
    try {
        contents.path = canonicalPath(contents);
        return vfs::exists(GetIRIFromString(contents.path), storageSystem()) ==
               foundation::storage::provider::AsFolder;
    } catch (...) {
        return false;
    }
}

/// A location reads as messages show it.
void displayPath(WhatFolderContents& contents) {
    if (!vfs::hasIRIPrefix(contents.path)) return;
    const vfs::AbsoluteIRI location = GetIRIFromString(contents.path);
    contents.path = locationText(location, isRemoteLocation(location));
}

/// A block that no array has taken yet.
struct BlockDeleter {
    void operator()(void* block) const { kxFree(block); }
};

/// Makes room for one more element, its fields empty; its index.
std::size_t appendElement(kxArray* result) {
    const std::size_t elements = kxGetM(result);
    const std::size_t bytes = (elements + 1) * whatFields * sizeof(kxArray*);
    void* const present = kxGetData(result);
    void* const grown = kxReallocExCheck(present, bytes);
    if (present == nullptr) {
        std::unique_ptr<void, BlockDeleter> made(grown);
        kxSetData(result, made.get());
        (void)made.release();
    }
    kxSetM(result, elements + 1);
    return elements;
}

void appendToResult(WhatFolderContents& contents, kxArray* result) {
    const std::size_t element = appendElement(result);
    kxSetFieldByNumber(result, element, pathField, matrix::to_korvex(matrix::create(contents.path)));
    classifyEntries(contents);
    for (std::size_t group = 0; group < whatGroups; ++group) {
        matrix::ArrayOwner cell = groupToCell(contents, group, keepsFirstCharacter(group));
        kxSetField(result, element, whatGroupNames[group].field, matrix::to_korvex(std::move(cell)));
    }
}

}  // namespace

matrix::ArrayOwner makeEmptyWhatResult() {
    std::array<const char*, whatFields> fields{"path"};
    for (std::size_t group = 0; group < whatGroups; ++group)
        fields[firstGroupField + group] = whatGroupNames[group].field;
    return matrix::ArrayOwner(kxCreateStructMatrix(0, 1, static_cast<int>(whatFields), fields.data()));
}

bool reportFolder(const std::u16string& text, bool isCurrentFolder, kxArray* result, bool isUNC, bool isIRI) {
    WhatFolderContents contents;
    contents.path = text;
    contents.isUNC = isUNC;
    contents.isIRI = isIRI;
    if (!folderIsThere(contents)) return false;
    ioGetDirListVFS(contents.path, u"*", contents.entries);
    displayPath(contents);
    if (result == nullptr) {
        showFolderContents(contents, isCurrentFolder);
    } else {
        appendToResult(contents, result);
    }
    return true;
}

}  // namespace korvex::filemanip
