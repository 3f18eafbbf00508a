// What a change does, to which files, in which order, and where it stops.
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "runtime/interpreter/interrupts.h"
#include "tests/support/posix/ordinary_user.h"
#include "tests/unit/filemanip/file_attributes/file_attributes_fixture.h"

namespace korvex::filemanip::tests {
namespace {

class FileAttributesChangeTest : public FileAttributesTest {
protected:
    void makeTree() const {
        for (const char* file : {"tree/a", "tree/b/inner", "tree/b2", "tree/c"})
            scratch_.writeFile(file);
    }
    /// Keeps neither archive, hidden nor system.
    void makePipe(const std::string& name) const {
        ASSERT_EQ(::mkfifo((scratch_.path() / name).c_str(), 0600), 0);
    }
};

TEST_F(FileAttributesChangeTest, OutputsOfASuccessAreTrueAndTwoEmptyTexts) {
    for (int nlhs = 0; nlhs <= 3; ++nlhs) {
        const Outcome outcome = attrib(nlhs, {u"file", u"+w"});
        // The first output is set even when nobody asked for it.
        EXPECT_TRUE(logicals(outcome.outputs[0]).at(0));
        for (std::size_t text = 1; text < outcome.outputs.size(); ++text) {
            EXPECT_EQ(kxGetClassID(outcome.outputs[text].get()), kxCHAR_CLASS);
            EXPECT_TRUE(kxIsEmpty(outcome.outputs[text].get()));
        }
    }
    EXPECT_EQ(printed_, u"");
}

TEST_F(FileAttributesChangeTest, AFailureIsRaisedWithoutOutputsAndToldWithThem) {
    EXPECT_EQ(attrib(0, {u"nothing", u"+w"}).errorIdentifier, "KORVEX:FILEATTRIB:CannotFindFile");
    const Outcome outcome = attrib(1, {u"nothing", u"+w"});
    EXPECT_EQ(outcome.errorIdentifier, "");
    EXPECT_FALSE(logicals(outcome.outputs[0]).at(0));
    EXPECT_EQ(resultOf({u"nothing", u"+w"}), cannotFind);
    EXPECT_EQ(resultOf({u"no*", u"+w", u"", u"s"}), cannotFind);
}

TEST_F(FileAttributesChangeTest, AFolderAloneIsChangedWithoutTheModifier) {
    makeTree();
    EXPECT_EQ(resultOf({u"tree", u"+h"}), "1");
    EXPECT_EQ(attributesOf("tree"), "hw");
    EXPECT_EQ(attributesOf("tree/a"), "w");
}

TEST_F(FileAttributesChangeTest, WithTheModifierEverythingBelowIsChangedToo) {
    makeTree();
    EXPECT_EQ(resultOf({u"tree", u"+h -w", u"", u"s"}), "1");
    for (const char* name : {"tree", "tree/a", "tree/b", "tree/b/inner", "tree/b2", "tree/c"})
        EXPECT_EQ(attributesOf(name), "h") << name;
    EXPECT_EQ(attributesOf("file"), "w");
    EXPECT_EQ(resultOf({u"tree", u"+w -h", u"", u"s"}), "1");
    EXPECT_EQ(attributesOf("tree/b/inner"), "w");
}

TEST_F(FileAttributesChangeTest, AWildcardChangesItsMatchesAlone) {
    makeTree();
    for (const Words& words : {Words{u"tree/b*", u"+h"}, Words{u"tree/b*", u"+h", u"", u"s"}}) {
        EXPECT_EQ(resultOf(words), "1");
        EXPECT_EQ(attributesOf("tree/b"), "hw");
        EXPECT_EQ(attributesOf("tree/b2"), "hw");
        EXPECT_EQ(attributesOf("tree/b/inner"), "w");
        EXPECT_EQ(attributesOf("tree/a"), "w");
    }
}

TEST_F(FileAttributesChangeTest, AFileThatReallyHasAWildcardForItsNameIsThatFile) {
    makeTree();
    scratch_.writeFile("tree/b*");
    EXPECT_EQ(resultOf({u"tree/b*", u"+h"}), "1");
    EXPECT_EQ(attributesOf("tree/b*"), "hw");
    EXPECT_EQ(attributesOf("tree/b2"), "w");
}

TEST_F(FileAttributesChangeTest, TheFirstFailureStopsAndWhatWasDoneStays) {
    makeTree();
    makePipe("tree/b1");
    EXPECT_EQ(resultOf({u"tree/*", u"+h"}), couldNotSet);
    EXPECT_EQ(attributesOf("tree/a"), "hw");
    EXPECT_EQ(attributesOf("tree/b"), "hw");
    EXPECT_EQ(attributesOf("tree/b2"), "w");
    EXPECT_EQ(attributesOf("tree/c"), "w");
    EXPECT_EQ(resultOf({u"tree", u"+s", u"", u"s"}), couldNotSet);
    EXPECT_EQ(attributesOf("tree"), "sw");
    EXPECT_EQ(attributesOf("tree/b/inner"), "sw");
    EXPECT_EQ(attributesOf("tree/b2"), "w");
}

TEST_F(FileAttributesChangeTest, AdditionsGoBeforeRemovals) {
    makePipe("pipe");
    EXPECT_EQ(resultOf({u"pipe", u"-w +h"}), couldNotSet);
    EXPECT_EQ(attributesOf("pipe"), "w");
    EXPECT_EQ(resultOf({u"pipe", u"-w -h"}), "1");
    EXPECT_EQ(attributesOf("pipe"), "");
}

TEST_F(FileAttributesChangeTest, WhereAttributesAreNotKeptChangingThemFails) {
    EXPECT_EQ(resultOf({u"/proc/version", u"+h"}), couldNotSet);
    EXPECT_EQ(attrib(0, {u"/proc/version", u"+h"}).errorIdentifier,
              "KORVEX:FILEATTRIB:CouldNotSetAttributes");
}

TEST_F(FileAttributesChangeTest, OfTwoFilesTheSecondIsNotTouchedWhenTheFirstFails) {
    scratch_.makeFolder("two");
    makePipe("two/a");
    scratch_.writeFile("two/b");
    EXPECT_EQ(resultOf({u"two/*", u"+h -w"}), couldNotSet);
    EXPECT_EQ(attributesOf("two/a"), "w");
    EXPECT_EQ(attributesOf("two/b"), "w");
    EXPECT_EQ(resultOf({u"two/b", u"+h -w"}), "1");
    EXPECT_EQ(attributesOf("two/b"), "h");
}

TEST_F(FileAttributesChangeTest, AForeignFileAmongTwoKeepsTheOtherFromBeingTouched) {
    if (::geteuid() != 0) {
        // An ordinary user has no foreign files to offer but those of the system.
        EXPECT_EQ(resultOf({u"/etc/passwd", u"+h"}), couldNotSet);
        return;
    }
    scratch_.writeFile("two/a");
    scratch_.writeFile("two/b");
    protect("two/a");
    protect("two/b");
    fs::permissions(scratch_.path(), fs::perms::all);
    ASSERT_EQ(::chown((scratch_.path() / "two/b").c_str(), 65534, 65534), 0);
    const korvex::tests::OrdinaryUser user;
    EXPECT_EQ(resultOf({u"two/*", u"+w"}), couldNotSet);
    EXPECT_EQ(attributesOf("two/a"), "");
    EXPECT_EQ(attributesOf("two/b"), "");
    EXPECT_EQ(resultOf({u"two/b", u"+w"}), "1");
    EXPECT_EQ(attributesOf("two/b"), "w");
}

TEST_F(FileAttributesChangeTest, AFolderThatMayNotBeEnteredKeepsItsFilesFromChanges) {
    scratch_.writeFile("closed/file");
    fs::permissions(scratch_.path(), fs::perms::all);
    fs::permissions(scratch_.path() / "closed", fs::perms::owner_read);
    const korvex::tests::OrdinaryUser user;
    EXPECT_EQ(resultOf({u"closed/file", u"+w"}), couldNotSet);
    EXPECT_EQ(resultOf({u"closed/file", u"+w", u"", u"s"}), couldNotSet);
    EXPECT_EQ(resultOf({u"closed/file"}), systemError);
}

TEST_F(FileAttributesChangeTest, AFileThatMayNotBeLookedForCouldNotBeSet) {
    local_->failAt(Operation::existence, locationOf("file"), {.code = vfs::permissionDenied});
    EXPECT_EQ(resultOf({u"file", u"+h"}), couldNotSet);
    local_->forgetFaults();
    EXPECT_EQ(attributesOf("file"), "w");
}

TEST_F(FileAttributesChangeTest, AnyOtherFailureOfTheLookIsTheSystems) {
    local_->failAt(Operation::existence, locationOf("file"), {.code = vfs::ioError});
    EXPECT_EQ(resultOf({u"file", u"+h"}), systemError);
}

TEST_F(FileAttributesChangeTest, AFolderThatCannotBeListedIsChangedWithTheRestOfItsTree) {
    makeTree();
    local_->failAt(Operation::list, locationOf("tree/b"), {.code = vfs::permissionDenied});
    EXPECT_EQ(resultOf({u"tree", u"+h", u"", u"s"}), "1");
    EXPECT_EQ(attributesOf("tree/b"), "hw");
    EXPECT_EQ(attributesOf("tree/b/inner"), "w");
    EXPECT_EQ(attributesOf("tree/c"), "hw");
}

TEST_F(FileAttributesChangeTest, AFolderOfMatchesThatCannotBeListedHasNone) {
    local_->failCall(Operation::list, 1, {.code = vfs::permissionDenied});
    EXPECT_EQ(resultOf({u"fil*", u"+h"}), cannotFind);
}

TEST_F(FileAttributesChangeTest, LinksInATreeAndAmongMatchesAreLeftAlone) {
    makeTree();
    scratch_.writeFile("outside/file");
    fs::create_directory_symlink("../outside", scratch_.path() / "tree/to-folder");
    fs::create_symlink("../outside/file", scratch_.path() / "tree/to-file");
    fs::create_symlink("nothing", scratch_.path() / "tree/to-nothing");
    EXPECT_EQ(resultOf({u"tree", u"+h -w", u"", u"s"}), "1");
    EXPECT_EQ(resultOf({u"tree/to*", u"+h -w"}), "1");
    EXPECT_EQ(attributesOf("outside"), "w");
    EXPECT_EQ(attributesOf("outside/file"), "w");
}

TEST_F(FileAttributesChangeTest, ALinkThatIsNamedStandsForWhatItLeadsTo) {
    makeTree();
    fs::create_directory_symlink("tree", scratch_.path() / "link");
    EXPECT_EQ(resultOf({u"link", u"+h", u"", u"s"}), "1");
    EXPECT_EQ(attributesOf("tree"), "hw");
    EXPECT_EQ(attributesOf("tree/a"), "w");
    fs::create_symlink("nothing", scratch_.path() / "nowhere");
    EXPECT_EQ(resultOf({u"nowhere", u"+h"}), couldNotSet);
}

TEST_F(FileAttributesChangeTest, ASeparatorAtTheEndAndDotsChangeNothing) {
    makeTree();
    EXPECT_EQ(resultOf({u"tree/", u"+h", u"", u"s"}), "1");
    EXPECT_EQ(attributesOf("tree/b/inner"), "hw");
    EXPECT_EQ(resultOf({u"./tree/../tree", u"-h", u"", u"s"}), "1");
    EXPECT_EQ(attributesOf("tree/b/inner"), "w");
    EXPECT_EQ(resultOf({u".", u"+h", u"", u"s"}), "1");
    EXPECT_EQ(attributesOf("tree/b/inner"), "hw");
    EXPECT_EQ(attributesOf("file"), "hw");
}

/// Says once that a folder is not there.
class LateFolder : public FaultInjectingProvider {
public:
    explicit LateFolder(vfs::AbsoluteIRI folder)
        : FaultInjectingProvider(std::make_shared<runtime::storage::LocalProvider>()),
          folder_(std::move(folder)) {}

