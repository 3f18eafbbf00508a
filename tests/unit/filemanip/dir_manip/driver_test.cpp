// The driver of `mkdir` and `rmdir`: from what was typed to the location that an engine works on.
#include "io/filesystem/filemanip/DirManip.h"
#include "platform/foundation_filesystem.h"
#include "tests/unit/filemanip/dir_manip/dir_manip_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using io::filesystem::core::Status;
using testing::ElementsAre;
using testing::IsEmpty;
using Kind = EnvironmentEvent::Kind;

/// An engine that remembers what it was to work on, and does what a test tells it.
class RecordingEngine : public DirManipulator {
public:
    struct Work {
        std::u16string location;
        std::u16string typed;
        bool operator==(const Work&) const = default;
    };

    bool DirProcess(const AbsoluteIRI& location, const std::u16string& strOriginalPath) override {
        work.push_back({location.toString(), strOriginalPath});
        if (beforeAnswer) beforeAnswer();
        return needsRefresh;
    }
    void reportByKey(const char* key) override { SetErrorStatus("RECORDING", key); }
    std::string GetErrorMsgIdPrefix() override {
        return isIRI_ ? "virtualfilesystem" : DirManipulator::GetErrorMsgIdPrefix();
    }

    std::vector<Work> work;
    std::function<void()> beforeAnswer;
    bool needsRefresh = false;
};

std::string identifierOf(const Status& status) {
    return io::filesystem::core::detail::GetID(status.exception);
}
std::u16string textOf(const Status& status) {
    return io::filesystem::core::detail::GetUnicodeMessageTxt(status.exception);
}

class DirManipDriverTest : public DirManipTest {
protected:
    /// The location and the typed path that the engine gets.
    RecordingEngine::Work workFor(std::vector<std::u16string> paths) {
        RecordingEngine engine;
        const Status status = engine.Process(std::move(paths));
        EXPECT_EQ(status.code, Status::success);
        EXPECT_EQ(identifierOf(status), "");
        EXPECT_EQ(engine.work.size(), 1U);
        return engine.work.empty() ? RecordingEngine::Work{} : engine.work.front();
    }
    /// The status of a path that never reaches the work.
    Status refusalOf(std::vector<std::u16string> paths) {
        RecordingEngine engine;
        const Status status = engine.Process(std::move(paths));
        EXPECT_THAT(engine.work, IsEmpty());
        EXPECT_EQ(status.code, Status::failure);
        return status;
    }
    std::u16string location(const std::u16string& name) const { return locationOf(name).toString(); }
};

TEST_F(DirManipDriverTest, OnePathIsTakenAsItStands) {
    EXPECT_EQ(workFor({u"a b"}), (RecordingEngine::Work{location(u"a b"), u"a b"}));
    EXPECT_EQ(workFor({u"/x/y"}), (RecordingEngine::Work{u"file:///x/y", u"/x/y"}));
}

TEST_F(DirManipDriverTest, TwoPathsGetASeparatorUnlessEitherHasOne) {
    EXPECT_EQ(workFor({u"a", u"b"}), (RecordingEngine::Work{location(u"a/b"), u"a/b"}));
    EXPECT_EQ(workFor({u"a/", u"b"}), (RecordingEngine::Work{location(u"a/b"), u"a/b"}));
    EXPECT_EQ(workFor({u"a", u"/b"}), (RecordingEngine::Work{location(u"a/b"), u"a/b"}));
}

TEST_F(DirManipDriverTest, TwoSeparatorsAtTheJoinStayInTheText) {
    EXPECT_EQ(workFor({u"a/", u"/b"}), (RecordingEngine::Work{location(u"a/b"), u"a//b"}));
}

TEST_F(DirManipDriverTest, ParentWithASchemeIsJoinedBySlash) {
    EXPECT_EQ(workFor({u"memory://box/a", u"b"}),
              (RecordingEngine::Work{u"memory://box/a/b", u"memory://box/a/b"}));
}

TEST_F(DirManipDriverTest, EmptyTextsAreJoinedLikeAnyOther) {
    EXPECT_EQ(workFor({u"a", u""}), (RecordingEngine::Work{location(u"a"), u"a/"}));
    EXPECT_EQ(workFor({u"", u"b"}), (RecordingEngine::Work{u"file:///b", u"/b"}));
}

