// Entries whose commands are not there yet: they check their argument counts and say so.
#include <stdexcept>
#include <string>

#include "io/filesystem/filemanip/command_frame_limits.h"
#include "io/filesystem/filemanip/command_frame.h"

namespace korvex::filemanip {

namespace {

[[noreturn]] void refuse(const ArgumentLimits& limits, int nlhs, int nrhs, const char* command) {
    checkArgumentCounts(limits, nlhs, nrhs);
    throw std::runtime_error(std::string("The command ") + command + " is not available in this version.");
}

}  // namespace

KX_MODULE_ENTRY void fileAttrib(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
    refuse(limits::fileAttrib, nlhs, nrhs, "fileattrib");
}

KX_MODULE_ENTRY void bnFullDeleteFcn(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
    refuse(limits::fullDelete, nlhs, nrhs, "delete");
}

KX_MODULE_ENTRY void bnFullRecycleFcn(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
    refuse(limits::fullRecycle, nlhs, nrhs, "recycle");
}

KX_MODULE_ENTRY void bnFullWhatFcn(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
    refuse(limits::fullWhat, nlhs, nrhs, "what");
}

}  // namespace korvex::filemanip
