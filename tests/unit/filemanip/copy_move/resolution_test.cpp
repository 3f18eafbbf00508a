// From the two typed texts to two locations: what is refused there, in which order and in which words, before
// anything was touched.
#include "io/filesystem/filemanip/CopyMoveFiles.h"
#include "platform/filesystem_core.h"
#include "platform/message_identifiers.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/text/encoding.h"
#include "tests/unit/filemanip/copy_move/copy_move_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using testing::IsEmpty;

constexpr const char* invalidIRI = "KORVEX:virtualfilesystem:invalidIRI";
constexpr const char* nullInName = "KORVEX:FileManip:NullCharacterInName";

std::u16string withNull(const std::u16string& text) { return text + std::u16string(u"\0x", 2); }

/// "/s/a" and "/d/", on both kinds of storage; "http://host/a" and "http://host/" answer.
class ResolutionTest : public WatchedStorageTest, public testing::WithParamInterface<Command> {
protected:
    ResolutionTest() {
        for (const std::u16string prefix : {u"", u"memory://box"}) {
            storage_.put(prefix + u"/s/a", "A");
            storage_.put(prefix + u"/d/");
        }
        storage_.put(u"http://host/a", "web");
        storage_.provider->forgetCalls();
    }

    Failure run(const std::u16string& source, const std::u16string& destination) const {
        return failureOf(GetParam(), {source, destination});
    }
    std::string identifier(const std::string& key) const { return "KORVEX:" + GetParam().word + ':' + key; }
    Failure same() const {
        return failure(identifier("SourceAndDestinationSame"), "KORVEX:FILE:SourceAndDestinationSame");
    }
    Failure notFound(const std::u16string& source) const {
        return failure(identifier("FileNotFound"), "KORVEX:FILE:FileNotFound", {source});
    }
    static Failure webIsReadOnly() {
        return failure("KORVEX:virtualfilesystem:writeNotAllowed",
                       "KORVEX:virtualfileio:stream:writeNotAllowed");
    }
    void expectNothingTouched() {
        EXPECT_THAT(storage_.changes(), IsEmpty());
        EXPECT_THAT(environment_.takeEvents(), IsEmpty());
        EXPECT_THAT(environment_.takeWarnings(), IsEmpty());
    }
};

INSTANTIATE_TEST_SUITE_P(CopyMove, ResolutionTest, testing::Values(copyCommand, moveCommand), nameOfCommand);

TEST_P(ResolutionTest, NullCharacterIsRefusedInEitherText) {
    const Failure expected = plainFailure(nullInName);
    EXPECT_EQ(run(withNull(u"/s/a"), u"/d"), expected);
    EXPECT_EQ(run(u"/s/a", withNull(u"/d")), expected);
    EXPECT_EQ(run(withNull(u"memory://box/s/a"), u"/d"), expected);
    EXPECT_EQ(run(u"/s/a", withNull(u"memory:///")), expected);
    EXPECT_EQ(run(withNull(u"http://host/a"), withNull(u"file:/x")), expected);
    expectNothingTouched();
}

TEST_P(ResolutionTest, NullCharacterInTheSourceIsTheFirstThingLookedFor) {
    EXPECT_EQ(run(withNull(u"file:/x"), u"http://host/b"), plainFailure(nullInName));
    EXPECT_EQ(run(withNull(std::u16string(2000, u'x')), u"/d"), plainFailure(nullInName));
}

TEST_P(ResolutionTest, NullCharacterInTheDestinationIsFoundBehindTheSourcesOwnFaults) {
    EXPECT_EQ(run(u"file:/x", withNull(u"/d")), plainFailure(invalidIRI, {u"file:/x"}));
    EXPECT_EQ(run(u"/nothing", withNull(u"/d")), plainFailure(nullInName));
    EXPECT_EQ(run(u"gopher://host/a", withNull(u"/d")), plainFailure(nullInName));
}

