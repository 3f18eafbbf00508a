// A storage provider with the means to put something on its storage, as the contract tests need it.
//
// A further provider is one class and one row in providers_under_test.cpp. A suite of the contract runs for
// the providers with the abilities that it is about:
//
//   INSTANTIATE_TEST_SUITE_P(Contract, ReadingLinks, testing::ValuesIn(providersWith(&Abilities::hasLinks)),
//                            nameOfProvider);
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "platform/storage_vfs.h"
#include "runtime/storage/storage_system.h"

namespace korvex::tests {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

using vfs::AbsoluteIRI;

/// Where a provider lawfully differs.
struct Abilities {
    bool hasFolders = true;  ///< and `.` and `..` are looked up on the storage, not only in the text
    bool hasLinks = true;
    bool canList = true;
    bool canWrite = true;
    /// Nothing goes in or out of a folder that may not be written. On a disk a superuser may all the same.
    bool guardsFolders = true;
};

class ProviderUnderTest {
public:
    using Time = std::chrono::sys_seconds;

    virtual ~ProviderUnderTest() = default;

    /// A storage system with this provider alone.
    virtual vfs::StorageSystemReference storage() const = 0;
    /// The top of the storage; a folder where there are folders.
    virtual AbsoluteIRI root() const = 0;
    /// Where the items of a test go: at the beginning empty, its location canonical.
    virtual AbsoluteIRI home() const = 0;

    /// Put an item on the storage by other ways than the provider's own, and the folders on the way with it.
    /// `path` is relative to home, decoded, its components separated by "/".
    virtual void makeFile(const std::u16string& path, const std::string& content = "content") = 0;
    virtual void makeFolder(const std::u16string& path);
    /// `target` is relative to the link, or absolute.
    virtual void makeLink(const std::u16string& path, const std::u16string& target);

    /// What the storage holds, found out by other ways than the provider's own where there are any.
    virtual std::string contentOf(const std::u16string& path) const;
    virtual std::u16string linkTargetOf(const std::u16string& path) const;
    virtual bool hasWriteBits(const std::u16string& path) const;
    virtual Time changeTimeOf(const std::u16string& path) const;
    virtual void setChangeTime(const std::u16string& path, Time time);

    AbsoluteIRI locationOf(const std::u16string& path) const { return AbsoluteIRI(home(), path); }
};

struct ProviderCase {
    const char* name;
    Abilities abilities;
    std::unique_ptr<ProviderUnderTest> (*make)();
};

std::ostream& operator<<(std::ostream& stream, const ProviderCase& tested);

std::vector<ProviderCase> allProviders();
std::vector<ProviderCase> providersWith(bool Abilities::*ability);
/// The name of a test's instance.
std::string nameOfProvider(const testing::TestParamInfo<ProviderCase>& tested);

/// The base of the contract's suites.
class ProviderContract : public testing::TestWithParam<ProviderCase> {
protected:
    provider::ExistenceType existence(const std::u16string& path) const {
        return vfs::exists(provider_->locationOf(path), provider_->storage());
    }
    provider::ExistenceTypeExtended extendedExistence(const std::u16string& path) const {
        return vfs::existsExtended(provider_->locationOf(path), provider_->storage());
    }
    vfs::File fileHandle(const std::u16string& path) const {
        return vfs::File(provider_->locationOf(path), provider_->storage());
    }
    vfs::Folder folderHandle(const std::u16string& path) const {
        return vfs::Folder(provider_->locationOf(path), provider_->storage());
    }
    AbsoluteIRI canonical(const std::u16string& path) const {
        return fileHandle(path).getCanonicalLocation();
    }
    /// Expects that nothing is there, whoever asks.
    void expectNothing(const std::u16string& path) const;

    std::unique_ptr<ProviderUnderTest> provider_ = GetParam().make();
};

std::unique_ptr<ProviderUnderTest> makeLocalProviderUnderTest();
/// The same for a process that is not the superuser.
std::unique_ptr<ProviderUnderTest> makeLocalProviderOfOrdinaryUserUnderTest();
std::unique_ptr<ProviderUnderTest> makeMemoryProviderUnderTest();
/// The same behind a provider that only watches, and one that does what is done to folders item by item.
std::unique_ptr<ProviderUnderTest> makeWatchedLocalProviderUnderTest();
std::unique_ptr<ProviderUnderTest> makeWatchedMemoryProviderUnderTest();
std::unique_ptr<ProviderUnderTest> makeMemoryProviderByItemsUnderTest();
std::unique_ptr<ProviderUnderTest> makeHttpProviderUnderTest();
std::unique_ptr<ProviderUnderTest> makeHttpsProviderUnderTest();

}  // namespace korvex::tests
