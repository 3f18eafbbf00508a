// `mkdir` at work: what it makes, what it says of what stands there already, and whom it tells.
#include "io/filesystem/filemanip/DirManip.h"
#include "runtime/packages/package_registry.h"
#include "tests/unit/filemanip/dir_manip/dir_manip_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Kind = EnvironmentEvent::Kind;

std::vector<EnvironmentEvent> refreshOf(const std::u16string& folder) {
    return {{Kind::folderOutOfDate, {folder}}, {Kind::pathRefreshRequested, {}}};
}

class DirManipCreationTest : public DirManipTest {
protected:
    ~DirManipCreationTest() override {
        for (const runtime::packages::RegisteredPackage& package : runtime::packages::registeredPackages())
            runtime::packages::unregisterPackage(package.name);
    }
};

TEST_F(DirManipCreationTest, MakesAFolderAndTellsTheEnvironment) {
    EXPECT_EQ(mkdir({u"a"}), success());
    EXPECT_TRUE(fs::is_directory(diskPath("a")));
    EXPECT_EQ(events_, refreshOf(pathOf(u"a")));
    EXPECT_THAT(warnings_, IsEmpty());
}

TEST_F(DirManipCreationTest, MakesTheWholeChain) {
    scratch_.makeFolder("a");
    EXPECT_EQ(mkdir({u"a/b/c"}), success());
    EXPECT_TRUE(fs::is_directory(diskPath("a/b/c")));
    EXPECT_EQ(events_, refreshOf(pathOf(u"a/b/c")));
}

TEST_F(DirManipCreationTest, MakesAFolderInAParent) {
    EXPECT_EQ(mkdir({u"a/", u"/b"}), success());
    EXPECT_TRUE(fs::is_directory(diskPath("a/b")));
}

TEST_F(DirManipCreationTest, MakesAFolderAtALocation) {
    EXPECT_EQ(mkdir({u"memory://box/a/b"}), success());
    EXPECT_EQ(box_->existence(boxLocation(u"a/b")), foundation::storage::provider::AsFolder);
    EXPECT_THAT(events_, IsEmpty());
    EXPECT_EQ(mkdir({locationOf(u"c d").toString()}), success());
    EXPECT_TRUE(fs::is_directory(diskPath("c d")));
    EXPECT_EQ(events_, refreshOf(pathOf(u"c d")));
}

TEST_F(DirManipCreationTest, ChainIsMadeInOneCallAfterTheWayUpWasLookedAt) {
    scratch_.makeFolder("a");
    mkdir({pathOf(u"a/b/c")});
    EXPECT_THAT(local_->calls(), ElementsAre(Call{Operation::existence, locationOf(u"a/b/c")},
                                             Call{Operation::existence, locationOf(u"a/b")},
                                             Call{Operation::existence, locationOf(u"a")},
                                             Call{Operation::createFolderRecursive, locationOf(u"a/b/c")}));
}

TEST_F(DirManipCreationTest, WayUpEndsAtARootThatIsNotThere) {
    const CommandResult result = mkdir({u"file://host/a/b"});
    EXPECT_EQ(result, failure(KORVEX::virtualfilesystem::invalidLocation(u"file://host/a/b")));
    const auto at = [](const char16_t* text) { return vfs::AbsoluteIRI(text); };
    EXPECT_THAT(local_->calls(), ElementsAre(Call{Operation::existence, at(u"file://host/a/b")},
                                             Call{Operation::existence, at(u"file://host/a")},
                                             Call{Operation::existence, at(u"file://host/")},
                                             Call{Operation::createFolderRecursive, at(u"file://host/a/b")}));
}

TEST_F(DirManipCreationTest, FolderThatExistsIsASuccessWithANoteAndStaysAsItIs) {
    scratch_.writeFile("a/file", "content");
    EXPECT_EQ(mkdir({u"a"}), noted(KORVEX::MKDIR::DirectoryExists()));
    EXPECT_EQ(fs::file_size(diskPath("a/file")), 7U);
    EXPECT_EQ(events_, refreshOf(pathOf(u"a")));
    EXPECT_EQ(mkdir({u"memory://box/"}), noted(KORVEX::MKDIR::DirectoryExists()));
}

TEST_F(DirManipCreationTest, LinkToAFolderCountsAsAFolder) {
    makeLink("/", "link");
    EXPECT_EQ(mkdir({u"link"}), noted(KORVEX::MKDIR::DirectoryExists()));
}

TEST_F(DirManipCreationTest, FileOfThatNameIsAFailureAndStays) {
    scratch_.writeFile("a", "content");
    EXPECT_EQ(mkdir({u"a"}), failure(KORVEX::MKDIR::ExistsAsFile(u"a")));
    EXPECT_EQ(fs::file_size(diskPath("a")), 7U);
    EXPECT_EQ(events_, refreshOf(pathOf(u"a")));
}

TEST_F(DirManipCreationTest, FileOnTheWayIsTheOneThatCounts) {
    scratch_.writeFile("a");
    EXPECT_EQ(mkdir({u"a/b"}), failure(KORVEX::MKDIR::ExistsAsFile(u"a/b")));
    box_->putFile(boxLocation(u"a"), "");
    EXPECT_EQ(mkdir({u"memory://box/a/b"}), failure(KORVEX::MKDIR::ExistsAsFile(u"memory://box/a/b")));
}

