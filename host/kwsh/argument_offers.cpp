// The table of arguments. Of several lines that fit the first one counts.
#include "host/kwsh/argument_offers.h"

#include <algorithm>
#include <array>
#include <limits>

#include "host/kwsh/help_pages.h"

namespace korvex::host {
namespace {

constexpr std::size_t any = std::numeric_limits<std::size_t>::max();
constexpr std::u16string_view linkOption = u"resolvesymboliclinks";

// clang-format off
constexpr std::array offers = {
    ArgumentOffer{"copyfile", u"copylinkbehavior", 3, any, Offer::nothing, u"osdefault preserve resolve"},
    ArgumentOffer{"copyfile", u"", 0, 1, Offer::files},
    ArgumentOffer{"copyfile", u"", 2, any, Offer::nothing, u"f writable copylinkbehavior"},
    ArgumentOffer{"movefile", u"movelinkbehavior", 3, any, Offer::nothing, u"preserve resolve"},
    ArgumentOffer{"movefile", u"", 0, 1, Offer::files},
    ArgumentOffer{"movefile", u"", 2, any, Offer::nothing, u"f writable movelinkbehavior"},
    ArgumentOffer{"mkdir", u"", 0, 0, Offer::folders},
    ArgumentOffer{"rmdir", linkOption, 2, any, Offer::nothing, u"", u"", u"true false"},
    ArgumentOffer{"rmdir", u"", 0, 0, Offer::folders},
    ArgumentOffer{"rmdir", u"", 1, any, Offer::nothing, u"s", linkOption},
    ArgumentOffer{"delete", linkOption, 2, any, Offer::nothing, u"", u"", u"true false"},
    ArgumentOffer{"delete", u"", 0, 0, Offer::files},
    ArgumentOffer{"delete", u"", 1, any, Offer::files, u"", linkOption},
    ArgumentOffer{"recycle", u"", 0, 0, Offer::nothing, u"on off"},
    ArgumentOffer{"dir", u"", 0, 0, Offer::files},
    ArgumentOffer{"what", u"", 0, any, Offer::folders, u"-casesensitive -caseinsensitive"},
    ArgumentOffer{"fileattrib", u"", 0, 0, Offer::files},
    ArgumentOffer{"fileattrib", u"", 1, 1, Offer::nothing, u"+w -w +a -a +h -h +s -s", u"", u"", true},
    ArgumentOffer{"fileattrib", u"", 3, 3, Offer::nothing, u"s"},
    ArgumentOffer{"isfile", u"", 0, 0, Offer::files},
    ArgumentOffer{"isfolder", u"", 0, 0, Offer::folders},
    ArgumentOffer{"cd", u"", 0, 0, Offer::folders},
    ArgumentOffer{"addpath", u"", 0, any, Offer::folders},
    ArgumentOffer{"rmpath", u"", 0, any, Offer::folders},
    ArgumentOffer{"load", u"", 0, 0, Offer::sourceFiles},
    ArgumentOffer{"package", u"", 0, 0, Offer::nothing, u"add remove list on off"},
    ArgumentOffer{"package", u"add", 1, 1, Offer::folders},
    ArgumentOffer{"package", u"remove", 1, 1, Offer::packages},
    ArgumentOffer{"package", u"", 3, 3, Offer::nothing, u"editable"},
    ArgumentOffer{"warning", u"", 0, 0, Offer::nothing, u"on off"},
    ArgumentOffer{"help", u"", 0, 0, Offer::helpTopics},
    ArgumentOffer{"help", u"", 1, 1, Offer::helpParts},
    ArgumentOffer{"clear", u"", 0, any, Offer::variables},
};
// clang-format on

}  // namespace

const ArgumentOffer* offerFor(std::string_view command,
                              const std::vector<std::optional<std::u16string>>& earlier) {
    const std::size_t at = earlier.size();
    const auto fits = [&](const ArgumentOffer& offer) {
        if (offer.command != command || at < offer.first || at > offer.last) return false;
        return offer.behind.empty() ||
               (at > 0 && earlier.back().has_value() && isSameWord(*earlier.back(), offer.behind));
    };
    const auto found = std::ranges::find_if(offers, fits);
    return found == offers.end() ? nullptr : &*found;
}

}  // namespace korvex::host
