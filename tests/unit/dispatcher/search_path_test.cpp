// The search path: what may be put on it, what takes it off again, and what outlives the run.
#include <filesystem>

#include "platform/foundation_filesystem.h"
#include "runtime/interpreter/warnings.h"
#include "tests/unit/dispatcher/environment.h"

namespace korvex::runtime::dispatcher {
namespace {

namespace vfs = foundation::storage::vfs;
using foundation::core::except::Notification;
using testing::ElementsAre;
using testing::IsEmpty;
using Velquist::PathManagement::RemoveIRIsFromKorvexPath;

/// The identifiers of the warnings while it lives.
class Warnings {
public:
    Warnings()
        : earlier_(interpreter::setWarningReceiver(
              [this](const interpreter::Warning& warning) { identifiers_.push_back(warning.identifier); })) {}
    ~Warnings() { interpreter::setWarningReceiver(earlier_); }
    Warnings(const Warnings&) = delete;
    Warnings& operator=(const Warnings&) = delete;

    const std::vector<std::string>& identifiers() const noexcept { return identifiers_; }

private:
    std::vector<std::string> identifiers_;
    interpreter::WarningReceiver earlier_;
};

class SearchPathTest : public EnvironmentTest {
protected:
    /// The identifiers of a notification's messages.
    static std::vector<std::string> identifiersOf(const Notification& notification) {
        std::vector<std::string> identifiers;
        for (const auto& message : notification.messages())
            identifiers.push_back(message.identifier());
        return identifiers;
    }

    /// The identifiers after `folder`, gone or not, was taken off as the module does it.
    std::vector<std::string> removalOf(const std::u16string& folder) {
        const std::vector<vfs::AbsoluteIRI> locations = {location(folder)};
        return identifiersOf(RemoveIRIsFromKorvexPath(locations, manager()));
    }

    /// The code with which folders are refused.
    static std::optional<vfs::ErrorCode> refusalOf(const Texts& folders) {
        try {
            addToSearchPath(folders);
        } catch (const vfs::Exception& error) {
            return error.getErrorCode();
        }
        return std::nullopt;
    }

