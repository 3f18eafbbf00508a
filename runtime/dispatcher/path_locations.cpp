// Comparing locations that may have gone from disk.
#include "runtime/dispatcher/path_locations.h"

#include <optional>

#include "platform/message_catalog.h"
#include "platform/storage_utility.h"
#include "runtime/paths/path_text.h"
#include "runtime/storage/location.h"

namespace korvex::runtime::dispatcher {

namespace vfs = foundation::storage::vfs;

namespace {

bool isLocal(const vfs::AbsoluteIRI& location) { return location.parts().scheme == storage::localScheme; }

/// None when nothing is there, or the storage does not tell.
std::optional<vfs::AbsoluteIRI> canonicalIfThere(const vfs::AbsoluteIRI& location) {
    try {
        return vfs::Folder(location, Velquist::KorvexStorageSystem::GetStorageSystemReference())
            .getCanonicalLocation();
    } catch (const vfs::Exception&) {
        return std::nullopt;
    } catch (const vfs::UnsupportedIRISchemeException&) {
        return std::nullopt;
    }
}

}  // namespace

bool areSameNames(std::u16string_view a, std::u16string_view b, paths::PathStyle style) {
    if (style == paths::PathStyle::posix) return a == b;
    return fl::i18n::detail::compare(a.data(), a.size(), b.data(), b.size(),
                                     fl::i18n::detail::case_insensitive) == 0;
}

bool areSameLocations(const vfs::AbsoluteIRI& a, const vfs::AbsoluteIRI& b) {
    if (!isLocal(a) || !isLocal(b)) return a == b;
    return areSameNames(a.parts().host, b.parts().host, paths::nativeStyle) &&
           areSameNames(a.parts().path, b.parts().path, paths::nativeStyle);
}

vfs::CanonicalAbsoluteIRI nearestCanonicalLocation(const vfs::AbsoluteIRI& location) {
    std::u16string missing;
    vfs::AbsoluteIRI existing = location;
    for (;;) {
        if (const std::optional<vfs::AbsoluteIRI> canonical = canonicalIfThere(existing)) {
            if (missing.empty()) return vfs::CanonicalAbsoluteIRI(*canonical);
            const vfs::AbsoluteIRI whole(*canonical, missing);
            if (!paths::hasDotComponent(missing, paths::PathStyle::posix)) {
                return vfs::CanonicalAbsoluteIRI(whole);
            }
            std::u16string path = whole.parts().path;
            paths::removeSingleDots(path, paths::PathStyle::posix);
            paths::resolveDoubleDots(path, paths::PathStyle::posix);
            // Without its dots it may name something that is there after all.
            return nearestCanonicalLocation(
                storage::makeLocation(whole.parts().scheme, whole.parts().host, std::move(path)));
        }
        if (!existing.hasParent()) return vfs::CanonicalAbsoluteIRI(location);
        missing = missing.empty() ? existing.getName() : existing.getName() + u'/' + missing;
        existing = existing.getParent();
    }
}

vfs::CanonicalAbsoluteIRI locationInCanonicalFolder(const vfs::AbsoluteIRI& location) {
    const std::u16string& name = location.getName();
    if (!location.hasParent() || name == u"." || name == u"..") return nearestCanonicalLocation(location);
    return vfs::CanonicalAbsoluteIRI(vfs::AbsoluteIRI(nearestCanonicalLocation(location.getParent()), name));
}

std::u16string shownText(const vfs::AbsoluteIRI& location) {
    if (isLocal(location)) return vfs::fromAbsoluteIRI(location);
    std::u16string text = location.toString();
    foundation::storage::utility::decodeURL(text);
    return text;
}

}  // namespace korvex::runtime::dispatcher
