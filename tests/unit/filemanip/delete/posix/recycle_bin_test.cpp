// `delete` while recycling is on: local files go to the desktop's trash, all else is as ever.
#include "runtime/dispatcher/function_cache.h"
#include "runtime/packages/package_registry.h"
#include "tests/unit/filemanip/delete/delete_fixture.h"
#include "tests/unit/trash/posix/trash_of_process.h"

namespace korvex::filemanip::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RecycleBinTest : public DeleteTest {
protected:
    RecycleBinTest() {
        trash_.empty();
        recycle(u"on");
    }

    const korvex::tests::TrashOfProcess& trash_ = korvex::tests::TrashOfProcess::get();
};

TEST_F(RecycleBinTest, FilesGoToTheTrashAndCanComeBack) {
    make({"a", "b1", "b2", "c"});
    EXPECT_THAT(deleteNames({u"a", u"b*", u"file://" + pathOf(u"c")}), IsEmpty());
    EXPECT_EQ(left(), Names{});
    EXPECT_THAT(trash_.names(), ElementsAre("a", "b1", "b2", "c"));
    for (const std::string& name : trash_.names())
        EXPECT_EQ(trash_.recorded(name, "Path"), diskPath(name).string());
    EXPECT_THAT(local_->callsOf(Operation::removeFile), IsEmpty());
    EXPECT_THAT(local_->callsOf(Operation::setWritable), IsEmpty()) << "they come back as they were";
}

TEST_F(RecycleBinTest, OffTheyGoForGood) {
    make({"a"});
    recycle(u"off");
    EXPECT_THAT(deleteNames({u"a"}), IsEmpty());
    EXPECT_EQ(left(), Names{});
    EXPECT_THAT(trash_.names(), IsEmpty());
}

TEST_F(RecycleBinTest, OddNamesGo) {
    for (const char* name : {"50%", "two words", "line\nfeed", "caf\xE9"})
        make({name});
    EXPECT_THAT(deleteNames({u"50%", u"*"}), IsEmpty());
    EXPECT_THAT(trash_.names(), ElementsAre("50%", "caf\xE9", "line\nfeed", "two words"));
    EXPECT_EQ(korvex::tests::withoutEscapes(trash_.recorded("line\nfeed", "Path")),
              diskPath("line\nfeed").string());
}

TEST_F(RecycleBinTest, LinksGoThemselvesAlsoWhenTheyAreToBeResolved) {
    make({"file", "folder/"});
    makeLink("file", "toFile");
    makeLink("folder", "toFolder");
    makeLink("nothing", "broken");
    EXPECT_THAT(deleteResolving(u"toFile"), IsEmpty());
    EXPECT_THAT(deleteResolving(u"to*"), IsEmpty());
    EXPECT_THAT(deleteResolving(u"broken"), IsEmpty());
    EXPECT_EQ(left(), (Names{"file", "folder"}));
    EXPECT_THAT(trash_.names(), ElementsAre("broken", "toFile", "toFolder"));
}

TEST_F(RecycleBinTest, FoldersStay) {
    make({"d/"});
    EXPECT_THAT(deleteNames({u"d", u"d*"}),
                ElementsAre(warning(KORVEX::DELETE::DirectoryDeletion(u"d")),
                            warning(KORVEX::DELETE::DirectoryDeletion(pathOf(u"d")))));
    EXPECT_EQ(left(), Names{"d"});
    EXPECT_THAT(trash_.names(), IsEmpty());
}

TEST_F(RecycleBinTest, OtherStorageHasNoTrash) {
    makeInBox({u"a", u"b1"});
    EXPECT_THAT(deleteNames({u"memory://box/a", u"memory://box/b*"}), IsEmpty());
    EXPECT_EQ(leftInBox(), Names{});
    EXPECT_THAT(trash_.names(), IsEmpty());
}

TEST_F(RecycleBinTest, WhereNoTrashTakesItTheFileStaysWithAWarning) {
    make({"a", "b"});
    trash_.block();
    const std::u16string location = u"file://" + pathOf(u"b");
    EXPECT_THAT(deleteNames({u"a", location, u"*"}),
                ElementsAre(warning(KORVEX::DELETE::Permission()),
                            warning(KORVEX::virtualfilesystem::ioError(pathOf(u"b"))),
                            warning(KORVEX::DELETE::Permission()), warning(KORVEX::DELETE::Permission())))
        << "a pattern goes on with the next match";
    EXPECT_EQ(left(), (Names{"a", "b"}));
}

TEST_F(RecycleBinTest, TheEnvironmentIsToldSuccessOrNot) {
    make({"f.k", "g.k"});
    const auto events = [this](const std::u16string& name) {
        environment_.takeEvents();
        deleteNames({name});
        return environment_.takeEvents();
    };
    const auto told = [this](const std::u16string& name) {
        const std::string path = runtime::text::toDisplayBytes(pathOf(name));
        return ElementsAre("functionsCleared " + path, "upstreamEntriesNotified " + path);
    };
    EXPECT_THAT(events(u"f.k"), told(u"f.k"));
    trash_.empty();
    trash_.block();
    EXPECT_THAT(events(u"g.k"), told(u"g.k"));
    EXPECT_EQ(left(), Names{"g.k"});
}

TEST_F(RecycleBinTest, PackagesAreToldOfAheadOfTheTrash) {
    make({"package/a"});
    runtime::packages::registerPackage(pathOf(u"package"), u"Fixed", false);
    const std::string notice =
        warning(KORVEX::DELETE::DeletedFileFromPackage(pathOf(u"package/a"), u"Fixed"));
    trash_.block();
    EXPECT_THAT(deleteNames({u"package/a"}), ElementsAre(notice, warning(KORVEX::DELETE::Permission())));
    trash_.empty();
    EXPECT_THAT(deleteNames({u"package/a"}), ElementsAre(notice));
    EXPECT_THAT(trash_.names(), ElementsAre("a"));
}

TEST_F(RecycleBinTest, PackagesAreToldOfForEachMatch) {
    make({"package/a1", "package/a2"});
    runtime::packages::registerPackage(pathOf(u"package"), u"Fixed", false);
    const auto notice = [this](const std::u16string& name) {
        return warning(KORVEX::DELETE::DeletedFileFromPackage(pathOf(name), u"Fixed"));
    };
    EXPECT_THAT(deleteNames({u"package/*"}), ElementsAre(notice(u"package/a1"), notice(u"package/a2")));
    EXPECT_THAT(trash_.names(), ElementsAre("a1", "a2"));
}

TEST_F(RecycleBinTest, InterruptKeepsOnlyWhatWildcardsBehindItWouldFind) {
    make({"a1", "a2", "b", "c"});
    const InterruptingWatcher watcher;
    EXPECT_THAT(deleteNames({u"a*", u"b", u"c*"}), ElementsAre(warning(KORVEX::DELETE::FileNotFound(u"c*"))));
    EXPECT_THAT(trash_.names(), ElementsAre("a1", "a2", "b"));
    EXPECT_EQ(left(), Names{"c"});
}

TEST_F(RecycleBinTest, TheStateIsReadOnceForEachCall) {
    make({"a", "b"});
    const auto watcher = runtime::dispatcher::watchEvents(
        [](const runtime::dispatcher::EnvironmentEvent&) { recycle(u"off"); });
    deleteNames({u"a", u"b"});
    runtime::dispatcher::watchEvents(watcher);
    EXPECT_THAT(trash_.names(), ElementsAre("a", "b"));
    EXPECT_EQ(recycle(), "off");
}

}  // namespace
}  // namespace korvex::filemanip::tests
