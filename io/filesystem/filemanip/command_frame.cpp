// What all commands have in common, and the module's two empty lifecycle functions.
#include "io/filesystem/filemanip/command_frame.h"

#include "platform/filesystem_core.h"
#include "platform/message_identifiers.h"
#include "platform/string_matrix.h"

namespace korvex::filemanip {

void checkArgumentCounts(const ArgumentLimits& limits, int nlhs, int nrhs) {
    if (nlhs > limits.mostOutputs) matrix::detail::error_maxlhs();
    if (nrhs > limits.mostArguments) matrix::detail::error_maxrhs();
    if (nrhs < limits.fewestArguments) matrix::detail::error_minrhs();
}

std::u16string_view textOfArgument(const kxArray* argument, bool strict) {
    if (argument == nullptr) raise(KORVEX::string::MustBeStringScalarOrCharacterVector());
    const bool isCharacter = kxGetClassID(argument) == kxCHAR_CLASS;
    if (isCharacter && (!strict || Velquist::String::isCharacterVector(argument))) {
        const std::span<const char16_t> units = kxGetChars(argument);
        return {units.data(), units.size()};
    }
    if (!Velquist::String::isString(argument) || kxGetNumberOfElements(argument) != 1) {
        raise(KORVEX::string::MustBeStringScalarOrCharacterVector());
    }
    const std::optional<std::u16string>& text = Velquist::String::getString(argument)[0];
    if (!text) raise(KORVEX::string::MissingNotSupported());
    return *text;
}

bool validateNameArgument(int nlhs, kxArray* plhs[], const kxArray* argument, std::string_view prefix) {
    using namespace Velquist::String;
    namespace core = korvex::io::filesystem::core;
    using IllegalName = foundation::core::except::Exception<KORVEX::FileManip::IllegalName>;

    if (isMissingScalarString(argument)) raise(KORVEX::string::MissingNotSupported());
    if (!isNonMissingScalarText(argument, characterVectorsOnly)) {
        // On purpose the bare component is the identifier.
        raise(KORVEX::string::MustBeSingleString(labelText(KORVEX::string::Argument())), "KORVEX:string");
    }
    if (isNonEmptyScalarText(argument, anyCharacterArray)) return true;

    // The text is the entry of all commands, the identifier that of the command.
    const std::string identifier = "KORVEX:" + std::string(prefix) + ":IllegalName";
    core::Status status;
    status.code = core::Status::failure;
    status.exception = boost::copy_exception(IllegalName(KORVEX::FileManip::IllegalName(), identifier));
    core::ResultHandler::HandleStatus(status, nlhs, plhs);
    return false;
}

}  // namespace korvex::filemanip

// Empty on purpose: the module has no start-up or shut-down work, and nothing may depend on these.
KX_MODULE_ENTRY void KLInitialize_filemanip();
KX_MODULE_ENTRY void KLTerminate_filemanip();
void KLInitialize_filemanip() {}
void KLTerminate_filemanip() {}
