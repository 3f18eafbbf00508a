// What is asked of a provider for many files at once.
#include "platform/many_files.h"

#include <exception>

#include "runtime/storage/storage_system.h"

namespace foundation::storage::vfs {

namespace storage = korvex::runtime::storage;

std::size_t firstUnwritable(const std::vector<Item>& items, const std::function<void()>& onFailure) {
    const auto providerOf = [](const Item& item) {
        return boost::apply_visitor(
            [](const auto& handle) { return &handle.storage().system().provider(handle.getLocation()); },
            item);
    };
    std::vector<AbsoluteIRI> locations;
    for (std::size_t begin = 0; begin < items.size();) {
        storage::Provider* const provider = providerOf(items[begin]);
        locations.clear();
        for (std::size_t i = begin; i < items.size() && providerOf(items[i]) == provider; ++i)
            locations.push_back(getLocation(items[i]));
        const std::size_t first = provider->firstUnwritable(locations, onFailure);
        if (first < locations.size()) return begin + first;
        begin += locations.size();
    }
    return items.size();
}

CopiesAhead::CopiesAhead(const std::vector<std::pair<const File*, const File*>>& files,
                         const provider::ReplacementPolicy& policy) {
    if (files.empty()) return;
    const auto providerOf = [](const File* file) {
        return file->storage().system().find(file->getLocation());
    };
    storage::Provider* const provider = providerOf(files.front().first);
    std::vector<storage::FilePair> pairs;
    pairs.reserve(files.size());
    for (const auto& [source, destination] : files) {
        if (provider == nullptr || providerOf(source) != provider || providerOf(destination) != provider)
            return;
        pairs.emplace_back(source->getLocation(), destination->getLocation());
    }
    try {
        work_ = provider->copyAhead(std::move(pairs), policy);
    } catch (const std::exception&) {
        // Then nothing is made ahead.
    }
}

}  // namespace foundation::storage::vfs
