// Registering packages: what is kept, what is replaced, what is refused.
#include <nlohmann/json.hpp>

#include <fstream>

#include "tests/unit/packages/registered_packages.h"

namespace korvex::runtime::packages {
namespace {

namespace vfs = foundation::storage::vfs;
using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;

class PackageRegistryTest : public PackageTest {
protected:
    json stored() const {
        std::ifstream stream(registryFile());
        return json::parse(stream);
    }

    static vfs::ErrorCode refusalOf(const std::u16string& folder) {
        try {
            registerPackage(folder, u"refused", false);
        } catch (const vfs::Exception& error) {
            return error.getErrorCode();
        }
        ADD_FAILURE() << "registered";
        return vfs::unknownError;
    }
};

TEST_F(PackageRegistryTest, IsEmptyAndSwitchedOnAtFirst) {
    EXPECT_THAT(registeredPackages(), IsEmpty());
    EXPECT_TRUE(isPackageManagerEnabled());
    EXPECT_FALSE(std::filesystem::exists(configurationFolder()));
}

TEST_F(PackageRegistryTest, KeepsPackagesInTheOrderOfTheirRegistrationWithCanonicalRoots) {
    scratch_.makeFolder("real one");
    scratch_.makeFolder("two");
    std::filesystem::create_directory_symlink("real one", scratch_.path() / "link");
    registerPackage(u"link", u"one", true);
    registerPackage(scratch_.text() + u"/two/", u"two", false);

    const std::vector<RegisteredPackage> packages = registeredPackages();
    ASSERT_EQ(packages.size(), 2U);
    EXPECT_EQ(packages[0].name, u"one");
    EXPECT_EQ(packages[0].root, u"file://" + scratch_.text() + u"/real%20one");
    EXPECT_TRUE(packages[0].isEditable);
    EXPECT_EQ(packages[1].root, u"file://" + scratch_.text() + u"/two");
    EXPECT_FALSE(packages[1].isEditable);
    EXPECT_NE(packages[0].identifier, packages[1].identifier);
}

TEST_F(PackageRegistryTest, IsOnDiskWhenRegisteringReturns) {
    scratch_.makeFolder("one");
    registerPackage(u"one", u"first", true);
    const RegisteredPackage package = registeredPackages().at(0);
    EXPECT_EQ(stored(),
              json({{"packages",
                     {{{"identifier", std::string(package.identifier.begin(), package.identifier.end())},
                       {"name", "first"},
                       {"root", "file://" + (scratch_.path() / "one").string()},
                       {"editable", true}}}}}));
}

TEST_F(PackageRegistryTest, ReplacesThePackageOfThatNameAndTheOneWithThatRoot) {
    for (const char* folder : {"a", "b", "c"})
        scratch_.makeFolder(folder);
    registerPackage(u"a", u"A", false);
    registerPackage(u"b", u"B", false);
    registerPackage(u"c", u"C", false);
    const std::u16string earlier = registeredPackages()[0].identifier;
    registerPackage(u"b", u"A", true);
    EXPECT_THAT(names(), ElementsAre(u"C", u"A"));
    EXPECT_EQ(registeredPackages()[1].root, u"file://" + scratch_.text() + u"/b");
    EXPECT_NE(registeredPackages()[1].identifier, earlier);
}

TEST_F(PackageRegistryTest, UnregisteringLeavesTheFolder) {
    scratch_.makeFolder("a");
    registerPackage(u"a", u"A", false);
    EXPECT_FALSE(unregisterPackage(u"other"));
    EXPECT_TRUE(unregisterPackage(u"A"));
    EXPECT_FALSE(unregisterPackage(u"A"));
    EXPECT_THAT(registeredPackages(), IsEmpty());
    EXPECT_TRUE(std::filesystem::exists(scratch_.path() / "a"));
}

TEST_F(PackageRegistryTest, WhatIsNoFolderIsRefusedAndChangesNothing) {
    scratch_.makeFolder("a");
    scratch_.writeFile("file");
    registerPackage(u"a", u"refused", false);
    EXPECT_EQ(refusalOf(u"nothing"), vfs::resourceNotFound);
    EXPECT_EQ(refusalOf(u"file"), vfs::invalidLocation);
    EXPECT_THROW(registerPackage(u"no-such-scheme://host/x", u"refused", false),
                 vfs::UnsupportedIRISchemeException);
    EXPECT_THROW(registerPackage(u"", u"refused", false), vfs::InvalidIRIException);
    EXPECT_EQ(registeredPackages().at(0).root, u"file://" + scratch_.text() + u"/a");
}

TEST_F(PackageRegistryTest, TakesFoldersOfOtherStorages) {
    folderAt(u"memory://packages/inner").createFolderRecursive();
    registerPackage(u"memory://packages/inner", u"M", false);
    EXPECT_EQ(registeredPackages().at(0).root, u"memory://packages/inner");
    EXPECT_EQ(claimantOf(u"memory://packages/inner/deeper"), u"M");
    EXPECT_EQ(claimantOf(u"memory://packages/"), u"");
    EXPECT_EQ(claimantOf(scratch_.text()), u"");
    folderAt(u"memory://packages/inner").removeFolder(vfs::RemoveWithContents);
}

TEST_F(PackageRegistryTest, NamesThatAreNoValidUnicodeAreKept) {
    const std::u16string name{u'n', 0xDCE9, u'-', 0xD800};
    scratch_.makeFolder("caf\xE9");
    registerPackage(std::u16string(u"caf") + char16_t{0xDCE9}, name, false);
    // What another process would read.
    configuration::setConfigurationFolder(u"");
    configuration::setConfigurationFolder(configurationFolder().u16string());
    EXPECT_THAT(names(), ElementsAre(name));
    EXPECT_EQ(claimantOf(std::u16string(u"caf") + char16_t{0xDCE9} + u"/inner"), name);
}

TEST_F(PackageRegistryTest, SwitchingThePackageManagerOffIsKept) {
    setPackageManagerEnabled(false);
    EXPECT_FALSE(isPackageManagerEnabled());
    EXPECT_EQ(stored(), json({{"enabled", false}}));
    setPackageManagerEnabled(true);
    EXPECT_TRUE(isPackageManagerEnabled());
}

TEST_F(PackageRegistryTest, SeesWhatAnotherProcessWroteAndKeepsWhatItDoesNotKnow) {
    scratch_.makeFolder("a");
    EXPECT_THAT(registeredPackages(), IsEmpty());
    scratch_.writeFile("config/packages.json",
                       R"({"version": 7, "packages": [{"identifier": "x", "name": "X", "root": "file:///x",
                           "homepage": "somewhere"}]})");
    EXPECT_THAT(names(), ElementsAre(u"X"));
    registerPackage(u"a", u"A", false);
    EXPECT_THAT(names(), ElementsAre(u"X", u"A"));
    EXPECT_EQ(stored().at("version"), 7);
    EXPECT_EQ(stored().at("packages").at(0).at("homepage"), "somewhere");
}