TEST_F(DirManipCreationTest, LinkWithoutATargetIsInTheWayAndReadsAsAFolder) {
    makeLink("nowhere", "link");
    EXPECT_EQ(mkdir({u"link"}), noted(KORVEX::MKDIR::DirectoryExists()));
    EXPECT_FALSE(isThere("nowhere"));
}

TEST_F(DirManipCreationTest, WhatStoodThereAndHasGoneReadsAsAFolder) {
    local_->failCall(Operation::createFolderRecursive, 1, {.code = vfs::resourceAlreadyExists});
    EXPECT_EQ(mkdir({u"a"}), noted(KORVEX::MKDIR::DirectoryExists()));
    EXPECT_FALSE(isThere("a"));
}

TEST_F(DirManipCreationTest, TheLocationOfTheFailureIsTheOneThatIsAskedFor) {
    scratch_.writeFile("other");
    local_->failCall(Operation::createFolderRecursive, 1,
                     {.code = vfs::resourceAlreadyExists, .location = locationOf(u"other")});
    EXPECT_EQ(mkdir({u"a"}), failure(KORVEX::MKDIR::ExistsAsFile(u"a")));
    EXPECT_EQ(local_->calls().back(), (Call{Operation::existence, locationOf(u"other")}));
}

TEST_F(DirManipCreationTest, LocationOf1280UnitsPassesAndALongerOneIsANoteOnly) {
    const std::u16string start = u"memory://box/";
    const std::u16string longest = start + std::u16string(1280 - start.size(), u'a');
    EXPECT_EQ(mkdir({longest}), success());
    EXPECT_EQ(mkdir({longest + u"a"}), noted(KORVEX::FILE::PATHMAX()));
    EXPECT_EQ(box_->existence(vfs::AbsoluteIRI(longest)), foundation::storage::provider::AsFolder);
    EXPECT_EQ(box_->existence(vfs::AbsoluteIRI(longest + u"a")), foundation::storage::provider::AsNeither);
}

TEST_F(DirManipCreationTest, TheWholeTextOfTheLocationIsMeasured) {
    const std::u16string start = u"memory://box/";
    // Each blank is three units of the location.
    const std::u16string blanks(430, u' ');
    EXPECT_EQ(mkdir({start + blanks}), noted(KORVEX::FILE::PATHMAX()));
    EXPECT_THAT(memory_->calls(), IsEmpty());
    EXPECT_THAT(events_, IsEmpty());
}

TEST_F(DirManipCreationTest, TooLongAPathIsNoFailureWithoutOutputsEither) {
    std::vector<Array> arrays;
    arrays.push_back(text(std::u16string(1300, u'a')));
    EXPECT_EQ(outcomeOf(makeDir, 0, arrays).errorIdentifier, "");
    EXPECT_TRUE(fs::is_empty(scratch_.path()));
}

TEST_F(DirManipCreationTest, PartOfAChainThatWasMadeStays) {
    scratch_.makeFolder("a");
    const std::u16string tooLongName(300, u'x');
    const CommandResult result = mkdir({u"a/b/" + tooLongName});
    EXPECT_FALSE(result.succeeded);
    EXPECT_EQ(result.identifier, "KORVEX:MKDIR:OSError");
    EXPECT_TRUE(fs::is_directory(diskPath("a/b")));
    EXPECT_THAT(events_, IsEmpty());
}

TEST_F(DirManipCreationTest, SystemsWordsAreInTheMessage) {
    local_->failCall(Operation::createFolderRecursive, 1,
                     {.code = vfs::noSpaceLeft, .systemText = "No space left on device"});
    const CommandResult result = mkdir({u"a"});
    EXPECT_EQ(result.identifier, "KORVEX:MKDIR:OSError");
    EXPECT_THAT(runtime::text::toDisplayBytes(result.text), testing::HasSubstr("No space left on device"));
}

TEST_F(DirManipCreationTest, OneNoticeForTheTopmostNewFolderInAPackage) {
    scratch_.makeFolder("package/a");
    runtime::packages::registerPackage(pathOf(u"package"), u"Tools", false);
    mkdir({u"package/a/b/c/d"});
    EXPECT_THAT(warnings_, ElementsAre("KORVEX:MKDIR:CreatedFolderInPackage"));
    EXPECT_EQ(runtime::interpreter::lastWarning().text,
              textOf(KORVEX::MKDIR::CreatedFolderInPackage(pathOf(u"package/a"), u"Tools")));
}

TEST_F(DirManipCreationTest, NoticeOfAnEditablePackageIsAnother) {
    scratch_.makeFolder("package");
    runtime::packages::registerPackage(pathOf(u"package"), u"Tools", true);
    mkdir({u"package/b/c"});
    EXPECT_THAT(warnings_, ElementsAre("KORVEX:MKDIR:CreatedFolderInEditablePackage"));
    EXPECT_EQ(runtime::interpreter::lastWarning().text,
              textOf(KORVEX::MKDIR::CreatedFolderInEditablePackage(pathOf(u"package"), u"Tools")));
}

TEST_F(DirManipCreationTest, NoNoticeOutsideOfPackagesAndForAFolderThatExists) {
    scratch_.makeFolder("package/a");
    runtime::packages::registerPackage(pathOf(u"package"), u"Tools", false);
    mkdir({u"outside"});
    mkdir({u"package/a"});
    EXPECT_THAT(warnings_, IsEmpty());
}

}  // namespace
}  // namespace korvex::filemanip::tests