    runtime::storage::ExistenceType existence(const vfs::AbsoluteIRI& location) override {
        const bool isLate = location == folder_ && std::exchange(isLate_, false);
        return isLate ? foundation::storage::provider::AsNeither
                      : FaultInjectingProvider::existence(location);
    }

private:
    const vfs::AbsoluteIRI folder_;
    bool isLate_ = true;
};

TEST_F(FileAttributesChangeTest, AFolderThatAppearsAfterTheLookForItIsChangedAlone) {
    makeTree();
    const auto changeLate = [this](const Words& words) {
        auto system = std::make_shared<vfs::StorageSystem>();
        system->add(u"file", std::make_shared<LateFolder>(locationOf("tree")));
        const runtime::storage::ScopedStorageSystem late(std::move(system));
        return resultOf(words);
    };
    for (const char16_t* name : {u"tree", u"tree/"}) {
        EXPECT_EQ(changeLate({name, u"+h"}), "1");
        EXPECT_EQ(attributesOf("tree"), "hw");
        EXPECT_EQ(attributesOf("tree/a"), "w");
        EXPECT_EQ(attributesOf("tree/b/inner"), "w");
        EXPECT_EQ(resultOf({u"tree", u"-h"}), "1");
    }
    EXPECT_EQ(changeLate({u"tree", u"+h", u"", u"s"}), "1");
    EXPECT_EQ(attributesOf("tree/b/inner"), "hw");
}

TEST_F(FileAttributesChangeTest, AnInterruptEndsAChangeAndStaysPending) {
    makeTree();
    runtime::interpreter::raiseInterrupt();
    EXPECT_EQ(resultOf({u"tree", u"+h"}), couldNotSet);
    // It gets no further than to the list of files.
    EXPECT_EQ(resultOf({u"tree", u"+h", u"", u"s"}), systemError);
    EXPECT_TRUE(runtime::interpreter::takeInterrupt());
    EXPECT_EQ(attributesOf("tree"), "w");
    EXPECT_EQ(attributesOf("tree/a"), "w");
}

TEST_F(FileAttributesChangeTest, StoredAttributesOfAnUnknownFormCouldNotBeSet) {
    const std::string newer("\0\0\x06\0\x06\0\0\0", 8);
    ASSERT_EQ(::setxattr((scratch_.path() / "file").c_str(), "user.DOSATTRIB", newer.data(), newer.size(), 0),
              0);
    EXPECT_EQ(resultOf({u"file", u"+h"}), couldNotSet);
    EXPECT_EQ(resultOf({u"file", u"-w"}), "1");
}

TEST_F(FileAttributesChangeTest, ACurrentFolderThatIsGoneIsTheSystemsFailure) {
    runtime::dispatcher::setCurrentFolderPath(scratch_.makeFolder("gone").u16string());
    fs::remove(scratch_.path() / "gone");
    EXPECT_EQ(resultOf({u"file", u"+h"}), systemError);
}

}  // namespace
}  // namespace korvex::filemanip::tests
