// Which package claims a folder.
#include "tests/unit/packages/registered_packages.h"

namespace korvex::runtime::packages {
namespace {

namespace fs = std::filesystem;

class PackageClaimsTest : public PackageTest {
protected:
    void makePackage(const std::string& folder, const std::u16string& name) {
        registerPackage(scratch_.makeFolder(folder).u16string(), name, false);
    }
};

TEST_F(PackageClaimsTest, APackageClaimsItsRootAndAllBelow) {
    makePackage("p", u"P");
    scratch_.makeFolder("p/a/b");
    scratch_.makeFolder("pp");
    EXPECT_EQ(claimantOf(u"p"), u"P");
    EXPECT_EQ(claimantOf(u"p/a/b"), u"P");
    EXPECT_EQ(claimantOf(u"pp"), u"");
    EXPECT_EQ(claimantOf(scratch_.text()), u"");
    EXPECT_EQ(claimantOf(u"/"), u"");
}

TEST_F(PackageClaimsTest, TheInnermostOfSeveralWins) {
    makePackage("p/q/r", u"R");
    makePackage("p", u"P");
    makePackage("p/q", u"Q");
    scratch_.makeFolder("p/q/s");
    scratch_.makeFolder("p/q/r/t");
    EXPECT_EQ(claimantOf(u"p"), u"P");
    EXPECT_EQ(claimantOf(u"p/q/s"), u"Q");
    EXPECT_EQ(claimantOf(u"p/q/r/t"), u"R");
    unregisterPackage(u"Q");
    EXPECT_EQ(claimantOf(u"p/q/s"), u"P");
}

TEST_F(PackageClaimsTest, APackageThatIsARootClaimsEverything) {
    registerPackage(u"/", u"everything", false);
    EXPECT_EQ(claimantOf(u"/"), u"everything");
    EXPECT_EQ(claimantOf(scratch_.text()), u"everything");
}

TEST_F(PackageClaimsTest, AFolderThatIsReachedThroughALinkOrDotsBelongsWhereItStands) {
    makePackage("p", u"P");
    scratch_.makeFolder("p/a");
    scratch_.makeFolder("out");
    fs::create_directory_symlink("p/a", scratch_.path() / "in");
    fs::create_directory_symlink("../out", scratch_.path() / "p/escape");
    EXPECT_EQ(claimantOf(u"in"), u"P");
    EXPECT_EQ(claimantOf(u"p/escape"), u"");
    EXPECT_EQ(claimantOf(u"out/../p/a"), u"P");
    EXPECT_EQ(claimantOf(u"p/../out"), u"");
}

TEST_F(PackageClaimsTest, AFolderThatIsNotThereBelongsWhereItWouldStand) {
    makePackage("p", u"P");
    scratch_.makeFolder("out");
    fs::create_directory_symlink("p", scratch_.path() / "in");
    EXPECT_EQ(claimantOf(u"p/new/inner"), u"P");
    EXPECT_EQ(claimantOf(u"in/new"), u"P");
    EXPECT_EQ(claimantOf(u"p/../out/new"), u"");
    EXPECT_EQ(claimantOf(u"nothing/at/all"), u"");
}

TEST_F(PackageClaimsTest, APackageWhoseRootIsGoneClaimsWhatWouldBeThere) {
    makePackage("p", u"P");
    fs::remove(scratch_.path() / "p");
    EXPECT_EQ(claimantOf(u"p/a"), u"P");
}

TEST_F(PackageClaimsTest, LocationsOfOtherSchemesAreClaimedByNone) {
    makePackage("p", u"P");
    EXPECT_EQ(claimantOf(u"no-such-scheme://host/p"), u"");
    EXPECT_EQ(claimantOf(u"memory://box/p"), u"");
}

TEST_F(PackageClaimsTest, ASchemeThatLostItsProviderIsClaimedByItsText) {
    scratch_.writeFile("config/packages.json",
                       R"({"packages": [{"identifier": "x", "name": "X", "root": "gone://host/x"}]})");
    EXPECT_EQ(claimantOf(u"gone://host/x/y"), u"X");
    EXPECT_EQ(claimantOf(u"gone://host/z"), u"");
}

}  // namespace
}  // namespace korvex::runtime::packages
