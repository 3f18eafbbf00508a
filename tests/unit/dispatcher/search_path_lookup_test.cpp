// Asking the search path, and the search space with its packages, for folders by a part of their path.
#include <filesystem>

#include "platform/packages.h"
#include "platform/search_space.h"
#include "runtime/packages/package_registry.h"
#include "runtime/paths/path_style.h"
#include "tests/unit/dispatcher/environment.h"

namespace korvex::runtime::dispatcher {
namespace {

using namespace Velquist::PathManagement;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
namespace vfs = foundation::storage::vfs;

const std::vector<PathEntryType> allTypes{OrdinaryFolder, NamespaceFolder, ClassFolder, PrivateFolder};

class SearchPathLookupTest : public EnvironmentTest {
protected:
    static Texts textsOf(const PathItems& items) {
        Texts texts;
        for (const auto& item : items)
            texts.push_back(GetStringFromIRI(item->getLocation()));
        return texts;
    }
    static Texts found(const std::u16string& text, FilenameMatchingPolicy policy = DefaultMatching,
                       const std::vector<PathEntryType>& filter = allTypes) {
        return textsOf(Kdispatcher::getDispatcher().GetCurrentPath()->findEntries(filter, text, policy));
    }
    std::shared_ptr<const IPathItem> only(const std::u16string& text) const {
        const PathItems items =
            Kdispatcher::getDispatcher().GetCurrentPath()->findEntries(allTypes, text, DefaultMatching);
        EXPECT_EQ(items.size(), 1U);
        return items.front();
    }
    void linkFolder(const std::string& name, const std::string& target) const {
        std::filesystem::create_directory_symlink(target, scratch_.path() / name);
    }
};

TEST_F(SearchPathLookupTest, FoldersComeInTheOrderOfThePath) {
    const Texts folders = {folder("b/solvers"), folder("a/solvers"), folder("a/other")};
    addToSearchPath(folders);
    EXPECT_THAT(found(u"solvers"), ElementsAre(folders[0], folders[1]));
    EXPECT_THAT(found(u"a/solvers"), ElementsAre(folders[1]));
    EXPECT_THAT(found(folders[1]), ElementsAre(folders[1]));
    EXPECT_THAT(found(u"solver"), IsEmpty());
}

TEST_F(SearchPathLookupTest, OrdinaryFoldersInAPathFolderAreNotOnThePath) {
    addToSearchPath({folder("a")});
    folder("a/sub");
    EXPECT_THAT(found(u"sub"), IsEmpty());
}

TEST_F(SearchPathLookupTest, FolderThatIsGoneIsFoundAllTheSame) {
    const std::u16string gone = folder("gone");
    addToSearchPath({gone});
    std::filesystem::remove(scratch_.path() / "gone");
    EXPECT_THAT(found(u"gone"), ElementsAre(gone));
    EXPECT_THAT(found(u"@c"), IsEmpty());
}

TEST_F(SearchPathLookupTest, SpecialFoldersFollowTheFolderThatHoldsThem) {
    addToSearchPath({folder("a"), folder("b")});
    const Texts classes = {folder("a/+n/@c"), folder("a/@c"), folder("b/@c")};
    EXPECT_THAT(found(u"@c"), ElementsAreArray(classes));
    EXPECT_THAT(found(u"+n/@c"), ElementsAre(classes[0]));
    EXPECT_THAT(found(u"a/@c"), ElementsAre(classes[1]));
    const std::u16string inner = folder("a/+n/+m/+o");
    forgetFolderViews();
    EXPECT_THAT(found(u"+o"), ElementsAre(inner));
}

TEST_F(SearchPathLookupTest, NoFolderIsGivenTwice) {
    const std::u16string inner = folder("a/@c");
    addToSearchPath({folder("a"), inner});
    EXPECT_THAT(found(u"@c"), ElementsAre(inner));
}

TEST_F(SearchPathLookupTest, TypesOutsideOfTheFilterAreLeftOut) {
    addToSearchPath({folder("a"), folder("a/resources"), folder("p/private")});
    const Texts special = {folder("a/+x"), folder("a/@x"), folder("a/private")};
    EXPECT_THAT(found(u"private"), ElementsAre(special[2], here_ + u"/p/private"));
    EXPECT_THAT(found(u"private", DefaultMatching, {OrdinaryFolder}), IsEmpty());
    EXPECT_THAT(found(u"@x", DefaultMatching, {NamespaceFolder}), IsEmpty());
    EXPECT_THAT(found(u"resources"), IsEmpty());
    EXPECT_THAT(found(u"resources", DefaultMatching, {ResourcesFolder}),
                ElementsAre(here_ + u"/a/resources"));
}

TEST_F(SearchPathLookupTest, ItemsTellTheirTypeByTheirName) {
    addToSearchPath({folder("a")});
    for (const auto* name : {"a/+x", "a/@x", "a/private"})
        folder(name);
    EXPECT_EQ(only(u"a")->getEntryType(), OrdinaryFolder);
    EXPECT_EQ(only(u"+x")->getEntryType(), NamespaceFolder);
    EXPECT_EQ(only(u"@x")->getEntryType(), ClassFolder);
    EXPECT_EQ(only(u"private")->getEntryType(), PrivateFolder);
}

TEST_F(SearchPathLookupTest, LinkKeepsItsOwnName) {
    addToSearchPath({folder("a")});
    folder("elsewhere");
    linkFolder("a/@c", "../elsewhere");
    EXPECT_THAT(found(u"@c"), ElementsAre(here_ + u"/a/@c"));
    EXPECT_EQ(only(u"@c")->getEntryType(), ClassFolder);
}

TEST_F(SearchPathLookupTest, LinksThatGoRoundInCirclesEnd) {
    addToSearchPath({folder("a")});
    folder("a/+n");
    linkFolder("a/+n/+loop", "..");
    linkFolder("a/+n/+self", ".");
    EXPECT_THAT(found(u"+n"), ElementsAre(here_ + u"/a/+n"));
    EXPECT_THAT(found(u"+self"), ElementsAre(here_ + u"/a/+n/+self"));
}

TEST_F(SearchPathLookupTest, PolicyDecidesAboutCase) {
    const Texts folders = {folder("Solvers"), folder("solvers")};
    addToSearchPath(folders);
    EXPECT_THAT(found(u"SOLVERS", IgnoreCase), ElementsAre(folders[0], folders[1]));
    EXPECT_THAT(found(u"SOLVERS", MatchCase), IsEmpty());
    EXPECT_THAT(found(u"solvers", MatchCase), ElementsAre(folders[1]));
    const std::u16string own = folder("solvers/private");
    EXPECT_THAT(found(u"PRIVATE", IgnoreCase), ElementsAre(own));
}

TEST_F(SearchPathLookupTest, ComparerFollowsThePolicy) {
    addToSearchPath({folder("a")});
    const auto item = only(u"a");
    EXPECT_TRUE(item->getComparer(MatchCase)->areSame(u"file:///a", u"file:///a"));
    EXPECT_FALSE(item->getComparer(MatchCase)->areSame(u"file:///a", u"file:///A"));
    EXPECT_TRUE(item->getComparer(IgnoreCase)->areSame(u"file:///a", u"FILE:///A"));
    EXPECT_FALSE(item->getComparer(IgnoreCase)->areSame(u"file:///a", u"file:///b"));
    const bool ignoresCase = paths::nativeStyle == paths::PathStyle::windows;
    EXPECT_EQ(item->getComparer(DefaultMatching)->areSame(u"file:///a", u"file:///A"), ignoresCase);
}

TEST_F(SearchPathLookupTest, OrdinaryNameReadsNoFolder) {
    addToSearchPath({folder("a")});
    found(u"a");
    folder("a/@c");
    EXPECT_THAT(found(u"@c"), ElementsAre(here_ + u"/a/@c")) << "the folder is read only now";
}

TEST_F(SearchPathLookupTest, FolderOfAnotherStorageIsFoundByItsTail) {
    const vfs::Folder remote(vfs::AbsoluteIRI(u"memory://lookup/two words/in"),
                             Velquist::KorvexStorageSystem::GetStorageSystemReference());
    remote.createFolderRecursive();
    addToSearchPath({u"memory://lookup/two%20words/in"});
    EXPECT_THAT(found(u"two words/in"), ElementsAre(u"memory://lookup/two%20words/in"));
    EXPECT_THAT(found(u"IN", IgnoreCase), ElementsAre(u"memory://lookup/two%20words/in"));
}

// ------------------------------------------------------------------------------------------ absolute forms

TEST_F(SearchPathLookupTest, TextIsMadeAbsoluteAgainstTheCurrentFolder) {
    using Velquist::current_working_folder::FailedToAbsolutizeException;
    auto& current = Kdispatcher::getDispatcher().GetCurrentWorkingFolder();
    EXPECT_EQ(current.absolutize(u"a/./b/"), location(here_ + u"/a/./b"));
    EXPECT_EQ(current.absolutize(u"/a"), location(u"/a"));
    EXPECT_EQ(current.absolutize(u"memory://box/a"), vfs::AbsoluteIRI(u"memory://box/a"));
    EXPECT_THROW(current.absolutize(u""), FailedToAbsolutizeException);
    EXPECT_THROW(current.absolutize(u"memory://bad host"), FailedToAbsolutizeException);
}

TEST_F(SearchPathLookupTest, RelativeTextHasNoAbsoluteFormWithoutACurrentFolder) {
    using Velquist::current_working_folder::FailedToAbsolutizeException;
    setCurrentFolderPath(folder("gone"));
    std::filesystem::remove(scratch_.path() / "gone");
    auto& current = Kdispatcher::getDispatcher().GetCurrentWorkingFolder();
    EXPECT_EQ(current.absolutize(u"/a"), location(u"/a"));
    try {
        current.absolutize(u"a");
        FAIL();
    } catch (const FailedToAbsolutizeException& error) {
        EXPECT_EQ(error.get_error_id(), "KORVEX:virtualfilesystem:invalidLocation");
        EXPECT_THROW(error.throwCopy(), FailedToAbsolutizeException);
    }
}

// ------------------------------------------------------------------------------------------ packages

class SearchSpaceTest : public SearchPathLookupTest {
protected:
    static std::vector<Texts> lists(const std::u16string& text,
                                    FilenameMatchingPolicy policy = DefaultMatching,
                                    const boost::optional<vfs::CanonicalAbsoluteIRI>& below = boost::none) {
        std::vector<Texts> texts;
        const auto resolver = Velquist::searchspace::GetCurrentFileFolderResolver();
        for (const PathItems& items : resolver->findEntries(text, allTypes, policy, below))
            texts.push_back(textsOf(items));
        return texts;
    }
    std::u16string package(const std::string& name) const {
        const std::u16string root = folder(name);
        packages::registerPackage(root, root, false);
        return root;
    }
};

TEST_F(SearchSpaceTest, FeatureIsInForceWithThePackageManager) {
    using Velquist::KorvexComponents::ComponentFeature;
    EXPECT_FALSE(ComponentFeature::IsOn());
    package("tools");
    EXPECT_TRUE(ComponentFeature::IsOn());
    packages::setPackageManagerEnabled(false);
    EXPECT_FALSE(ComponentFeature::IsOn());
}

TEST_F(SearchSpaceTest, ThePathComesFirstAndThenThePackagesInTheirOrder) {
    const std::u16string second = package("two/tools");
    const std::u16string first = package("one/tools");
    const std::u16string onPath = folder("path/tools");
    addToSearchPath({onPath});
    EXPECT_THAT(lists(u"tools"), ElementsAre(Texts{onPath}, Texts{second}, Texts{first}));
    EXPECT_THAT(lists(u"one/tools"), ElementsAre(Texts{first}));
    EXPECT_THAT(lists(u"nothing"), IsEmpty());
}

TEST_F(SearchSpaceTest, AllFoldersOfAPackageAreFoundEachBeforeThoseInIt) {
    package("tools");
    const Texts folders = {folder("tools/a/x"), folder("tools/a/x/b/x"), folder("tools/b/x")};
    EXPECT_THAT(lists(u"x"), ElementsAre(folders));
    const std::u16string method = folder("tools/a/@c");
    EXPECT_THAT(lists(u"@c"), ElementsAre(Texts{method}));
}

TEST_F(SearchSpaceTest, FolderIsFoundOnceThoughItIsOnThePathAndInAPackage) {
    const std::u16string root = package("tools");
    addToSearchPath({root});
    EXPECT_THAT(lists(u"tools"), ElementsAre(Texts{root}));
}

TEST_F(SearchSpaceTest, LinksAndResourcesOfAPackageAreNotEntered) {
    package("tools");
    folder("tools/resources/x");
    folder("outside/x");
    linkFolder("tools/link", "../outside");
    linkFolder("tools/loop", ".");
    EXPECT_THAT(lists(u"x"), IsEmpty());
    EXPECT_THAT(lists(u"resources"), IsEmpty());
    EXPECT_THAT(lists(u"link"), IsEmpty());
}

TEST_F(SearchSpaceTest, SearchMayBeNarrowedToOneFolder) {
    package("tools");
    const std::u16string inner = folder("tools/a/x");
    folder("tools/ab/x");
    addToSearchPath({folder("path/x")});
    const auto below = vfs::CanonicalAbsoluteIRI(location(here_ + u"/tools/a"));
    EXPECT_THAT(lists(u"x", DefaultMatching, below), ElementsAre(Texts{inner}));
    EXPECT_THAT(lists(u"a", DefaultMatching, below), ElementsAre(Texts{here_ + u"/tools/a"}));
}

TEST_F(SearchSpaceTest, PackageThatIsGoneLeavesItsRoot) {
    const std::u16string root = package("tools");
    std::filesystem::remove(scratch_.path() / "tools");
    EXPECT_THAT(lists(u"tools"), ElementsAre(Texts{root}));
    EXPECT_THAT(lists(u"x"), IsEmpty());
}

TEST_F(SearchSpaceTest, RegistryThatCannotBeReadLeavesThePath) {
    const std::u16string onPath = folder("path/tools");
    addToSearchPath({onPath});
    folder("configuration/packages.json");
    EXPECT_THAT(lists(u"tools"), ElementsAre(Texts{onPath}));
}

TEST_F(SearchSpaceTest, DeepPackageIsWalkedToItsEnd) {
    package("tools");
    std::string path = "tools";
    for (int depth = 0; depth < 300; ++depth)
        path += "/d";
    const std::u16string deepest = folder(path + "/end");
    EXPECT_THAT(lists(u"end"), ElementsAre(Texts{deepest}));
}

}  // namespace
}  // namespace korvex::runtime::dispatcher
