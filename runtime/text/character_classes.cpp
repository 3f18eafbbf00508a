// The classes of single units, by ASCII and not by the process's locale.
#include "platform/character_classes.h"

bool kwu_isalpha(char16_t unit) noexcept {
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
}

bool kwu_isalnum(char16_t unit) noexcept { return kwu_isalpha(unit) || (unit >= u'0' && unit <= u'9'); }