TEST_P(ResolutionTest, EmptySourceHasAMessageOfItsOwn) {
    std::unique_ptr<CopyMoveFiles> engine;
    if (GetParam().isCopy) {
        engine = std::make_unique<CopyFiles>();
    } else {
        engine = std::make_unique<MoveFiles>();
    }
    const io::filesystem::core::Status status = engine->Process({u"", u"/d"}, {});
    EXPECT_EQ(status.code, io::filesystem::core::Status::failure);
    EXPECT_EQ(io::filesystem::core::detail::GetID(status.exception), identifier("SourceArgumentIsEmpty"));
    EXPECT_EQ(
        runtime::text::toDisplayBytes(io::filesystem::core::detail::GetUnicodeMessageTxt(status.exception)),
        textOf(KORVEX::FILE::SourceArgumentIsEmpty()));
    expectNothingTouched();
}

TEST_P(ResolutionTest, TextsWithASchemeMustBeWellFormed) {
    for (const char16_t* text : {u"file:/s/a", u"file:////s/a", u"memory:/box/s/a", u"memory:///box/s/a",
                                 u"memory://box/./s/a", u"memory://box/s/../s/a", u"memory://box/s/a/..",
                                 u"file:///s/./a", u"http:/host/a", u"http:///host/a", u"http://host/../a"}) {
        EXPECT_EQ(run(text, u"/d"), plainFailure(invalidIRI, {text}));
        EXPECT_EQ(run(u"/s/a", text), plainFailure(invalidIRI, {text}));
    }
    expectNothingTouched();
}

TEST_P(ResolutionTest, RefusedTextsAreShownDecoded) {
    EXPECT_EQ(run(u"memory:/a%20b", u"/d"), plainFailure(invalidIRI, {u"memory:/a b"}));
    EXPECT_EQ(run(u"/s/a", u"memory:/a%20b"), plainFailure(invalidIRI, {u"memory:/a b"}));
    EXPECT_EQ(run(u"memory://bo x/a%20b", u"/d"), plainFailure(invalidIRI, {u"memory://bo x/a b/"}));
    EXPECT_EQ(run(u"/s/a", u"memory://bo x/a%20b"), plainFailure(invalidIRI, {u"memory://bo x/a b/"}));
    EXPECT_EQ(run(u"memory://bo x/", u"/d"), plainFailure(invalidIRI, {u"memory://bo x/"}));
    EXPECT_EQ(run(u"memory://bo x/*", u"/d"), plainFailure(invalidIRI, {u"memory://bo x/*"}));
    expectNothingTouched();
}

TEST_P(ResolutionTest, HostWithoutAPathGetsTheSlashThatMakesItParse) {
    EXPECT_EQ(run(u"/s/a", u"memory://box"), noFailure());
    EXPECT_EQ(storage_.existence(u"memory://box/a"), provider::AsFile);
}

TEST_P(ResolutionTest, SchemesIgnoreCaseAndFileLocationsAreLocal) {
    EXPECT_EQ(run(u"FILE:///s/a", u"MEMORY://box/d"), noFailure());
    EXPECT_EQ(storage_.existence(u"memory://box/d/a"), provider::AsFile);
}

TEST_P(ResolutionTest, RelativeSourceWithoutACurrentFolderIsTheSystemsFailure) {
    storage_.memory->removeFolder(storage_.at(u"/here"), vfs::RemoveWithContents);
    EXPECT_EQ(run(u"a", u"/d"), failure(identifier("OSError"), "KORVEX:FileManip:OSError"));
    expectNothingTouched();
}

TEST_P(ResolutionTest, RelativeDestinationWithoutACurrentFolderIsNoLocation) {
    storage_.memory->removeFolder(storage_.at(u"/here"), vfs::RemoveWithContents);
    EXPECT_EQ(run(u"/s/a", u"b"), plainFailure(invalidIRI, {u""}));
    expectNothingTouched();
}

TEST_P(ResolutionTest, AbsolutePathsNeedNoCurrentFolder) {
    storage_.memory->removeFolder(storage_.at(u"/here"), vfs::RemoveWithContents);
    EXPECT_EQ(run(u"/s/a", u"/d"), noFailure());
    EXPECT_EQ(storage_.existence(u"/d/a"), provider::AsFile);
}

TEST_P(ResolutionTest, RelativePathsAreTakenAgainstTheCurrentFolder) {
    runtime::dispatcher::setCurrentFolderPath(u"/s");
    EXPECT_EQ(run(u"./a", u"..//d/./b"), noFailure());
    EXPECT_EQ(storage_.existence(u"/d/b"), provider::AsFile);
}

