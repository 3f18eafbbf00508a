// Entries whose commands are not there yet: they check their argument counts and say so.
#include <stdexcept>
#include <string>

#include "io/filesystem/filemanip/argument_limits.h"
#include "io/filesystem/filemanip/command_frame.h"

namespace korvex::filemanip {

namespace {

[[noreturn]] void refuse(const ArgumentLimits& limits, int nlhs, int nrhs, const char* command) {
    checkArgumentCounts(limits, nlhs, nrhs);
    throw std::runtime_error(std::string("The command ") + command + " is not available in this version.");
}

}  // namespace

KW_MODULE_EXPORT void copyFile(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
    refuse(limits::copyFile, nlhs, nrhs, "copyfile");
}

KW_MODULE_EXPORT void moveFile(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
    refuse(limits::moveFile, nlhs, nrhs, "movefile");
}

KW_MODULE_EXPORT void makeDir(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
    refuse(limits::makeDir, nlhs, nrhs, "mkdir");
}

KW_MODULE_EXPORT void removeDir(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
    refuse(limits::removeDir, nlhs, nrhs, "rmdir");
}

KW_MODULE_EXPORT void fileAttrib(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
    refuse(limits::fileAttrib, nlhs, nrhs, "fileattrib");
}

KW_MODULE_EXPORT void bnFullDeleteFcn(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
    refuse(limits::fullDelete, nlhs, nrhs, "delete");
}

KW_MODULE_EXPORT void bnFullRecycleFcn(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
    refuse(limits::fullRecycle, nlhs, nrhs, "recycle");
}

KW_MODULE_EXPORT void bnFullDirFcn(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
    refuse(limits::fullDir, nlhs, nrhs, "dir");
}

KW_MODULE_EXPORT void bnFullWhatFcn(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
    refuse(limits::fullWhat, nlhs, nrhs, "what");
}

}  // namespace korvex::filemanip