TEST_F(DirManipDriverTest, ParentMayHave1024UnitsAndTheChildAnyNumber) {
    EXPECT_EQ(workFor({std::u16string(1024, u'p'), u"c"}).typed.size(), 1026U);
    EXPECT_EQ(workFor({u"p", std::u16string(5000, u'c')}).typed.size(), 5002U);
    const Status status = refusalOf({std::u16string(1025, u'p'), u"c"});
    EXPECT_EQ(identifierOf(status), "KORVEX:FILE:PATHMAX");
}

TEST_F(DirManipDriverTest, LengthOfTheParentIsJudgedBeforeAnythingElse) {
    const Status status = refusalOf({std::u16string(1025, u'p'), std::u16string(1, u'\0')});
    EXPECT_EQ(identifierOf(status), "KORVEX:FILE:PATHMAX");
}

TEST_F(DirManipDriverTest, OnePathHasNoLimitHere) {
    EXPECT_EQ(workFor({u"/" + std::u16string(5000, u'c')}).typed.size(), 5001U);
}

TEST_F(DirManipDriverTest, NullCharacterIsRefusedBeforeTheSchemeIsLookedAt) {
    const Status status = refusalOf({std::u16string(u"http://host/a\0b", 15)});
    EXPECT_EQ(identifierOf(status), "KORVEX:FileManip:NullCharacterInName");
}

TEST_F(DirManipDriverTest, DotsOfAPathAreResolvedAsText) {
    EXPECT_EQ(workFor({u"./a/../b/./c"}).location, location(u"b/c"));
    makeLink("/", "link");
    EXPECT_EQ(workFor({u"link/../c"}).location, location(u"c"));
}

TEST_F(DirManipDriverTest, RelativePathWithoutACurrentFolderIsRaised) {
    fs::create_directory(diskPath("gone"));
    runtime::dispatcher::setCurrentFolderPath(pathOf(u"gone"));
    fs::remove(diskPath("gone"));
    RecordingEngine engine;
    try {
        engine.Process(std::vector<std::u16string>{u"a"});
        ADD_FAILURE() << "nothing was raised";
    } catch (const foundation::core::except::Exception<KORVEX::services::cwdIsInvalid>& error) {
        EXPECT_EQ(error.get_error_id(), "KORVEX:MKDIR:cwdIsInvalid");
        EXPECT_EQ(error.message().identifier(), "KORVEX:services:cwdIsInvalid");
    }
    EXPECT_EQ(workFor({u"/a"}).location, u"file:///a");
}

TEST_F(DirManipDriverTest, LocationThatIsWellFormedIsTakenAsItStands) {
    EXPECT_EQ(workFor({u"memory://box/a%20b"}),
              (RecordingEngine::Work{u"memory://box/a%20b", u"memory://box/a%20b"}));
    EXPECT_EQ(workFor({u"FILE:///a"}).location, u"file:///a");
}

TEST_F(DirManipDriverTest, LocationMayGetAClosingSlash) {
    EXPECT_EQ(workFor({u"memory://box"}), (RecordingEngine::Work{u"memory://box/", u"memory://box"}));
}

TEST_F(DirManipDriverTest, LocationWithDotsOrAWrongNumberOfSlashesIsRefused) {
    for (const std::u16string typed :
         {u"memory://box/a/../b", u"memory://box/./a", u"memory://box/%2E%2E/b", u"memory:/box/a",
          u"memory:///box/a", u"file:/a", u"file:////a", u"http://host/../a"}) {
        const Status status = refusalOf({typed});
        EXPECT_EQ(identifierOf(status), "KORVEX:virtualfilesystem:invalidIRI");
        EXPECT_EQ(textOf(status), tests::textOf(KORVEX::virtualfilesystem::invalidIRI(typed)));
    }
}

TEST_F(DirManipDriverTest, LocationThatDoesNotParseInSpiteOfGoodSlashesIsRaised) {
    RecordingEngine engine;
    EXPECT_THROW(engine.Process(std::vector<std::u16string>{u"memory://no host/a"}),
                 vfs::InvalidIRIException);
    EXPECT_THAT(engine.work, IsEmpty());
}

