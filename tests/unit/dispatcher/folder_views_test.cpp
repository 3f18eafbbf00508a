// The kept views of folders: what they hold, how long they are kept, and what is found by them.
#include "runtime/dispatcher/folder_views.h"

#include <filesystem>

#include "tests/unit/dispatcher/environment.h"

namespace korvex::runtime::dispatcher {
namespace {

namespace vfs = foundation::storage::vfs;
using testing::ElementsAre;
using testing::IsEmpty;

class FolderViewsTest : public EnvironmentTest {
protected:
    Texts sourceFilesIn(const std::u16string& folder) const {
        return folderView(vfs::CanonicalAbsoluteIRI(location(folder)))->sourceFiles;
    }

    /// The text of the location that was found; empty when none was.
    static std::u16string found(const std::u16string& name) {
        const std::vector<vfs::AbsoluteIRI> files = findSourceFile(name);
        return files.empty() ? u"" : Velquist::PathManagement::GetStringFromIRI(files.front());
    }
};

TEST_F(FolderViewsTest, HoldSourceFilesAndSpecialSubfolders) {
    for (const char* name : {"b.k", "a.KLX", "c.txt", "k", "d.k/e.k"})
        scratch_.writeFile(name);
    for (const char* name : {"+ns", "@class", "private", "resources", "plain"})
        scratch_.makeFolder(name);
    const auto view = folderView(vfs::CanonicalAbsoluteIRI(location(here_)));
    EXPECT_THAT(view->sourceFiles, ElementsAre(u"a.KLX", u"b.k"));
    EXPECT_THAT(view->specialSubfolders, ElementsAre(u"+ns", u"@class", u"private", u"resources"));
}

TEST_F(FolderViewsTest, AreReadOnceAndKept) {
    EXPECT_THAT(sourceFilesIn(here_), IsEmpty());
    scratch_.writeFile("late.k");
    EXPECT_THAT(sourceFilesIn(here_), IsEmpty());
}

TEST_F(FolderViewsTest, FolderThatCannotBeListedIsAskedAgain) {
    EXPECT_THAT(sourceFilesIn(here_ + u"/late"), IsEmpty());
    scratch_.writeFile("late/a.k");
    EXPECT_THAT(sourceFilesIn(here_ + u"/late"), ElementsAre(u"a.k"));
    EXPECT_THAT(sourceFilesIn(u"http://[bad/x"), IsEmpty());
    EXPECT_THAT(sourceFilesIn(u"ftp://host/x"), IsEmpty());
}

TEST_F(FolderViewsTest, MarkingAFolderDropsItsViewAndNoOther) {
    const std::u16string a = folder("a");
    const std::u16string b = folder("b");
    std::filesystem::create_directory_symlink("a", scratch_.path() / "link");
    for (const std::u16string& mark : {a, std::u16string(u"a"), u"file://" + a, here_ + u"/link/"}) {
        std::filesystem::remove(scratch_.path() / "a/late.k");
        forgetFolderViews();
        sourceFilesIn(a);
        sourceFilesIn(b);
        scratch_.writeFile("a/late.k");
        scratch_.writeFile("b/late.k");
        markFolderOutOfDate(mark);
        EXPECT_THAT(sourceFilesIn(a), ElementsAre(u"late.k"));
        std::filesystem::remove(scratch_.path() / "b/late.k");
    }
    EXPECT_THAT(sourceFilesIn(b), IsEmpty());
}

TEST_F(FolderViewsTest, MarkingAFolderThatIsGoneDropsItsView) {
    scratch_.writeFile("a/b/old.k");
    EXPECT_THAT(sourceFilesIn(here_ + u"/a/b"), ElementsAre(u"old.k"));
    std::filesystem::remove_all(scratch_.path() / "a");
    markFolderOutOfDate(here_ + u"/a/b");
    EXPECT_THAT(sourceFilesIn(here_ + u"/a/b"), IsEmpty());
}

TEST_F(FolderViewsTest, SpecialSubfoldersAreToldUpstream) {
    folder("a/+ns");
    const vfs::CanonicalAbsoluteIRI a(location(here_ + u"/a"));
    EXPECT_THAT(folderView(a)->specialSubfolders, ElementsAre(u"+ns"));
    std::filesystem::remove(scratch_.path() / "a/+ns");
    Velquist::PathManagement::NotifyUpstreamPathEntriesOfPossibleSpecialSubfolderChanges(
        location(here_ + u"/a/+ns"), GetPerKVMEventManager());
    EXPECT_THAT(folderView(a)->specialSubfolders, IsEmpty());
    EXPECT_THAT(announced_,
                ElementsAre(EnvironmentEvent{Kind::upstreamEntriesNotified, {here_ + u"/a/+ns"}}));
}

TEST_F(FolderViewsTest, ToldUpstreamTheFolderItselfAndItsNeighboursKeepTheirViews) {
    const std::u16string a = folder("a");
    const std::u16string ab = folder("ab");
    sourceFilesIn(a);
    sourceFilesIn(ab);
    scratch_.writeFile("a/late.k");
    scratch_.writeFile("ab/late.k");
    GetPerKVMEventManager().notifySpecialSubfolderChange(location(a));
    EXPECT_THAT(sourceFilesIn(a), IsEmpty());
    EXPECT_THAT(sourceFilesIn(ab), IsEmpty());
}

TEST_F(FolderViewsTest, ARefreshReadsAllAgainWithTheNextLookUp) {
    sourceFilesIn(here_);
    scratch_.writeFile("late.k");
    requestPathRefresh();
    EXPECT_THAT(sourceFilesIn(here_), ElementsAre(u"late.k"));
    scratch_.writeFile("later.k");
    manager().refresh(false);
    scratch_.writeFile("latest.k");
    EXPECT_THAT(sourceFilesIn(here_), ElementsAre(u"late.k", u"later.k", u"latest.k"));
}

TEST_F(FolderViewsTest, AForcedRefreshReadsThePathAtOnce) {
    const std::u16string a = folder("a");
    addToSearchPath({a});
    scratch_.writeFile("a/early.k");
    manager().refresh(true);
    scratch_.writeFile("a/late.k");
    EXPECT_THAT(sourceFilesIn(a), ElementsAre(u"early.k"));
}

// -------------------------------------------------------------------------------------- source files

TEST_F(FolderViewsTest, SourceFileIsFoundInTheCurrentFolderFirst) {
    scratch_.writeFile("a/solve.k");
    scratch_.writeFile("b/solve.k");
    addToSearchPath({u"a", u"b"});
    EXPECT_EQ(found(u"solve"), here_ + u"/a/solve.k");
    scratch_.writeFile("solve.k");
    requestPathRefresh();
    EXPECT_EQ(found(u"solve"), here_ + u"/solve.k");
    EXPECT_EQ(found(u"solve.k"), here_ + u"/solve.k");
}

TEST_F(FolderViewsTest, SourceCodeIsFoundBeforeLiveCode) {
    scratch_.writeFile("solve.klx");
    scratch_.writeFile("solve.k");
    EXPECT_EQ(found(u"solve"), here_ + u"/solve.k");
    EXPECT_EQ(found(u"solve.klx"), here_ + u"/solve.klx");
}

TEST_F(FolderViewsTest, WhatIsNoSourceFileIsNotFound) {
    scratch_.writeFile("solve.txt");
    scratch_.makeFolder("folder.k");
    for (const char16_t* name : {u"solve", u"solve.txt", u"folder", u"nothing", u"", u".k"})
        EXPECT_EQ(found(name), u"");
}

TEST_F(FolderViewsTest, SourceFileIsFoundOnAnotherStorage) {
    const vfs::Folder remote(vfs::AbsoluteIRI(u"memory://folder-views/solve.k"),
                             Velquist::KorvexStorageSystem::GetStorageSystemReference());
    const vfs::File source(location(scratch_.writeFile("source").u16string()), remote.storage());
    source.copyFile(vfs::File(remote.getLocation(), remote.storage()),
                    foundation::storage::provider::ReplaceAny);
    addToSearchPath({u"memory://folder-views/"});
    EXPECT_EQ(found(u"solve"), u"memory://folder-views/solve.k");
}

TEST_F(FolderViewsTest, PrivateFolderCountsFromTheFolderThatHoldsIt) {
    scratch_.writeFile("a/private/solve.k");
    addToSearchPath({u"a/private"});
    EXPECT_EQ(found(u"solve"), u"");
    setCurrentFolderPath(u"a");
    EXPECT_EQ(found(u"solve"), here_ + u"/a/private/solve.k");
}

TEST_F(FolderViewsTest, WithoutACurrentFolderThePathIsStillSearched) {
    scratch_.writeFile("a/solve.k");
    addToSearchPath({u"a"});
    setCurrentFolderPath(folder("gone"));
    std::filesystem::remove(scratch_.path() / "gone");
    EXPECT_EQ(found(u"solve"), here_ + u"/a/solve.k");
}

}  // namespace
}  // namespace korvex::runtime::dispatcher