TEST_F(PackageRegistryTest, LastsForTheRunWithoutAConfigurationFolder) {
    configuration::setConfigurationFolder(u"");
    scratch_.makeFolder("a");
    registerPackage(u"a", u"A", false);
    EXPECT_THAT(names(), ElementsAre(u"A"));
    EXPECT_FALSE(std::filesystem::exists(configurationFolder()));
    configuration::setConfigurationFolder(configurationFolder().u16string());
    EXPECT_THAT(names(), IsEmpty());
}

// Documents that are none of ours.
class DamagedRegistryTest : public PackageTest, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(
    Contents, DamagedRegistryTest,
    testing::Values(
        "{", R"({"enabled": 1})", R"({"packages": {}})", R"({"packages": [1]})",
        R"({"packages": [{"identifier": "x", "name": "X"}]})",
        R"({"packages": [{"identifier": "x", "name": "X", "root": "x"}]})",
        R"({"packages": [{"identifier": "x", "name": null, "root": "file:///x"}]})",
        R"({"packages": [{"identifier": "x", "name": "X", "root": "file:///x", "editable": 1}]})"));

TEST_P(DamagedRegistryTest, IsSetAsideAndReadsAsEmpty) {
    scratch_.writeFile("config/packages.json", GetParam());
    EXPECT_THAT(registeredPackages(), IsEmpty());
    EXPECT_TRUE(std::filesystem::exists(configurationFolder() / "packages.json.damaged-1"));
}

}  // namespace
}  // namespace korvex::runtime::packages
