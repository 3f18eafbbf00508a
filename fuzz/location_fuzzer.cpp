// Locations: a text that parses, its parts, its way back to a text, and the folders above it.
#include <algorithm>
#include <optional>

#include "fuzz/support/fuzz_input.h"
#include "platform/filesystem_shared.h"
#include "platform/storage_utility.h"
#include "runtime/paths/path_style.h"
#include "runtime/paths/path_text.h"
#include "runtime/storage/location.h"

namespace korvex::fuzz {

namespace paths = korvex::runtime::paths;
namespace storage = korvex::runtime::storage;
namespace utility = foundation::storage::utility;
namespace vfs = foundation::storage::vfs;
using vfs::AbsoluteIRI;

namespace {

std::optional<AbsoluteIRI> locationOf(const std::u16string& text) {
    try {
        return AbsoluteIRI(text);
    } catch (const vfs::InvalidIRIException& error) {
        require(error.getInvalidIRIString() == text, "a text that does not parse is told as it is", text);
        return std::nullopt;
    }
}

void examineText(const std::u16string& text, bool isLocation) {
    const bool hasGoodSlashes = utility::hasValidNumberOfSlashes(text);
    require(!hasGoodSlashes || vfs::hasIRIPrefix(text), "good slashes stand behind a scheme", text);
    require(!isLocation || hasGoodSlashes, "a location has good slashes", text);

    std::u16string normalized = text;
    utility::normalizeURL(normalized);
    std::u16string twice = normalized;
    utility::normalizeURL(twice);
    require(twice == normalized, "a normalised text normalises to itself", text);
    require(!isLocation || locationOf(normalized), "a location's text parses when it is normalised", text);

    if (!isTextOfBytes(text)) return;
    require(storage::decodePath(storage::encodePath(text)) == text, "decoding undoes encoding", text);
}

void examineParts(const std::u16string& text, const AbsoluteIRI& location) {
    const AbsoluteIRI::Parts& parts = location.parts();
    const auto isCapital = [](char16_t unit) { return unit >= u'A' && unit <= u'Z'; };
    require(std::ranges::none_of(parts.scheme, isCapital), "a scheme is in small letters", text);
    require(parts.path.starts_with(u'/'), "a path begins with a separator", text);
    require(!location.getName().empty(), "every location has a name", text);
    const bool isWeb = storage::isWebScheme(parts.scheme);
    if (!isWeb) {
        require(parts.path == paths::foldSeparators(parts.path), "separators are folded", text);
    }
    if (!filesystemSharedFcns::containsDotOrDotDotExpression(text)) {
        const std::u16string path =
            isWeb ? storage::decodePath(parts.path.substr(0, parts.path.find_first_of(u"?#"))) : parts.path;
        require(!paths::hasDotComponent(path, paths::nativeStyle),
                "a text without dot components gives a location without them", text);
    }
}

void examineRoundTrip(const std::u16string& text, const AbsoluteIRI& location) {
    // Units that stand for bytes which together are a character are written as that character.
    if (!isTextOfBytes(location.parts().path)) return;
    const std::optional<AbsoluteIRI> again = locationOf(location.toString());
    require(again.has_value(), "the text of a location parses", text);
    require(*again == location, "the text of a location gives that location", text);
    require(again->toString() == location.toString(), "the text of a location is a fixed point", text);
    require(location.toString() == location, "a location equals its text", text);
}

void examineFoldersAbove(const std::u16string& text, AbsoluteIRI location) {
    const bool isWeb = storage::isWebScheme(location.parts().scheme);
    require(!location.isAncestorOf(location), "no location lies above itself", text);
    while (location.hasParent()) {
        const AbsoluteIRI parent = location.getParent();
        require(parent.parts().path.size() < location.parts().path.size(), "a parent is shorter", text);
        require(parent.isAncestorOf(location), "a parent lies above", text);
        require(!location.isAncestorOf(parent), "a parent does not lie below", text);
        if (!isWeb) {
            require(AbsoluteIRI(parent, location.getName()) == location, "parent and name give it back",
                    text);
        }
        location = parent;
    }
    try {
        (void)location.getParent();
        require(false, "a root has no parent", text);
    } catch (const vfs::Exception& error) {
        require(error.getErrorCode() == vfs::invalidLocation, "the parent of a root is told as such", text);
    }
}

}  // namespace

void examine(std::string_view input) {
    const std::u16string text = textOf(input);
    const std::optional<AbsoluteIRI> location = locationOf(text);
    examineText(text, location.has_value());
    if (!location) return;
    examineParts(text, *location);
    examineRoundTrip(text, *location);
    examineFoldersAbove(text, *location);
}

}  // namespace korvex::fuzz
