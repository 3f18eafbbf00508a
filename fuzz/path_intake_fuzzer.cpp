// The intake of what a user typed as a source or a destination, and the questions whether it is there, over a
// storage that is all in memory.
#include <memory>

#include "fuzz/support/fuzz_input.h"
#include "io/filesystem/filemanip/command_frame_path_intake.h"
#include "io/filesystem/filemanip/existence_queries.h"
#include "platform/foundation_filesystem.h"
#include "platform/path_management.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/paths/path_style.h"
#include "runtime/paths/path_text.h"
#include "runtime/storage/providers/memory/memory_provider.h"
#include "runtime/storage/storage_system.h"

namespace korvex::fuzz {

namespace core = korvex::io::filesystem::core;
namespace filemanip = korvex::filemanip;
namespace paths = korvex::runtime::paths;
namespace storage = korvex::runtime::storage;
namespace vfs = foundation::storage::vfs;
using Velquist::PathManagement::GetIRIFromString;
using Velquist::PathManagement::GetStringFromIRI;

namespace {

constexpr const char* invalidLocation = "KORVEX:virtualfilesystem:invalidIRI";

/// Local files, too, are in memory: no input reaches the disk.
std::shared_ptr<const vfs::StorageSystem> storageInMemory() {
    auto system = std::make_shared<vfs::StorageSystem>();
    for (const char16_t* scheme : {u"file", u"memory", u"http"}) {
        const auto provider = std::make_shared<storage::MemoryProvider>();
        provider->putFolder(vfs::AbsoluteIRI(std::u16string(scheme) + u"://box/here"));
        system->add(scheme, provider);
    }
    return system;
}

/// A storage, and a folder in it that is the current one.
struct Environment {
    Environment() { korvex::runtime::dispatcher::setCurrentFolderPath(u"/"); }

    storage::ScopedStorageSystem inMemory{storageInMemory()};
    vfs::StorageSystemReference system{storage::currentStorageSystem()};
    vfs::Folder currentFolder{vfs::AbsoluteIRI(u"file:///"), system};
};

void examineLocalPath(const std::u16string& typed, const std::u16string& taken,
                      core::ResolveSymbolicLinks mode) {
    require(!taken.empty(), "with a current folder every path can be used", typed);
    require(fl::filesystem::detail::is_absolute(taken), "a path that was taken in is absolute", typed);
    std::u16string folded = taken;
    paths::foldDoubledSeparators(folded, paths::nativeStyle);
    paths::dropTrailingSeparators(folded, paths::nativeStyle);
    require(folded == taken, "its separators are folded", typed);
    const bool keepsDots = mode == core::KeepLinksAndDots;
    require(keepsDots || !paths::hasDotComponent(taken, paths::nativeStyle), "dots are resolved", typed);
    require(GetStringFromIRI(GetIRIFromString(taken)) == taken, "its location leads back to it", typed);
}

void examineIntake(const std::u16string& typed, core::ResolveSymbolicLinks mode) {
    std::u16string text = typed;
    bool isLocation = false;
    core::Status status;
    try {
        const filemanip::TakenPath taken = filemanip::takeInPath(text, mode, isLocation, status);
        const bool isRefused = taken == filemanip::TakenPath::refused;
        require(isRefused == (status.code == core::Status::failure), "what is refused is a failure", typed);
        require(isLocation == (taken == filemanip::TakenPath::location), "locations are told", typed);
        if (isRefused) {
            require(text == typed, "a refused text stays as it is", typed);
            require(core::detail::GetID(status.exception) == invalidLocation, "it is told as such", typed);
            return;
        }
        if (taken == filemanip::TakenPath::localPath) examineLocalPath(typed, text, mode);
    } catch (const vfs::InvalidIRIException&) {
        require(vfs::hasIRIPrefix(typed), "only a text with a scheme can be no location", typed);
        return;
    }
    const std::u16string once = text;
    bool ignored = false;
    filemanip::takeInPath(text, mode, ignored, status);
    require(text == once, "what was taken in is taken in as it is", typed);
    require(GetIRIFromString(text) == GetIRIFromString(once), "and is one location", typed);
}

template <class Item>
bool isThere(const std::u16string& typed, const Environment& environment) {
    try {
        return filemanip::locationExists<Item>(typed, environment.system, environment.currentFolder);
    } catch (const vfs::InvalidIRIException&) {
        require(vfs::hasIRIPrefix(typed), "only a text with a scheme can be no location", typed);
    } catch (const vfs::UnsupportedIRISchemeException&) {
        require(vfs::hasIRIPrefix(typed), "only a text with a scheme can have an unknown one", typed);
    }
    return false;
}

}  // namespace

void examine(std::string_view input) {
    static const Environment environment;
    const std::u16string typed = textOf(input);
    if (typed.empty()) return;
    examineIntake(typed, core::KeepLinks);
    examineIntake(typed, core::KeepLinksAndDots);
    const bool isFile = isThere<vfs::File>(typed, environment);
    const bool isFolder = isThere<vfs::Folder>(typed, environment);
    require(!(isFile && isFolder), "nothing is a file and a folder", typed);
}

}  // namespace korvex::fuzz
