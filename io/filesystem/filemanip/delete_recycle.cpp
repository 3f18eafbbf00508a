// `delete`: removes files by name, for good or into the recycle bin. Nearly every failure is a warning, and
// the command goes on with the next name.
#include <array>
#include <string>

#include "io/filesystem/filemanip/command_frame.h"
#include "io/filesystem/filemanip/command_frame_limits.h"
#include "io/filesystem/filemanip/command_frame_link_option.h"
#include "io/filesystem/filemanip/delete_recycle_items.h"
#include "io/filesystem/filemanip/delete_recycle_state.h"
#include "platform/filesystem_core.h"
#include "platform/kx.h"
#include "platform/message_identifiers.h"
#include "platform/string_matrix.h"

namespace korvex::filemanip {

namespace core = korvex::io::filesystem::core;

namespace {

bool isNumber(const kxArray* argument) { return kxGetClassID(argument) == kxDOUBLE_CLASS; }

bool isOneText(const kxArray* argument) {
    return Velquist::String::isNonMissingScalarText(argument, Velquist::String::characterVectorsOnly);
}

std::u16string readText(const kxArray* argument) { return std::u16string(textOfArgument(argument, true)); }

/// Whether the last two arguments are the option pair: it can stand only at the very end, behind a name.
bool endsWithLinkOption(int nrhs, const kxArray* prhs[]) {
    if (nrhs < 3) return false;
    const kxArray* rule = prhs[nrhs - 2];
    if (isNumber(rule) || !isOneText(rule)) return false;
    std::u16string text = readText(rule);
    return core::validateRuleName(text, linkOptionName);
}

/// A number is no file name: it is the handle of something drawn.
void deleteGraphics(const kxArray* handle) {
    if (kxIsEmpty(handle)) return;
    std::array<kxArray*, 1> outputs{};
    std::array<const kxArray*, 2> arguments{handle, nullptr};
    inCallFcn(0, outputs.data(), 1, arguments.data(), "korvex.graphics.internal.hgdelete");
    // Not asked for; a function may give it all the same.
    const matrix::ArrayOwner dropped(outputs[0]);
}

}  // namespace

KX_MODULE_ENTRY void bnFullDeleteFcn(int nlhs, kxArray*[], int nrhs, const kxArray* prhs[]) {
    checkArgumentCounts(limits::fullDelete, nlhs, nrhs);
    DeletionOptions options{getRecycleState(), false};
    int names = nrhs;
    if (endsWithLinkOption(nrhs, prhs)) {
        options.resolveLinks = linkOptionValue(prhs[nrhs - 1]);
        names -= 2;
    }
    // Strictly in order: the names ahead of one that is refused are gone by then, and stay so.
    for (int i = 0; i < names; ++i) {
        const kxArray* argument = prhs[i];
        if (isNumber(argument)) {
            deleteGraphics(argument);
        } else if (isOneText(argument)) {
            deleteOneName(readText(argument), options);
        } else {
            raise(KORVEX::string::MustBeSingleString(labelText(KORVEX::string::Name())));
        }
    }
}

}  // namespace korvex::filemanip
