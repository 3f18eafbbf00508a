// Owner of an open file or folder, as the whole runtime has it.
#pragma once

#include "runtime/process/posix/file_descriptor.h"

namespace korvex::runtime::storage::posix {

using process::FileDescriptor;

}  // namespace korvex::runtime::storage::posix
