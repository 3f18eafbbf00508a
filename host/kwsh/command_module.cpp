// The table of the module's exports, and loading it.
#include "host/kwsh/command_module.h"

#include <algorithm>
#include <array>

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

}  // namespace

bool isModuleCommand(std::string_view name) { return findCommand(name) != nullptr; }

CommandModule::~CommandModule() {
    if (library_) callIfExported(*library_, "KLTerminate_filemanip");
}

runtime::process::SharedLibrary& CommandModule::library() {
    if (!library_) {
        using runtime::process::SharedLibrary;
        const std::u16string path =
            fl::filesystem::absolute(SharedLibrary::fileName(u"kwfilemanip"), folder_);
        try {
            library_.emplace(path);
        } catch (const std::exception& error) {
            throw HostError("moduleNotLoaded",
                            u"The commands cannot be loaded: " + widen(error.what()) + u".");
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
        throw HostError("commandNotExported", u"The library of the commands does not have '" + widen(name) +
                                                  u"': it has no export of the name " +
                                                  widen(command->symbol) + u".");
    }
    return reinterpret_cast<CommandEntry>(address);
}

}  // namespace korvex::host
