// What a provider does that only reads: it refuses.
#include "runtime/storage/provider.h"

namespace korvex::runtime::storage {

namespace vfs = foundation::storage::vfs;

namespace {

[[noreturn]] void refuseToWrite(const AbsoluteIRI& location) {
    throw vfs::Exception(vfs::readOnlyProvider, location);
}

}  // namespace

bool Provider::isSameFile(const AbsoluteIRI&, const AbsoluteIRI&) noexcept { return false; }
bool Provider::isSameFolder(const AbsoluteIRI&, const AbsoluteIRI&) noexcept { return false; }

bool Provider::isWritable(const AbsoluteIRI&) { return false; }
std::size_t Provider::firstUnwritable(std::span<const AbsoluteIRI> locations,
                                      const std::function<void()>& onFailure) {
    for (std::size_t i = 0; i < locations.size(); ++i) {
        try {
            if (!isWritable(locations[i])) return i;
        } catch (const vfs::Exception&) {
            onFailure();
        }
    }
    return locations.size();
}

void Provider::setWritable(const AbsoluteIRI& location, bool) { refuseToWrite(location); }

std::vector<ListedEntry> Provider::list(const AbsoluteIRI& folder, std::u16string_view) {
    throw vfs::Exception(vfs::unsupportedOperation, folder, u"listing");
}

std::shared_ptr<const FoundPlace> Provider::hold(const AbsoluteIRI&) { return nullptr; }

std::unique_ptr<InputStream> Provider::read(const AbsoluteIRI& file) {
    throw vfs::Exception(vfs::unsupportedOperation, file, u"reading");
}
std::unique_ptr<OutputStream> Provider::write(const AbsoluteIRI& file, ReplacementPolicy) {
    refuseToWrite(file);
}

void Provider::copyFile(const AbsoluteIRI&, const AbsoluteIRI& destination, ReplacementPolicy) {
    refuseToWrite(destination);
}
std::unique_ptr<WorkAhead> Provider::copyAhead(std::vector<FilePair>, ReplacementPolicy) { return nullptr; }

void Provider::moveFile(const AbsoluteIRI& source, const AbsoluteIRI&, ReplacementPolicy) {
    refuseToWrite(source);
}
void Provider::copyFolder(const AbsoluteIRI&, const AbsoluteIRI& destination, ReplacementPolicy) {
    refuseToWrite(destination);
}
void Provider::moveFolder(const AbsoluteIRI& source, const AbsoluteIRI&, ReplacementPolicy) {
    refuseToWrite(source);
}
void Provider::removeFile(const AbsoluteIRI& file) { refuseToWrite(file); }
void Provider::removeFolder(const AbsoluteIRI& folder, FolderRemovalPolicy) { refuseToWrite(folder); }
void Provider::createFolder(const AbsoluteIRI& folder) { refuseToWrite(folder); }
void Provider::createFolderRecursive(const AbsoluteIRI& folder) { refuseToWrite(folder); }

void Provider::makeDurable(const AbsoluteIRI&) {}

}  // namespace korvex::runtime::storage
