// How wide the command window is.
#include "platform/listing.h"
#include "runtime/interpreter/output.h"

std::uint64_t ioGetNumWindowColumns() { return korvex::runtime::interpreter::windowColumns(); }
