// The list of the providers that the contract is for, and what its suites share.
#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "tests/contract/provider_under_test.h"

namespace korvex::tests {

namespace {

constexpr Abilities readingOfFilesOnly{
    .hasFolders = false, .hasLinks = false, .canList = false, .canWrite = false, .guardsFolders = false};

constexpr Abilities ofDisk{.guardsFolders = false};
constexpr Abilities ofOrdinaryUser{};
constexpr Abilities ofMemory{.hasLinks = false};

constexpr ProviderCase providerCases[] = {
    {"file", ofDisk, makeLocalProviderUnderTest},
    {"file_of_ordinary_user", ofOrdinaryUser, makeLocalProviderOfOrdinaryUserUnderTest},
    {"memory", ofMemory, makeMemoryProviderUnderTest},
    {"file_watched", ofDisk, makeWatchedLocalProviderUnderTest},
    {"memory_watched", ofMemory, makeWatchedMemoryProviderUnderTest},
    {"memory_by_items", ofMemory, makeMemoryProviderByItemsUnderTest},
    {"http", readingOfFilesOnly, makeHttpProviderUnderTest},
    {"https", readingOfFilesOnly, makeHttpsProviderUnderTest},
};

}  // namespace

void ProviderUnderTest::makeFolder(const std::u16string&) { throw std::logic_error("it has no folders"); }

void ProviderUnderTest::makeLink(const std::u16string&, const std::u16string&) {
    throw std::logic_error("it has no links");
}

std::string ProviderUnderTest::contentOf(const std::u16string&) const {
    throw std::logic_error("nobody looks at its content");
}

std::u16string ProviderUnderTest::linkTargetOf(const std::u16string&) const {
    throw std::logic_error("it has no links");
}

bool ProviderUnderTest::hasWriteBits(const std::u16string&) const {
    throw std::logic_error("it has no write bits");
}

ProviderUnderTest::Time ProviderUnderTest::changeTimeOf(const std::u16string&) const {
    throw std::logic_error("nobody asks for its times");
}

void ProviderUnderTest::setChangeTime(const std::u16string&, Time) {
    throw std::logic_error("nobody asks for its times");
}

std::ostream& operator<<(std::ostream& stream, const ProviderCase& tested) { return stream << tested.name; }

std::vector<ProviderCase> allProviders() { return {std::begin(providerCases), std::end(providerCases)}; }

std::vector<ProviderCase> providersWith(bool Abilities::*ability) {
    std::vector<ProviderCase> able;
    std::copy_if(std::begin(providerCases), std::end(providerCases), std::back_inserter(able),
                 [=](const ProviderCase& tested) { return tested.abilities.*ability; });
    return able;
}

std::string nameOfProvider(const testing::TestParamInfo<ProviderCase>& tested) { return tested.param.name; }

void ProviderContract::expectNothing(const std::u16string& path) const {
    EXPECT_EQ(existence(path), provider::AsNeither);
    EXPECT_EQ(extendedExistence(path), provider::ExtendedNothing);
    EXPECT_FALSE(vfs::exists(fileHandle(path)));
    EXPECT_FALSE(vfs::exists(folderHandle(path)));
}

}  // namespace korvex::tests
