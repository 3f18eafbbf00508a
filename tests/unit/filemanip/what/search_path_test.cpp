// Where `what` finds a name by the end of a path: the search path, private folders, packages, and what stands
// in the current folder beside that.
#include <stdexcept>
#include <string>

#include "io/filesystem/filemanip/what_search_path.h"
#include "runtime/packages/package_registry.h"
#include "tests/unit/filemanip/what/what_fixture.h"

namespace korvex::filemanip::tests {
namespace {

namespace path_management = Velquist::PathManagement;
using testing::ElementsAre;
using testing::IsEmpty;

class WhatOnSearchPathTest : public WhatTest {
protected:
    WhatOnSearchPathTest() {
        makeFolders({"here"});
        moveTo("here");
    }
};

TEST_F(WhatOnSearchPathTest, PartialNameReportsEveryFolderThatEndsInIt) {
    putOnPath({"one/solvers", "two/solvers", "two/other", "three/solvers"});
    EXPECT_THAT(foldersFor({u"solvers"}),
                ElementsAre(here("one/solvers"), here("two/solvers"), here("three/solvers")));
    EXPECT_THAT(foldersFor({u"two/solvers"}), ElementsAre(here("two/solvers")));
    EXPECT_THAT(foldersFor({u"olvers"}), IsEmpty());
}

TEST_F(WhatOnSearchPathTest, FolderOfTheSameNameHereIsReportedBehindThem) {
    putOnPath({"p/stuff"});
    makeFolders({"here/stuff"});
    EXPECT_THAT(foldersFor({u"stuff"}), ElementsAre(here("p/stuff"), here("here/stuff")));
}

TEST_F(WhatOnSearchPathTest, ExactHitIsReportedOnceAndKeepsTheRest) {
    putOnPath({"p/x", "here/x", "q/x"});
    EXPECT_THAT(foldersFor({u"x"}), ElementsAre(here("p/x"), here("here/x"), here("q/x")));
    EXPECT_THAT(foldersFor({u"x/"}), ElementsAre(here("p/x"), here("here/x"), here("q/x")));
    EXPECT_THAT(foldersFor({path("here/x")}), ElementsAre(here("here/x")));
    EXPECT_THAT(foldersFor({path("q/x"), u"-caseinsensitive"}), ElementsAre(here("q/x")));
}

TEST_F(WhatOnSearchPathTest, CurrentFolderByItsEmptyNameIsReportedOnceThoughItIsOnThePath) {
    putOnPath({"here"});
    EXPECT_THAT(foldersFor({u""}), ElementsAre(here("here")));
}

TEST_F(WhatOnSearchPathTest, FolderThatIsGoneIsPassedOver) {
    putOnPath({"gone/x", "p/x"});
    std::filesystem::remove_all(scratch_.path() / "gone");
    EXPECT_THAT(foldersFor({u"x"}), ElementsAre(here("p/x")));
    EXPECT_THAT(foldersFor({u"gone/x"}), IsEmpty());
}

TEST_F(WhatOnSearchPathTest, ClassAndNamespaceFoldersAreFoundByTheirNames) {
    putOnPath({"p"});
    makeFiles({"p/@cls/a.k", "p/+ns/b.k", "p/+ns/@cls/c.k"});
    EXPECT_THAT(foldersFor({u"@cls"}), ElementsAre(here("p/+ns/@cls"), here("p/@cls")));
    EXPECT_THAT(foldersFor({u"+ns/@cls"}), ElementsAre(here("p/+ns/@cls")));
    EXPECT_THAT(foldersFor({u"cls"}), IsEmpty());
}

TEST_F(WhatOnSearchPathTest, PrivateFolderCountsOnlyFromTheFolderThatHoldsIt) {
    putOnPath({"p", "q"});
    makeFolders({"p/private", "q/private"});
    EXPECT_THAT(foldersFor({u"private"}), IsEmpty());
    EXPECT_THAT(foldersFor({u"p/private"}), IsEmpty());
    moveTo("q");
    EXPECT_THAT(foldersFor({u"private"}), ElementsAre(here("q/private")));
    moveTo("");
    EXPECT_THAT(foldersFor({u"p/private"}), ElementsAre(here("p/private"))) << "by its path from here";
}

TEST_F(WhatOnSearchPathTest, PrivateFolderOfTheCurrentFolderIsFoundThroughThePathAlone) {
    putOnPath({"q"});
    makeFolders({"q/private"});
    moveTo("q");
    // In here there is no such path, so it can only be the one of the search path.
    EXPECT_THAT(foldersFor({u"q/private"}), ElementsAre(here("q/private")));
    const Array result = resultOf({u"nothing"});
    const PathHits hits = kPathWhat(u"private", path_management::DefaultMatching, result.get());
    EXPECT_TRUE(hits.exact && hits.found);
}

TEST_F(WhatOnSearchPathTest, PolicyDecidesWhichCurrentFolderHoldsAPrivateOne) {
    putOnPath({"q"});
    makeFolders({"q/private", "Q"});
    moveTo("Q");
    EXPECT_THAT(foldersFor({u"q/private"}), IsEmpty());
    EXPECT_THAT(foldersFor({u"q/private", u"-casesensitive"}), IsEmpty());
    EXPECT_THAT(foldersFor({u"q/private", u"-caseinsensitive"}), ElementsAre(here("q/private")));
}

TEST_F(WhatOnSearchPathTest, PrivateFolderIsNoChildOfACurrentFolderThatIsGone) {
    putOnPath({"here"});
    makeFolders({"here/private"});
    EXPECT_THAT(foldersFor({path("here/private")}), ElementsAre(here("here/private")));
    makeFolders({"gone"});
    moveTo("gone");
    std::filesystem::remove(scratch_.path() / "gone");
    EXPECT_THAT(foldersFor({path("here/private")}), ElementsAre(here("here/private"))) << "by its own path";
}

TEST_F(WhatOnSearchPathTest, PolicyDecidesWhichPathFoldersANameMeans) {
    putOnPath({"p/Solvers", "q/solvers"});
    EXPECT_THAT(foldersFor({u"solvers", u"-casesensitive"}), ElementsAre(here("q/solvers")));
    EXPECT_THAT(foldersFor({u"solvers", u"-caseinsensitive"}),
                ElementsAre(here("p/Solvers"), here("q/solvers")));
    EXPECT_EQ(printedBy({u"SOLVERS", u"-casesensitive"}), notFoundLine("SOLVERS"));
}

TEST_F(WhatOnSearchPathTest, LocationIsNeverLookedUpOnThePath) {
    putOnPath({"p/file:/x"});
    EXPECT_THAT(foldersFor({u"file:///x"}), IsEmpty());
    EXPECT_THAT(foldersFor({u"p/file:/x"}), ElementsAre(here("p/file:/x"))) << "which no location names";
}

TEST_F(WhatOnSearchPathTest, HitsTellWhetherOneWasExact) {
    putOnPath({"p/x", "here/y"});
    const Array result = resultOf({});
    const auto hits = [&](const std::u16string& name) {
        const PathHits told = kPathWhat(name, path_management::DefaultMatching, result.get());
        return std::pair(told.exact, told.found);
    };
    EXPECT_EQ(hits(u"x"), std::pair(false, true));
    EXPECT_EQ(hits(u"y"), std::pair(true, true));
    EXPECT_EQ(hits(u"z"), std::pair(false, false));
    std::filesystem::remove(scratch_.path() / "here/y");
    EXPECT_EQ(hits(u"y"), std::pair(false, false)) << "what reports nothing is not asked";
}

TEST_F(WhatOnSearchPathTest, FolderThatIsGoneMayBeTheExactOneOnceAnotherWasReported) {
    putOnPath({"p/x", "here/x"});
    std::filesystem::remove(scratch_.path() / "here/x");
    const Array result = resultOf({});
    const PathHits hits = kPathWhat(u"x", path_management::DefaultMatching, result.get());
    EXPECT_TRUE(hits.exact && hits.found);
}

TEST_F(WhatOnSearchPathTest, EmptyTextIsAnErrorInTheCaller) {
    try {
        kPathWhat(u"", path_management::DefaultMatching, nullptr);
        FAIL() << "nothing was raised";
    } catch (const std::logic_error& error) {
        EXPECT_EQ(std::string(error.what()), "io/filesystem/filemanip/what:361: !inputPath.empty()");
    }
}

class WhatInPackagesTest : public WhatOnSearchPathTest {
protected:
    void package(const std::string& name) const {
        runtime::packages::registerPackage(scratch_.makeFolder(name).u16string(), path(name), false);
    }
};

TEST_F(WhatInPackagesTest, FoldersOfPackagesAreFoundBehindThoseOfThePath) {
    putOnPath({"p/x"});
    package("tools");
    makeFolders({"tools/x", "tools/a/x", "here/x"});
    EXPECT_THAT(foldersFor({u"x"}),
                ElementsAre(here("p/x"), here("tools/a/x"), here("tools/x"), here("here/x")));
    EXPECT_THAT(foldersFor({u"tools"}), ElementsAre(here("tools")));
}

TEST_F(WhatInPackagesTest, WithoutThePackageManagerOnlyThePathIsAsked) {
    package("tools");
    runtime::packages::setPackageManagerEnabled(false);
    EXPECT_THAT(foldersFor({u"tools"}), IsEmpty());
    runtime::packages::setPackageManagerEnabled(true);
    EXPECT_THAT(foldersFor({u"tools"}), ElementsAre(here("tools")));
}

TEST_F(WhatInPackagesTest, ExactHitInAPackageIsReportedOnce) {
    package("here/tools");
    EXPECT_THAT(foldersFor({u"tools"}), ElementsAre(here("here/tools")));
}

TEST_F(WhatInPackagesTest, PrivateFolderOfAPackageCountsOnlyFromTheFolderThatHoldsIt) {
    package("tools");
    makeFolders({"tools/private"});
    EXPECT_THAT(foldersFor({u"private"}), IsEmpty());
    moveTo("tools");
    EXPECT_THAT(foldersFor({u"private"}), ElementsAre(here("tools/private")));
}

}  // namespace
}  // namespace korvex::filemanip::tests
