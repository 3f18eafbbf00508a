// Handles of files and folders, and the questions that are asked of locations.
#include <ostream>
#include <utility>

#include "platform/storage_vfs.h"
#include "runtime/paths/path_style.h"
#include "runtime/storage/location.h"
#include "runtime/storage/storage_system.h"
#include "runtime/text/encoding.h"

namespace foundation::storage::vfs {

namespace text = korvex::runtime::text;

File::File(const AbsoluteIRI& location, StorageSystemReference storage)
    : location_(location), storage_(std::move(storage)) {}

File::File(const Folder& parent, const std::u16string& name)
    : location_(parent.getLocation(), name), storage_(parent.storage()) {}

Folder File::getParent() const { return Folder(getLocation().getParent(), storage_); }

CanonicalAbsoluteIRI File::getCanonicalLocation() const {
    return storage_.system().provider(getLocation()).canonicalLocation(getLocation());
}

Folder::Folder(const AbsoluteIRI& location, StorageSystemReference storage)
    : location_(location), storage_(std::move(storage)) {}

Folder::Folder(const Folder& parent, const std::u16string& name)
    : location_(parent.getLocation(), name), storage_(parent.storage()) {}

Folder Folder::getParent() const { return Folder(getLocation().getParent(), storage_); }

bool Folder::folderExists() const { return exists(getLocation(), storage_) == provider::AsFolder; }

CanonicalAbsoluteIRI Folder::getCanonicalLocation() const {
    return storage_.system().provider(getLocation()).canonicalLocation(getLocation());
}

bool exists(const Item& item) {
    constexpr provider::ExistenceType wanted[] = {provider::AsFile, provider::AsFolder};
    const AbsoluteIRI location = getLocation(item);
    const StorageSystemReference& storage =
        item.which() == 0 ? boost::get<File>(item).storage() : boost::get<Folder>(item).storage();
    // On purpose no UnsupportedIRISchemeException here: where nobody stores anything, nothing can be there.
    StorageSystem::Provider* const provider = storage.system().find(location);
    return provider != nullptr && provider->existence(location) == wanted[item.which()];
}

provider::ExistenceType exists(const AbsoluteIRI& location, const StorageSystemReference& storage) {
    return storage.system().provider(location).existence(location);
}

provider::ExistenceTypeExtended existsExtended(const AbsoluteIRI& location,
                                               const StorageSystemReference& storage) {
    return storage.system().provider(location).extendedExistence(location);
}

AbsoluteIRI getLocation(const Item& item) {
    return item.which() == 0 ? boost::get<File>(item).getLocation() : boost::get<Folder>(item).getLocation();
}

std::u16string getName(const Item& item) { return getLocation(item).getName(); }

NativePath fromAbsoluteIRI(const AbsoluteIRI& location) {
    namespace paths = korvex::runtime::paths;
    const AbsoluteIRI::Parts& parts = location.parts();
    if (parts.scheme != korvex::runtime::storage::localScheme) return NativePath(parts.path);
    return NativePath(paths::toNativePath(parts.host, parts.path, paths::nativeStyle));
}

std::ostream& operator<<(std::ostream& stream, const AbsoluteIRI& location) {
    return stream << text::toDisplayBytes(location.toString());
}

std::ostream& operator<<(std::ostream& stream, const File& file) { return stream << file.getLocation(); }

std::ostream& operator<<(std::ostream& stream, const Folder& folder) {
    return stream << folder.getLocation();
}

}  // namespace foundation::storage::vfs

namespace foundation::storage::provider {

namespace {

template <std::size_t size>
std::ostream& writeName(std::ostream& stream, const char* const (&names)[size], int value) {
    const auto index = static_cast<std::size_t>(value);
    return index < size ? stream << names[index] : stream << value;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, ExistenceType type) {
    constexpr const char* names[] = {"AsFile", "AsFolder", "AsNeither"};
    return writeName(stream, names, type);
}

std::ostream& operator<<(std::ostream& stream, ExistenceTypeExtended type) {
    constexpr const char* names[] = {"File",         "LinkToFile", "Folder", "Device",
                                     "LinkToFolder", "BrokenLink", "Nothing"};
    return writeName(stream, names, type);
}

std::ostream& operator<<(std::ostream& stream, ReplacementPolicy policy) {
    constexpr const char* names[] = {"0", "ReplaceWritable", "ReplaceAny", "MergeFolder"};
    return writeName(stream, names, policy);
}

}  // namespace foundation::storage::provider
