// The exported entry of `fileattrib`.
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "io/filesystem/filemanip/command_frame.h"
#include "io/filesystem/filemanip/command_frame_limits.h"
#include "io/filesystem/filemanip/file_attributes.h"
#include "platform/filesystem_core.h"
#include "platform/services_io.h"
#include "platform/string_matrix.h"

namespace korvex::filemanip {

namespace core = korvex::io::filesystem::core;

namespace {

bool isEmptyText(const kxArray* argument) {
    using namespace Velquist::String;
    return isNonMissingScalarText(argument, characterVectorsOnly) &&
           !isNonEmptyScalarText(argument, characterVectorsOnly);
}

/// Narrows a structure to its first element for as long as the object lives.
class FirstElementOnly {
public:
    explicit FirstElementOnly(kxArray* structure) : structure_(structure), columns_(kxGetN(structure)) {
        kxSetN(structure_, 1);
    }
    ~FirstElementOnly() { kxSetN(structure_, columns_); }
    FirstElementOnly(const FirstElementOnly&) = delete;
    FirstElementOnly& operator=(const FirstElementOnly&) = delete;

private:
    kxArray* const structure_;
    const std::size_t columns_;
};

/// Of several matches only the first is shown, on purpose.
void printFirst(kxArray* structure) {
    const FirstElementOnly first(structure);
    services::io::uout output;
    output << services::io::GetNewline();
    ::io::legacy::ioPrintScalarStructureFieldsGroup(output, structure);
    output << services::io::GetNewline();
}

/// The outputs of a success.
void handOver(const core::Status& status, matrix::ArrayOwner structure, int nlhs, kxArray* plhs[]) {
    if (nlhs == 0 && structure) return printFirst(structure.get());
    matrix::ArrayOwner succeeded(kxCreateLogicalScalar(true));
    matrix::ArrayOwner second = std::move(structure);
    matrix::ArrayOwner identifier;
    if (nlhs >= 2 && !second) second = matrix::create(core::detail::GetUnicodeMessageTxt(status.exception));
    if (nlhs == 3) identifier.reset(kxCreateString(core::detail::GetID(status.exception).c_str()));

    // Set without being asked for, too, on purpose.
    plhs[0] = matrix::to_korvex(std::move(succeeded));
    if (nlhs >= 2) plhs[1] = matrix::to_korvex(std::move(second));
    if (nlhs == 3) plhs[2] = matrix::to_korvex(std::move(identifier));
}

}  // namespace

KX_MODULE_ENTRY void fileAttrib(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
    checkArgumentCounts(limits::fileAttrib, nlhs, nrhs);
    std::vector<std::u16string> paths;
    std::vector<std::u16string> options;
    for (int i = 0; i < nrhs; ++i) {
        if (!isEmptyText(prhs[i]) && !validateNameArgument(nlhs, plhs, prhs[i], "FILEATTRIB")) return;
        (i == 0 ? paths : options).emplace_back(textOfArgument(prhs[i], false));
    }
    FileAttributes engine;
    const core::Status status = engine.Process(std::move(paths), std::move(options));
    if (status.code != core::Status::success) return core::ResultHandler::HandleStatus(status, nlhs, plhs);
    handOver(status, engine.takeAttributes(), nlhs, plhs);
}

}  // namespace korvex::filemanip
