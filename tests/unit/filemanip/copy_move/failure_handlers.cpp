// The tables of what each error code is told as.
#include "tests/unit/filemanip/copy_move/failure_handlers.h"

#include <array>
#include <cstddef>

namespace korvex::filemanip::tests {

namespace {

/// The kinds of messages that a code can become.
enum class Told {
    general,            ///< the storage's message for a location, the system's failure for a path
    systemsFailure,     ///< the system's failure in any case
    alreadyThere,       ///< the destination is there, under the key "ResourceExists"
    perhapsThere,       ///< a file there cannot be written; anything else by the kind of the paths
    insideItself,       ///< passed over for an item that holds its target
    permission,         ///< by what the item is
    readOrWrite,        ///< by whether it happened at the source
    notFound,           ///< the source was not found
    notThere,           ///< where it happened nothing was found, under the key "ResourceNotFound"
    readOnly,           ///< it is read-only
    readOnlyNewFolder,  ///< of copyfile, whatever the command
};

using ByCode = std::array<Told, 13>;

// In the order of the codes: folderNotEmpty, invalidLocation, permissionDenied, resourceAlreadyExists,
// resourceNotFound, readOnlyProvider, fileTooLarge, resourceInUse, noSpaceLeft, ioError, internalError,
// unsupportedOperation, unknownError.
constexpr ByCode ofRun{Told::general,  Told::general, Told::readOrWrite, Told::general, Told::notFound,
                       Told::readOnly, Told::general, Told::general,     Told::general, Told::general,
                       Told::general,  Told::general, Told::general};
constexpr ByCode ofTransfer{Told::alreadyThere, Told::insideItself, Told::permission, Told::perhapsThere,
                            Told::notThere,     Told::general,      Told::general,    Told::general,
                            Told::general,      Told::general,      Told::general,    Told::general,
                            Told::general};
constexpr ByCode ofNewFolder{Told::general, Told::general, Told::readOnlyNewFolder, Told::general,
                             Told::general, Told::general, Told::general,           Told::general,
                             Told::general, Told::general, Told::general,           Told::general,
                             Told::general};
constexpr ByCode alwaysGeneral{Told::general, Told::general, Told::general, Told::general, Told::general,
                               Told::general, Told::general, Told::general, Told::general, Told::general,
                               Told::general, Told::general, Told::general};

constexpr std::array<const char*, 13> storageKeys{
    "folderNotEmpty",   "invalidLocation",  "permissionDenied", "resourceAlreadyExists",
    "resourceNotFound", "readOnlyProvider", "fileTooLarge",     "resourceInUse",
    "noSpaceLeft",      "ioError",          "internalError",    "unsupportedOperation",
    "unknownError"};

const ByCode& tableOf(Handler handler) {
    switch (handler) {
        case Handler::run: return ofRun;
        case Handler::transfer: return ofTransfer;
        case Handler::newFolder: return ofNewFolder;
        default: return alwaysGeneral;
    }
}

class Explanation {
public:
    Explanation(vfs::ErrorCode code, const Circumstances& known) : code_(code), known_(known) {}

    Failure of(Told told) const {
        switch (told) {
            case Told::general: return general(known_.failed);
            case Told::systemsFailure: return failure(command("OSError"), "KORVEX:FileManip:OSError");
            case Told::alreadyThere: return alreadyThere();
            case Told::perhapsThere: return perhapsThere();
            case Told::insideItself:
                return known_.target.starts_with(known_.item + u'/') ? noFailure() : general(known_.failed);
            case Told::permission: return permission();
            case Told::readOrWrite:
                return byForce(
                    known_.failed == known_.source ? "ReadPermissionError" : "WritePermissionError",
                    known_.failed);
            case Told::notFound:
                return hasScheme()
                           ? general(known_.failed)
                           : failure(command("FileNotFound"), "KORVEX:FILE:FileNotFound", {known_.source});
            case Told::notThere:
                return failure(byPaths("ResourceNotFound"), "KORVEX:virtualfilesystem:resourceNotFound",
                               {known_.failed});
            case Told::readOnly: return failure(command("ReadOnly"), "KORVEX:FILE:ReadOnly", {known_.failed});
            case Told::readOnlyNewFolder:
                return failure("KORVEX:COPYFILE:ReadOnlyDestination",
                               "KORVEX:virtualfilesystem:permissionDenied", {known_.source});
        }
        return noFailure();
    }

    Failure general(const std::u16string& at) const {
        if (!hasScheme()) return of(Told::systemsFailure);
        return plainFailure(
            std::string("KORVEX:virtualfilesystem:") + storageKeys.at(static_cast<std::size_t>(code_)), {at});
    }

private:
    bool hasScheme() const { return known_.setting.hasScheme(); }
    std::string command(const std::string& key) const {
        return "KORVEX:" + known_.setting.command.word + ':' + key;
    }
    std::string byPaths(const std::string& key) const {
        return hasScheme() ? "KORVEX:virtualfilesystem:" + key : command(key);
    }
    Failure byForce(std::string key, const std::u16string& at) const {
        if (known_.isForced) key += "WithFlag";
        return failure(command(key), "KORVEX:FILE:" + key, {at});
    }

    Failure alreadyThere() const {
        return failure(byPaths("ResourceExists"), "KORVEX:virtualfilesystem:resourceAlreadyExists",
                       {known_.target});
    }
    Failure perhapsThere() const {
        if (known_.targetKind == provider::AsFile) return permission();
        return hasScheme() ? general(known_.failed) : alreadyThere();
    }
    Failure permission() const {
        switch (known_.itemKind) {
            case provider::AsFile:
                return byForce(known_.failed == known_.item ? "ReadPermissionError" : "WritePermissionError",
                               known_.failed);
            case provider::AsFolder: return byForce("FolderPermissionError", known_.item);
            default: return of(Told::systemsFailure);
        }
    }

    const vfs::ErrorCode code_;
    const Circumstances& known_;
};

}  // namespace

Failure explained(Handler handler, vfs::ErrorCode code, const Circumstances& circumstances) {
    const Explanation explanation(code, circumstances);
    switch (handler) {
        case Handler::nobody: return noFailure();
        case Handler::currentFolder: return plainFailure("KORVEX:services:cwdIsInvalid");
        // These two speak of the destination, wherever it happened.
        case Handler::ownContents: return explanation.general(circumstances.destination);
        case Handler::newFolder:
            if (code != vfs::permissionDenied) return explanation.general(circumstances.destination);
            [[fallthrough]];
        default: return explanation.of(tableOf(handler).at(static_cast<std::size_t>(code)));
    }
}

}  // namespace korvex::filemanip::tests
