// `delete` and symbolic links: the link goes, or what it leads to; and files that are no ordinary ones.
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "tests/support/posix/ordinary_user.h"
#include "tests/unit/filemanip/delete/delete_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// "file" and "toFile", "folder/" and "toFolder", "broken".
class DeleteLinksTest : public DeleteTest {
protected:
    DeleteLinksTest() {
        make({"file", "folder/"});
        makeLink("file", "toFile");
        makeLink("folder", "toFolder");
        makeLink("nothing", "broken");
    }
};

TEST_F(DeleteLinksTest, TheLinkGoesAndWhatItLeadsToStays) {
    EXPECT_THAT(deleteNames({u"toFile", u"toFolder", u"broken"}), IsEmpty());
    EXPECT_EQ(left(), (Names{"file", "folder"}));
}

TEST_F(DeleteLinksTest, SoDoLinksThatAPatternMatches) {
    make({"folder/inside"});
    EXPECT_THAT(deleteNames({u"to*", u"b*"}), IsEmpty());
    EXPECT_EQ(left(), (Names{"file", "folder"}));
    EXPECT_TRUE(fs::exists(diskPath("folder/inside")));
}

TEST_F(DeleteLinksTest, SeparatorBehindALinkToAFolderMeansTheFolder) {
    EXPECT_THAT(deleteNames({u"toFolder/", u"broken/", u"file://" + pathOf(u"toFolder/")}),
                ElementsAre(warning(KORVEX::DELETE::DirectoryDeletion(u"toFolder/")),
                            warning(KORVEX::DELETE::DirectoryDeletion(u"broken/")),
                            warning(KORVEX::DELETE::DirectoryDeletion(u"file://" + pathOf(u"toFolder/")))));
    EXPECT_EQ(left().size(), 5U);
}

TEST_F(DeleteLinksTest, SeparatorBehindALinkToAFileMakesNoDifference) {
    EXPECT_THAT(deleteNames({u"toFile/"}), IsEmpty());
    EXPECT_FALSE(left().contains("toFile"));
    EXPECT_TRUE(left().contains("file"));
}

TEST_F(DeleteLinksTest, WhatALinkLeadsToKeepsItsProtection) {
    fs::permissions(diskPath("file"), fs::perms(0444));
    fs::permissions(diskPath("folder"), fs::perms(0555));
    EXPECT_THAT(deleteNames({u"toFile", u"toFolder"}), IsEmpty());
    EXPECT_EQ(fs::status(diskPath("file")).permissions(), fs::perms(0444));
    EXPECT_EQ(fs::status(diskPath("folder")).permissions(), fs::perms(0555));
}

TEST_F(DeleteLinksTest, ResolvedTheTargetGoesAndTheLinkStays) {
    fs::permissions(diskPath("file"), fs::perms(0444));
    EXPECT_THAT(deleteResolving(u"toFile"), IsEmpty());
    EXPECT_THAT(deleteResolving(u"toFolder"), IsEmpty());
    EXPECT_EQ(left(), (Names{"broken", "toFile", "toFolder"}));
}

TEST_F(DeleteLinksTest, ResolvedEveryMatchIs) {
    EXPECT_THAT(deleteResolving(u"to*"), IsEmpty());
    EXPECT_EQ(left(), (Names{"broken", "toFile", "toFolder"}));
}

TEST_F(DeleteLinksTest, ChainOfLinksIsResolvedToItsEnd) {
    makeLink("toFile", "second");
    EXPECT_THAT(deleteResolving(u"second"), IsEmpty());
    EXPECT_EQ(left(), (Names{"broken", "folder", "second", "toFile", "toFolder"}));
}

TEST_F(DeleteLinksTest, ResolvedABrokenLinkIsNotFound) {
    EXPECT_THAT(deleteResolving(u"broken"), ElementsAre(warning(KORVEX::DELETE::FileNotFound(u"broken"))));
    EXPECT_THAT(deleteResolving(u"br*"), IsEmpty()) << "of a pattern nothing is said";
    EXPECT_TRUE(left().contains("broken"));
}

TEST_F(DeleteLinksTest, FilesThatAreNoLinksGoAlsoWhenLinksAreResolved) {
    EXPECT_THAT(deleteResolving(u"fil*"), IsEmpty());
    EXPECT_FALSE(left().contains("file"));
}

TEST_F(DeleteLinksTest, LinksOnTheWayAreFollowed) {
    make({"folder/a", "folder/b"});
    EXPECT_THAT(deleteNames({u"toFolder/a", u"toFolder/b*"}), IsEmpty());
    EXPECT_TRUE(fs::is_empty(diskPath("folder")));
}

TEST_F(DeleteLinksTest, LinkThatLeadsToItselfGoes) {
    makeLink("loop", "loop");
    EXPECT_THAT(deleteNames({u"loop"}), IsEmpty());
    EXPECT_FALSE(left().contains("loop"));
}

TEST_F(DeleteLinksTest, PipesAndSocketsGoLikeFiles) {
    ASSERT_EQ(::mkfifo(diskPath("pipe").c_str(), 0600), 0);
    EXPECT_THAT(deleteNames({u"pipe"}), IsEmpty());
    ASSERT_EQ(::mkfifo(diskPath("pipe").c_str(), 0600), 0);
    EXPECT_THAT(deleteNames({u"pi*"}), IsEmpty());
    EXPECT_FALSE(left().contains("pipe"));
}

TEST_F(DeleteLinksTest, WhatTheSystemRefusesStaysWithAWarning) {
    make({"locked/a"});
    fs::permissions(scratch_.path(), fs::perms::all);
    fs::permissions(diskPath("locked"), fs::perms(0555));
    const korvex::tests::OrdinaryUser user;
    EXPECT_THAT(deleteNames({u"locked/a", u"locked/*"}),
                ElementsAre(warning(KORVEX::DELETE::Permission()), warning(KORVEX::DELETE::Permission())));
    EXPECT_TRUE(fs::exists(diskPath("locked/a")));
}

TEST_F(DeleteLinksTest, WhereNobodyMayLookThePermissionIsWarnedOf) {
    make({"secret/a"});
    fs::permissions(scratch_.path(), fs::perms::all);
    fs::permissions(diskPath("secret"), fs::perms::none);
    const std::u16string location = u"file://" + pathOf(u"secret/a");
    const korvex::tests::OrdinaryUser user;
    EXPECT_THAT(deleteNames({u"secret/a", u"secret/*", location}),
                ElementsAre(warning(KORVEX::DELETE::Permission()), warning(KORVEX::DELETE::Permission()),
                            warning(KORVEX::virtualfilesystem::permissionDenied(location))));
}

}  // namespace
}  // namespace korvex::filemanip::tests
