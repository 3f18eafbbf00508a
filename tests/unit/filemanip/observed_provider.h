// Storage providers for tests that check which questions the commands ask of a storage.
#pragma once

#include <exception>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "runtime/storage/provider.h"

namespace korvex::filemanip::tests {

/// Hands every question on to another provider, with a log of those for existence, and failures where a test
/// wants them. Several providers may write to one log.
class ObservedProvider : public runtime::storage::Provider {
public:
    using AbsoluteIRI = runtime::storage::AbsoluteIRI;

    /// `log` must live as long as the provider is asked; it gets the texts of the locations.
    ObservedProvider(std::vector<std::u16string>& log, std::shared_ptr<Provider> observed)
        : log_(log), observed_(std::move(observed)) {}

    runtime::storage::ExistenceType existence(const AbsoluteIRI& location) override {
        log_.push_back(location.toString());
        if (failure && location.getName() == failingName) std::rethrow_exception(failure);
        return observed_->existence(location);
    }
    runtime::storage::ExistenceTypeExtended extendedExistence(const AbsoluteIRI& location) override {
        return observed_->extendedExistence(location);
    }
    runtime::storage::CanonicalAbsoluteIRI canonicalLocation(const AbsoluteIRI& location) override {
        return observed_->canonicalLocation(location);
    }

    /// What the question for a location of the name `failingName` raises; nothing while it is null.
    std::exception_ptr failure;
    std::u16string failingName;

private:
    std::vector<std::u16string>& log_;
    std::shared_ptr<Provider> observed_;
};

/// Knows the locations that a test names, by their texts, and nothing else. It has no links.
class ListedLocations : public runtime::storage::Provider {
public:
    using AbsoluteIRI = runtime::storage::AbsoluteIRI;

    runtime::storage::ExistenceType existence(const AbsoluteIRI& location) override {
        const auto entry = entries.find(location.toString());
        return entry == entries.end() ? foundation::storage::provider::AsNeither : entry->second;
    }
    runtime::storage::ExistenceTypeExtended extendedExistence(const AbsoluteIRI& location) override {
        switch (existence(location)) {
            case foundation::storage::provider::AsFile: return foundation::storage::provider::ExtendedFile;
            case foundation::storage::provider::AsFolder:
                return foundation::storage::provider::ExtendedFolder;
            default: return foundation::storage::provider::ExtendedNothing;
        }
    }
    runtime::storage::CanonicalAbsoluteIRI canonicalLocation(const AbsoluteIRI& location) override {
        return runtime::storage::CanonicalAbsoluteIRI(location);
    }

    std::map<std::u16string, runtime::storage::ExistenceType> entries;
};

}  // namespace korvex::filemanip::tests
