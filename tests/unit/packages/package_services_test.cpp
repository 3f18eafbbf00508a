// Packages as the environment's interfaces give them.
#include "tests/unit/packages/registered_packages.h"

namespace korvex::runtime::packages {
namespace {

using namespace Velquist::KorvexComponents;
using io::filesystem::core::GetClaimingPackage;
using io::filesystem::core::GetCurrentPackageRegistry;

/// Made before any test and maybe before other objects of the program.
const std::u16string definitionFileAtTheStart = Constants::PackageDefStr;

class PackageServicesTest : public PackageTest {
protected:
    /// Registers the folder "p" as "P".
    ComponentIdentifier registered(bool isEditable) {
        registerPackage(scratch_.makeFolder("p").u16string(), u"P", isEditable);
        return GetClaimingPackage(folderAt(u"p")).value();
    }
};

TEST_F(PackageServicesTest, TheDefinitionFileHasItsNameFromTheStart) {
    EXPECT_EQ(Constants::PackageDefStr, u"kpackage.json");
    EXPECT_EQ(definitionFileAtTheStart, u"kpackage.json");
}

TEST_F(PackageServicesTest, ThePackageManagerIsInForceWhenItIsSwitchedOnAndThereIsAPackage) {
    EXPECT_FALSE(KPMFeature::IsOn());
    registered(false);
    EXPECT_TRUE(KPMFeature::IsOn());
    setPackageManagerEnabled(false);
    EXPECT_FALSE(KPMFeature::IsOn());
    setPackageManagerEnabled(true);
    EXPECT_TRUE(KPMFeature::IsOn());
    unregisterPackage(u"P");
    EXPECT_FALSE(KPMFeature::IsOn());
}

TEST_F(PackageServicesTest, TheRegistryTellsNameRootAndWhetherItIsEditable) {
    for (const bool isEditable : {true, false}) {
        const ComponentIdentifier owner = registered(isEditable);
        EXPECT_EQ(owner.text(), registeredPackages().at(0).identifier);
        EXPECT_EQ(GetCurrentPackageRegistry()->name(owner), u"P");
        const std::shared_ptr<IPackage> package = GetCurrentPackageRegistry()->package(owner);
        EXPECT_EQ(package->isEditable(), isEditable);
        EXPECT_EQ(package->getRootFolder(), folderAt(u"p").getCanonicalLocation());
    }
}

TEST_F(PackageServicesTest, APackageThatWasRemovedMeanwhileIsNullAndHasNoName) {
    const ComponentIdentifier owner = registered(true);
    const std::shared_ptr<IPackageRegistry> registry = GetCurrentPackageRegistry();
    const std::shared_ptr<IPackage> package = registry->package(owner);
    unregisterPackage(u"P");
    EXPECT_EQ(registry->package(owner), nullptr);
    EXPECT_EQ(registry->name(owner), u"");
    EXPECT_TRUE(package->isEditable()) << "who holds a package keeps it";
}

TEST_F(PackageServicesTest, ARegistryTellsOfPackagesThatCameLater) {
    const std::shared_ptr<IPackageRegistry> registry = GetCurrentPackageRegistry();
    const ComponentIdentifier owner = registered(true);
    EXPECT_EQ(registry->name(owner), u"P");
}

}  // namespace
}  // namespace korvex::runtime::packages
