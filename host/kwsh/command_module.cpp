// The table of the module's exports, and loading it.
#include "host/kwsh/command_module.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "host/kwsh/failure.h"
#include "host/kwsh/values.h"
#include "platform/foundation_filesystem.h"

namespace korvex::host {
namespace {

struct ExportedCommand {
    std::string_view name;
    const char* symbol;
};

constexpr std::array exportedCommands = {
    ExportedCommand{"copyfile", "copyFile"},
    ExportedCommand{"movefile", "moveFile"},
    ExportedCommand{"mkdir", "makeDir"},
    ExportedCommand{"rmdir", "removeDir"},
    ExportedCommand{"fileattrib", "fileAttrib"},
    ExportedCommand{"delete", "bnFullDeleteFcn"},
    ExportedCommand{"recycle", "bnFullRecycleFcn"},
    ExportedCommand{"dir", "bnFullDirFcn"},
    ExportedCommand{"what", "bnFullWhatFcn"},
    ExportedCommand{"isfile", "bnIsFileFcn"},
    ExportedCommand{"isfolder", "bnIsFolderFcn"},
};

const ExportedCommand* findCommand(std::string_view name) {
    const auto found = std::ranges::find(exportedCommands, name, &ExportedCommand::name);
    return found == exportedCommands.end() ? nullptr : &*found;
}

using LifecycleFunction = void (*)();

void callIfExported(const runtime::process::SharedLibrary& library, const char* symbol) {
    if (void* address = library.symbol(symbol)) reinterpret_cast<LifecycleFunction>(address)();
}

/// Beside the program, where the build puts the library, or where an installation has its libraries.
std::u16string libraryPath(const std::u16string& programFolder) {
    const std::u16string file =
        runtime::process::SharedLibrary::fileName(u"kwfilemanip") + u"" KORVEX_MODULE_SUFFIX;
    const std::u16string beside = fl::filesystem::absolute(file, programFolder);
    if (fl::filesystem::exists(beside)) return beside;
    const std::u16string libraryFolder = fl::filesystem::absolute(u"" KORVEX_MODULE_FOLDER, programFolder);
    return fl::filesystem::absolute(file, libraryFolder);
}

}  // namespace

bool isModuleCommand(std::string_view name) { return findCommand(name) != nullptr; }

std::vector<std::string_view> moduleCommandNames() {
    std::vector<std::string_view> names;
    std::ranges::transform(exportedCommands, std::back_inserter(names), &ExportedCommand::name);
    return names;
}

CommandModule::~CommandModule() {
    if (library_) callIfExported(*library_, "KLTerminate_filemanip");
}

runtime::process::SharedLibrary& CommandModule::library() {
    if (!library_) {
        try {
            library_.emplace(libraryPath(programFolder_));
        } catch (const std::exception& error) {
            throw HostError("commandNotAvailable", messages::commandsNotLoaded(widen(error.what())));
        }
        callIfExported(*library_, "KLInitialize_filemanip");
    }
    return *library_;
}

CommandEntry CommandModule::find(std::string_view name) {
    const ExportedCommand* command = findCommand(name);
    if (command == nullptr) return nullptr;
    void* address = library().symbol(command->symbol);
    if (address == nullptr) {
        throw HostError("commandNotAvailable",
                        messages::commandNotExported(widen(name), widen(command->symbol)));
    }
    return reinterpret_cast<CommandEntry>(address);
}

}  // namespace korvex::host