TEST_F(DirManipDriverTest, WebLocationIsRefusedWhateverTheCaseOfItsScheme) {
    for (const std::u16string typed :
         {u"http://host/a", u"HTTPS://host/a", u"http://host", u"https://host/"}) {
        const Status status = refusalOf({typed});
        EXPECT_EQ(identifierOf(status), "KORVEX:virtualfilesystem:writeNotAllowed");
        EXPECT_EQ(textOf(status), tests::textOf(KORVEX::virtualfileio::stream::writeNotAllowed()));
    }
    EXPECT_EQ(identifierOf(refusalOf({u"http://host", u"a"})), "KORVEX:virtualfilesystem:writeNotAllowed");
}

TEST_F(DirManipDriverTest, SchemeThatNobodyServesIsReportedWithWhatWasTyped) {
    RecordingEngine engine;
    engine.beforeAnswer = [] { throw vfs::UnsupportedIRISchemeException(u"gopher"); };
    const Status status = engine.Process(std::vector<std::u16string>{u"gopher://host/a%20b"});
    EXPECT_EQ(status.code, Status::failure);
    EXPECT_EQ(identifierOf(status), "KORVEX:virtualfilesystem:unsupportedProvider");
    EXPECT_EQ(textOf(status),
              tests::textOf(KORVEX::virtualfilesystem::unsupportedProvider(u"gopher://host/a%20b")));
}

TEST_F(DirManipDriverTest, InvalidLocationThatTheWorkMeetsIsReportedWithWhatWasTyped) {
    RecordingEngine engine;
    engine.beforeAnswer = [] { throw vfs::InvalidIRIException(u"something else"); };
    const Status status = engine.Process(std::vector<std::u16string>{u"a"});
    EXPECT_EQ(status.code, Status::failure);
    EXPECT_EQ(identifierOf(status), "KORVEX:FILE:invalidIRI");
    EXPECT_EQ(textOf(status), tests::textOf(KORVEX::virtualfilesystem::invalidIRI(u"a")));
}

TEST_F(DirManipDriverTest, OtherFailuresOfTheWorkPassThrough) {
    RecordingEngine engine;
    engine.beforeAnswer = [&] { throw vfs::Exception(vfs::ioError, locationOf(u"a")); };
    EXPECT_THROW(engine.Process(std::vector<std::u16string>{u"a"}), vfs::Exception);
}

TEST_F(DirManipDriverTest, LocalFolderThatChangedIsRefreshedUnderItsPath) {
    RecordingEngine engine;
    engine.needsRefresh = true;
    engine.Process(std::vector<std::u16string>{u"x/../a"});
    EXPECT_THAT(events_, ElementsAre(EnvironmentEvent{Kind::folderOutOfDate, {pathOf(u"a")}},
                                     EnvironmentEvent{Kind::pathRefreshRequested, {}}));
}

TEST_F(DirManipDriverTest, FolderOfAFileLocationIsRefreshedUnderItsPlainPath) {
    RecordingEngine engine;
    engine.needsRefresh = true;
    engine.Process(std::vector<std::u16string>{u"file:///x/a%20b"});
    EXPECT_THAT(events_, ElementsAre(EnvironmentEvent{Kind::folderOutOfDate, {u"/x/a b"}},
                                     EnvironmentEvent{Kind::pathRefreshRequested, {}}));
}

TEST_F(DirManipDriverTest, NoRefreshWithoutAChangeAndForOtherSchemes) {
    RecordingEngine engine;
    engine.Process(std::vector<std::u16string>{u"a"});
    engine.needsRefresh = true;
    engine.Process(std::vector<std::u16string>{u"memory://box/a"});
    EXPECT_THAT(events_, IsEmpty());
}

TEST_F(DirManipDriverTest, PathsWithOptionsAreNoWorkOfTheDriver) {
    RecordingEngine engine;
    const Status status = engine.Process({u"a"}, {u"s"});
    EXPECT_EQ(status.code, Status::success);
    EXPECT_THAT(engine.work, IsEmpty());
}

TEST_F(DirManipDriverTest, EarlierOutcomeIsASuccessAtTheStartOfTheNext) {
    RecordingEngine engine;
    EXPECT_EQ(engine.Process(std::vector<std::u16string>{u"file:/a"}).code, Status::failure);
    EXPECT_EQ(engine.Process(std::vector<std::u16string>{u"a"}).code, Status::success);
}

}  // namespace
}  // namespace korvex::filemanip::tests