    /// What stands where the path is kept, so that it can be neither read nor written.
    void blockFile() const { folder("configuration/path.json"); }
    /// The path is read as before.
    void blockWriting() const {
        std::filesystem::permissions(scratch_.path() / "configuration/path.json",
                                     std::filesystem::perms::owner_read);
    }
};

// ------------------------------------------------------------------------------------------- adding

TEST_F(SearchPathTest, IsEmptyAtFirst) {
    EXPECT_THAT(path(), IsEmpty());
    EXPECT_THAT(manager().getPathEntries(), IsEmpty());
}

TEST_F(SearchPathTest, FoldersComeToTheFrontInTheirOrder) {
    const Texts folders = {folder("a"), folder("b"), folder("c")};
    EXPECT_TRUE(addToSearchPath({folders[2]}).empty());
    EXPECT_TRUE(addToSearchPath({folders[0], folders[1]}).empty());
    EXPECT_EQ(path(), folders);
}

TEST_F(SearchPathTest, FolderThatIsOnThePathMovesAndStandsThereOnce) {
    const std::u16string a = folder("a");
    const std::u16string b = folder("b");
    addToSearchPath({a, b});
    addToSearchPath({b, b});
    EXPECT_THAT(path(), ElementsAre(b, a));
}

TEST_F(SearchPathTest, EntriesAreKeptInTheirCanonicalForm) {
    folder("real/sub");
    std::filesystem::create_directory_symlink("real", scratch_.path() / "link");
    addToSearchPath({u"link/sub/", u"./real/../link"});
    EXPECT_THAT(path(), ElementsAre(here_ + u"/real/sub", here_ + u"/real"));
}

TEST_F(SearchPathTest, FolderOfAnotherStorageMayBeOnIt) {
    addToSearchPath({u"memory://search-path/"});
    EXPECT_THAT(path(), ElementsAre(u"memory://search-path/"));
}

TEST_F(SearchPathTest, WhatIsNoFolderIsRefusedAndNothingChanges) {
    scratch_.writeFile("file");
    const std::u16string a = folder("a");
    EXPECT_EQ(refusalOf({a, u"nothing"}), vfs::resourceNotFound);
    EXPECT_EQ(refusalOf({a, u"file"}), vfs::invalidLocation);
    EXPECT_THROW(addToSearchPath({a, u""}), vfs::InvalidIRIException);
    EXPECT_THROW(addToSearchPath({a, u"ftp://host/x"}), vfs::UnsupportedIRISchemeException);
    EXPECT_THAT(path(), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(scratch_.path() / "configuration"));
}

// ------------------------------------------------------------------------------------------ removing

TEST_F(SearchPathTest, FolderThatWasOnItLeavesWithoutAWord) {
    const std::u16string a = folder("a");
    const std::u16string b = folder("b");
    addToSearchPath({a, b});
    EXPECT_THAT(removalOf(a), IsEmpty());
    EXPECT_THAT(path(), ElementsAre(b));
    EXPECT_THAT(announced_, ElementsAre(EnvironmentEvent{Kind::pathEntriesRemoved, {a}}));
}

TEST_F(SearchPathTest, FolderThatWasNotOnItIsToldAndNotAnnounced) {
    addToSearchPath({folder("a")});
    EXPECT_THAT(removalOf(folder("b")), ElementsAre("KORVEX:host:notOnSearchPath"));
    EXPECT_EQ(path(), Texts{here_ + u"/a"});
    EXPECT_THAT(announced_, IsEmpty());
}

TEST_F(SearchPathTest, OneOfSeveralThatWasOnItIsEnoughForSilence) {
    const std::u16string a = folder("a");
    addToSearchPath({a});
    EXPECT_TRUE(removeFromSearchPath({folder("b"), a}).empty());
    EXPECT_THAT(path(), IsEmpty());
    EXPECT_THAT(announced_, ElementsAre(EnvironmentEvent{Kind::pathEntriesRemoved, {a}}));
}

TEST_F(SearchPathTest, FolderThatIsGoneLeavesByWhateverWayLedThere) {
    folder("real/sub");
    std::filesystem::create_directory_symlink("real", scratch_.path() / "link");
    for (const char16_t* name : {u"/link/sub", u"/link/../real/sub", u"/real/gone/../sub"}) {
        addToSearchPath({folder("real/sub")});
        std::filesystem::remove(scratch_.path() / "real/sub");
        EXPECT_THAT(removalOf(here_ + name), IsEmpty());
        EXPECT_THAT(path(), IsEmpty());
    }
}

TEST_F(SearchPathTest, FoldersBelowOneThatIsGoneLeaveToo) {
    const std::u16string sub = folder("a/b/c");
    addToSearchPath({sub});
    std::filesystem::remove_all(scratch_.path() / "a");
    EXPECT_THAT(removalOf(sub), IsEmpty());
    EXPECT_THAT(path(), IsEmpty());
}

TEST_F(SearchPathTest, TheListedFormCountsWhereALinkHasTakenTheFoldersPlace) {
    const std::u16string a = folder("a");
    const std::u16string b = folder("b");
    addToSearchPath({a, b});
    std::filesystem::remove(scratch_.path() / "a");
    std::filesystem::create_directory_symlink("b", scratch_.path() / "a");
    EXPECT_THAT(removalOf(a), IsEmpty());
    EXPECT_THAT(path(), ElementsAre(b));
}

TEST_F(SearchPathTest, NamesCompareByWholeTexts) {
    const std::u16string a = folder("a");
    addToSearchPath({a, folder("ab"), folder("A")});
    removalOf(a);
    EXPECT_THAT(path(), ElementsAre(here_ + u"/ab", here_ + u"/A"));
}

TEST_F(SearchPathTest, RemoteFolderThatIsGoneLeaves) {
    const vfs::Folder remote(vfs::AbsoluteIRI(u"memory://search-path/gone"),
                             Velquist::KorvexStorageSystem::GetStorageSystemReference());
    remote.createFolder();
    addToSearchPath({u"memory://search-path/gone"});
    remote.removeFolder(vfs::RemoveEmptyFolder);
    EXPECT_THAT(removalOf(u"memory://search-path/gone"), IsEmpty());
    EXPECT_THAT(path(), IsEmpty());
}

// ------------------------------------------------------------------------------------------ restoring

TEST_F(SearchPathTest, RestoringWritesAllEntriesBackInTheirOrder) {
    const Texts folders = {folder("a"), folder("b"), folder("c")};
    addToSearchPath(folders);
    const auto snapshot = manager().getPathEntries();
    std::filesystem::remove(scratch_.path() / "b");
    removeFromSearchPath({folders[1], folders[0]});
    announced_.clear();

    Notification notification;
    manager().restorePathEntries(snapshot, notification);
    EXPECT_TRUE(notification.empty());
    EXPECT_EQ(path(), folders);
    EXPECT_EQ(pathOfAnotherRun(), folders);
    EXPECT_THAT(announced_, ElementsAre(EnvironmentEvent{Kind::pathEntriesRestored, {}}));
}

// ------------------------------------------------------------------------------------------- keeping

TEST_F(SearchPathTest, EveryChangeIsOnDiskWhenItReturns) {
    const std::u16string a = folder("a b%");
    const std::u16string b = folder("b");
    addToSearchPath({a, b});
    EXPECT_THAT(pathOfAnotherRun(), ElementsAre(a, b));
    removalOf(a);
    EXPECT_THAT(pathOfAnotherRun(), ElementsAre(b));
}

TEST_F(SearchPathTest, NameThatIsNoTextIsKept) {
    scratch_.makeFolder("a\xFF");
    addToSearchPath({u"a\xDCFF"});
    EXPECT_THAT(pathOfAnotherRun(), ElementsAre(here_ + u"/a\xDCFF"));
}

TEST_F(SearchPathTest, WhatAnotherProcessHasWrittenIsNotLost) {
    const std::u16string a = folder("a");
    const std::u16string b = folder("b");
    addToSearchPath({a});
    scratch_.writeFile("configuration/path.json", R"({"folders": ["file:///elsewhere"], "note": 1})");
    addToSearchPath({b});
    EXPECT_THAT(path(), ElementsAre(b, u"/elsewhere"));
    EXPECT_THAT(pathOfAnotherRun(), ElementsAre(b, u"/elsewhere"));
}

TEST_F(SearchPathTest, ChangeThatCannotBeWrittenHoldsForThisRun) {
    const std::u16string a = folder("a");
    const std::u16string b = folder("b");
    EXPECT_THAT(path(), IsEmpty());
    blockFile();
    const Notification notification = addToSearchPath({a, b});
    ASSERT_THAT(identifiersOf(notification), ElementsAre("KORVEX:host:searchPathNotWritten"));
    const std::u16string& reason = *notification.messages()[0].args[0].wideText();
    EXPECT_NE(reason.find(here_ + u"/configuration/path.json"), std::u16string::npos);
    EXPECT_THAT(path(), ElementsAre(a, b));

    std::filesystem::remove(scratch_.path() / "configuration/path.json");
    EXPECT_TRUE(addToSearchPath({a}).empty());
    EXPECT_THAT(pathOfAnotherRun(), ElementsAre(a, b));
}

TEST_F(SearchPathTest, RemovalThatCannotBeWrittenIsWarnedOfAndLeavesTheNotificationEmpty) {
    const std::u16string a = folder("a");
    const std::u16string b = folder("b");
    addToSearchPath({a, b});
    blockWriting();
    announced_.clear();
    const Warnings warnings;
    EXPECT_THAT(removalOf(a), IsEmpty());
    EXPECT_THAT(warnings.identifiers(), ElementsAre("KORVEX:host:searchPathNotWritten"));
    EXPECT_THAT(announced_, ElementsAre(EnvironmentEvent{Kind::pathEntriesRemoved, {a}}));
    EXPECT_THAT(path(), ElementsAre(b));
    EXPECT_THAT(removalOf(a), ElementsAre("KORVEX:host:notOnSearchPath"));
    EXPECT_EQ(warnings.identifiers().size(), 1U);
}

TEST_F(SearchPathTest, PathThatCannotBeReadAnyMoreStaysAsItWasKnown) {
    const std::u16string a = folder("a");
    addToSearchPath({a});
    std::filesystem::remove(scratch_.path() / "configuration/path.json");
    blockFile();
    EXPECT_THAT(path(), ElementsAre(a));
}

TEST_F(SearchPathTest, PathThatCannotBeReadIsToldOnceAndTriedAgain) {
    addToSearchPath({folder("a")});
    std::filesystem::rename(scratch_.path() / "configuration/path.json", scratch_.path() / "aside");
    blockFile();
    configuration::setConfigurationFolder(u"");
    EXPECT_THAT(path(), IsEmpty());
    configuration::setConfigurationFolder(here_ + u"/configuration");
    std::vector<std::string> warnings;
    const auto earlier = interpreter::setWarningReceiver(
        [&](const interpreter::Warning& warning) { warnings.push_back(warning.identifier); });
    EXPECT_THAT(path(), IsEmpty());
    EXPECT_THAT(path(), IsEmpty());
    EXPECT_THAT(warnings, ElementsAre("KORVEX:host:searchPathNotRead"));

    std::filesystem::remove(scratch_.path() / "configuration/path.json");
    std::filesystem::rename(scratch_.path() / "aside", scratch_.path() / "configuration/path.json");
    EXPECT_THAT(path(), ElementsAre(here_ + u"/a"));
    interpreter::setWarningReceiver(earlier);
    EXPECT_EQ(warnings.size(), 1U);
}

TEST_F(SearchPathTest, DamagedFileIsSetAsideAndThePathIsEmpty) {
    for (const char* content : {"no json", R"({"folders": 1})", R"({"folders": ["no location"]})"}) {
        scratch_.writeFile("configuration/path.json", content);
        EXPECT_THAT(pathOfAnotherRun(), IsEmpty()) << content;
        EXPECT_FALSE(std::filesystem::exists(scratch_.path() / "configuration/path.json")) << content;
    }
}

TEST_F(SearchPathTest, WithoutAConfigurationFolderItLastsForThisRun) {
    configuration::setConfigurationFolder(u"");
    const std::u16string a = folder("a");
    EXPECT_TRUE(addToSearchPath({a}).empty());
    EXPECT_THAT(path(), ElementsAre(a));
    EXPECT_FALSE(std::filesystem::exists(scratch_.path() / "configuration"));
}

}  // namespace
}  // namespace korvex::runtime::dispatcher
