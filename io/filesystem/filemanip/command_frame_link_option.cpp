// The value of the option "resolvesymboliclinks", which `rmdir` and `delete` share.
#include "io/filesystem/filemanip/command_frame_link_option.h"

#include <string>

#include "io/filesystem/filemanip/command_frame.h"
#include "platform/message_identifiers.h"

namespace korvex::filemanip {

bool linkOptionValue(const kxArray* value) {
    using KORVEX::io::common::validation::InternalError;
    const kxClassID classID = value == nullptr ? kxUNKNOWN_CLASS : kxGetClassID(value);
    const bool isDouble = classID == kxDOUBLE_CLASS;
    if ((isDouble || classID == kxLOGICAL_CLASS) && kxGetNumberOfElements(value) == 1) {
        return kxGetScalar(value) > 0;
    }
    raise(InternalError(std::string(isDouble ? "Expected double scalar" : "Expected logical scalar")));
}

}  // namespace korvex::filemanip