TEST_P(ResolutionTest, LocalSourceMayHave1280UnitsOnceItIsAbsolute) {
    const std::u16string longest = u"/s/" + std::u16string(1277, u'x');
    storage_.put(longest, "X");
    EXPECT_EQ(run(longest, u"/d/x"), noFailure());
    EXPECT_EQ(run(longest + u'x', u"/d/y"), plainFailure("KORVEX:FILE:PATHMAX"));
    runtime::dispatcher::setCurrentFolderPath(u"/s");
    EXPECT_EQ(run(std::u16string(1278, u'x'), u"/d/z"), plainFailure("KORVEX:FILE:PATHMAX"));
    EXPECT_EQ(run(u"/d/../d/" + std::u16string(1276, u'x'), u"/y"),
              notFound(u"/d/" + std::u16string(1276, u'x')));
}

TEST_P(ResolutionTest, LengthOfTheSourceIsJudgedBeforeTheDestination) {
    EXPECT_EQ(run(std::u16string(1300, u'x'), withNull(u"file:/x")), plainFailure("KORVEX:FILE:PATHMAX"));
}

TEST_P(ResolutionTest, LengthOfAnyOtherTextIsNotChecked) {
    const std::u16string longName(5000, u'x');
    storage_.put(u"memory://box/" + longName, "X");
    EXPECT_EQ(run(u"memory://box/" + longName, u"/d/" + longName), noFailure());
    EXPECT_EQ(storage_.existence(u"/d/" + longName), provider::AsFile);
    EXPECT_EQ(run(u"file:///d/" + longName, u"/d/back"), noFailure());
    EXPECT_EQ(storage_.existence(u"/d/back"), provider::AsFile);
}

TEST_P(ResolutionTest, NothingIsWrittenToTheWeb) {
    for (const char16_t* text :
         {u"http://host/b", u"https://host/b", u"HTTP://host/b", u"hTTps://host", u"http://host/"}) {
        EXPECT_EQ(run(u"/s/a", text), webIsReadOnly());
        EXPECT_EQ(run(u"/nothing", text), webIsReadOnly());
        EXPECT_EQ(run(u"memory://box/s/a", text), webIsReadOnly());
    }
    expectNothingTouched();
}

TEST_P(ResolutionTest, CopiesComeFromTheWebAndMovesDoNot) {
    if (GetParam().isCopy) {
        EXPECT_EQ(run(u"http://host/a", u"/d/a"), noFailure());
        EXPECT_EQ(storage_.treeOf(u"/d"), (Tree{{"a", "web"}}));
        return;
    }
    EXPECT_EQ(run(u"http://host/a", u"/d/a"), webIsReadOnly());
    EXPECT_EQ(run(u"HTTPS://host/a", withNull(u"file:/x")), webIsReadOnly());
    EXPECT_EQ(run(u"http://host", u"/d/a"), webIsReadOnly());
    expectNothingTouched();
}

TEST_P(ResolutionTest, WebLocationWithoutAFileIsNamedAsItWasTyped) {
    if (!GetParam().isCopy) return;
    for (const char16_t* typed : {u"http://host/", u"http://host", u"HTTPS://Host/", u"hTTp://host"}) {
        const Failure expected = failure("KORVEX:virtualfilesystem:pathComponentMissing",
                                         "KORVEX:virtualfileio:stream:pathComponentMissing", {typed});
        EXPECT_EQ(run(typed, u"/d"), expected);
        EXPECT_EQ(run(typed, withNull(u"/d")), expected);
        EXPECT_EQ(run(typed, u"http://host/b"), expected);
    }
    expectNothingTouched();
}

TEST_P(ResolutionTest, RootOfAnotherStorageIsNoWebLocation) {
    const Failure told = run(u"memory://other", u"memory://box/d");
    EXPECT_NE(told.entry, "KORVEX:virtualfileio:stream:pathComponentMissing");
    // That a root stays where it is is the storage's own rule.
    EXPECT_EQ(told == noFailure(), GetParam().isCopy);
}

