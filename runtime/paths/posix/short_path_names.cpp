// File systems that keep one form of each name have no short ones to give.
#include "platform/short_path_names.h"

unsigned long GetShortPathNameW(const char16_t*, char16_t*, unsigned long) { return 0; }

unsigned long GetLongPathNameW(const char16_t*, char16_t*, unsigned long) { return 0; }
