// The user's locale as the system knows it.
#include "runtime/messages/process_locale.h"

#include <unicode/uloc.h>

namespace korvex::runtime::messages {

std::string processLocaleName() { return uloc_getDefault(); }

}  // namespace korvex::runtime::messages