TEST_P(ResolutionTest, SameSourceAndDestinationAreRefused) {
    for (const auto& [source, destination] : {std::pair<std::u16string, std::u16string>{u"/s/a", u"/s/a"},
                                              {u"/s/a", u"/s//./x/../a"},
                                              {u"/s/a", u"/s/a/"},
                                              {u"/s/a", u"/S/A"},
                                              {u"/s", u"/S/"},
                                              {u"/nothing", u"/nothing"},
                                              {u"/\u00C4\u00D6", u"/\u00E4\u00F6"},
                                              {u"memory://box/s/a", u"memory://box/s/a"},
                                              {u"memory://box/s/a", u"memory://box/S/A"},
                                              {u"memory://box/a%20b", u"memory://box/a b"},
                                              {u"file:///s/a", u"/s/a"},
                                              {u"/s/a", u"file:///S/a"},
                                              {u"gopher://host/a", u"gopher://host/a"}}) {
        EXPECT_EQ(run(source, destination), same());
    }
    expectNothingTouched();
}

TEST_P(ResolutionTest, FolderOfTheSourceIsNoDestination) {
    for (const auto& [source, destination] : {std::pair<std::u16string, std::u16string>{u"/s/a", u"/s"},
                                              {u"/s/a", u"/s/"},
                                              {u"/s/a", u"/S"},
                                              {u"/s/*", u"/s"},
                                              {u"/nothing", u"/"},
                                              {u"memory://box/s/a", u"memory://box/s"},
                                              {u"memory://box/s", u"memory://box"},
                                              {u"memory://box/s", u"memory://box/"}}) {
        EXPECT_EQ(run(source, destination), same());
    }
    expectNothingTouched();
}

TEST_P(ResolutionTest, FileOfTheCurrentFolderCannotGoIntoTheCurrentFolder) {
    runtime::dispatcher::setCurrentFolderPath(u"/s");
    EXPECT_EQ(failureOf(GetParam(), Texts{u"a"}), same());
    EXPECT_EQ(failureOf(GetParam(), Texts{u"A.txt"}), same());
}

TEST_P(ResolutionTest, RootHasNoFolderThatCouldBeTheDestination) {
    runtime::dispatcher::setCurrentFolderPath(u"/s");
    EXPECT_EQ(run(u"/", u"/s"), failure(identifier("SourceIsAncestorOfDestination"),
                                        "KORVEX:FILE:SourceIsAncestorOfDestination"));
    expectNothingTouched();
}

TEST_P(ResolutionTest, SchemeThatNobodyServesIsNamed) {
    const Failure expected = plainFailure("KORVEX:virtualfilesystem:unsupportedProvider", {u"gopher"});
    EXPECT_EQ(run(u"gopher://host/a", u"/d"), expected);
    EXPECT_EQ(run(u"/s/a", u"gopher://host/a"), expected);
    EXPECT_EQ(run(u"/s", u"gopher://host/a"), expected);
    EXPECT_EQ(run(u"/s/*", u"gopher://host/a"), expected);
    EXPECT_EQ(run(u"GOPHER://host/a", u"gopher://host/b"), expected);
    expectNothingTouched();
}

TEST_P(ResolutionTest, SchemeAtEitherEndChoosesTheStoragesWords) {
    const auto storagesWords = [](const std::u16string& at) {
        return plainFailure("KORVEX:virtualfilesystem:resourceNotFound", {at});
    };
    EXPECT_EQ(run(u"/nothing", u"/d"), notFound(u"/nothing"));
    EXPECT_EQ(run(u"/nothing", u"memory://box/d"), storagesWords(u"/nothing"));
    EXPECT_EQ(run(u"/nothing", u"file:///d"), storagesWords(u"/nothing"));
    EXPECT_EQ(run(u"memory://box/nothing", u"/d"), storagesWords(u"memory://box/nothing"));
    EXPECT_EQ(run(u"file:///a%20b", u"/d"), storagesWords(u"/a b"));
    EXPECT_EQ(run(u"memory://box/a%20b", u"/d"), storagesWords(u"memory://box/a b"));
    expectNothingTouched();
}

}  // namespace
}  // namespace korvex::filemanip::tests
