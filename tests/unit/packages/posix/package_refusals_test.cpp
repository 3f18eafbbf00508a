// A package registry that cannot be read or written.
#include <sys/stat.h>

#include "tests/support/posix/ordinary_user.h"
#include "tests/unit/packages/registered_packages.h"

namespace korvex::runtime::packages {
namespace {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
using configuration::ConfigurationError;
using io::filesystem::core::GetClaimingPackage;
using io::filesystem::core::GetCurrentPackageRegistry;
using Velquist::KorvexComponents::ComponentIdentifier;
using Velquist::KorvexComponents::KPMFeature;

class PackageRefusalsTest : public PackageTest {
protected:
    PackageRefusalsTest() {
        scratch_.makeFolder("p");
        registerPackage(u"p", u"P", false);
        fs::permissions(configurationFolder(), fs::perms::all);
    }

    template <class Question>
    void expectIoErrorAtTheRegistry(const Question& question) {
        try {
            question();
            FAIL() << "an unreadable registry was read";
        } catch (const vfs::Exception& error) {
            EXPECT_EQ(error.getErrorCode(), vfs::ioError);
            EXPECT_EQ(vfs::fromAbsoluteIRI(error.getLocation()).text(), registryFile().u16string());
            EXPECT_THAT(error.getSystemText(), testing::HasSubstr("Permission denied"));
        }
    }
};

TEST_F(PackageRefusalsTest, AnUnreadableRegistryIsAnIoErrorForWhoeverAsks) {
    const auto registry = GetCurrentPackageRegistry();
    const ComponentIdentifier owner = GetClaimingPackage(folderAt(u"p")).value();
    fs::permissions(registryFile(), fs::perms::none);
    // Another process has replaced it: what was read before does not count any more.
    fs::last_write_time(registryFile(), fs::file_time_type::clock::now());
    const korvex::tests::OrdinaryUser user;
    expectIoErrorAtTheRegistry([&] { GetClaimingPackage(folderAt(u"p")); });
    expectIoErrorAtTheRegistry([&] { GetCurrentPackageRegistry(); });
    expectIoErrorAtTheRegistry([&] { registry->package(owner); });
    expectIoErrorAtTheRegistry([&] { registry->name(owner); });
    EXPECT_TRUE(KPMFeature::IsOn()) << "so that the one who asks on is told";
    EXPECT_THROW(registeredPackages(), ConfigurationError);
    EXPECT_THROW(registerPackage(u"p", u"Q", true), ConfigurationError);
}

TEST_F(PackageRefusalsTest, ARegistryThatCannotBeWrittenStaysAsItIs) {
    fs::permissions(registryFile(), fs::perms::owner_read);
    EXPECT_THROW(registerPackage(u"p", u"Q", true), ConfigurationError);
    EXPECT_THROW(unregisterPackage(u"P"), ConfigurationError);
    EXPECT_THROW(setPackageManagerEnabled(false), ConfigurationError);
    EXPECT_THAT(names(), testing::ElementsAre(u"P"));
    EXPECT_TRUE(KPMFeature::IsOn());
}

}  // namespace
}  // namespace korvex::runtime::packages
