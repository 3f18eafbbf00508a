// `dir` on the local disk: what is listed and printed, and what becomes of each kind of argument.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "platform/message_catalog.h"
#include "platform/message_identifiers.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/storage/fault_injection/fault_injecting_provider.h"
#include "runtime/storage/providers/local/local_provider.h"
#include "runtime/storage/storage_system.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/filemanip/dir_listing/listing_outcome.h"

namespace korvex::filemanip::tests {
namespace {

namespace storage = korvex::runtime::storage;
namespace vfs = foundation::storage::vfs;
using testing::ElementsAre;

class DirCommandTest : public testing::Test {
protected:
    DirCommandTest() { moveTo(""); }
    ~DirCommandTest() override { runtime::dispatcher::setCurrentFolderPath(u"/"); }

    void moveTo(const std::filesystem::path& folder) const {
        runtime::dispatcher::setCurrentFolderPath((scratch_.path() / folder).u16string());
    }
    std::string here(const std::string& name = {}) const {
        return (name.empty() ? scratch_.path() : scratch_.path() / name).string();
    }
    void makeFiles(const std::vector<std::string>& names) const {
        for (const std::string& name : names)
            scratch_.writeFile(name, "12345");
    }

    korvex::tests::ScratchFolder scratch_;
    WindowOfColumns window_{80};
};

std::string notFound(const std::string& name) {
    return "\"" + name + "\" was not found. Check the spelling and the current folder.\n";
}
std::string noMatch(const std::string& pattern) {
    return "Nothing matches \"" + pattern + "\". Check the pattern and the current folder.\n";
}
constexpr const char* emptyFolder = "\nThere are no files in this folder.\n\n";

// ------------------------------------------------------------------------------------------ argument counts

TEST_F(DirCommandTest, TooManyOutputsAreReportedBeforeTooManyArguments) {
    const Array name = text(u"a");
    EXPECT_EQ(listing(2, {name.get()}).errorIdentifier, "KORVEX:maxlhs");
    EXPECT_EQ(listing(2, {name.get(), name.get()}).errorIdentifier, "KORVEX:maxlhs");
    EXPECT_EQ(listing(1, {name.get(), name.get()}).errorIdentifier, "KORVEX:maxrhs");
    EXPECT_EQ(listing(0, {name.get(), name.get()}).errorIdentifier, "KORVEX:maxrhs");
}

TEST_F(DirCommandTest, ArgumentThatIsNotOneTextIsRefused) {
    const std::u16string label =
        fl::i18n::MessageCatalog::get_message(KORVEX::string::Name(), fl::i18n::KwLocale::global());
    const Array numbers = number(1);
    const Array matrixOfText = characters({2, 3});
    const Array tall = characters({0, 3});
    const Array texts = strings({1, 2}, {u"a", u"b"});
    const Array inCell = cell({1, 1}, text(u"a"));
    for (const int nlhs : {0, 1}) {
        for (const kxArray* argument :
             {numbers.get(), matrixOfText.get(), tall.get(), texts.get(), inCell.get()}) {
            const ListingOutcome outcome = listing(nlhs, {argument});
            EXPECT_EQ(outcome.errorIdentifier, "KORVEX:dir:invalidInputType");
            EXPECT_EQ(outcome.catalogEntry, "KORVEX:string:MustBeSingleString");
            EXPECT_THAT(outcome.errorArguments, ElementsAre(label));
        }
    }
}

TEST_F(DirCommandTest, ArgumentThatIsNotThereIsNotOneTextEither) {
    EXPECT_EQ(listing(0, {nullptr}).errorIdentifier, "KORVEX:dir:invalidInputType");
    EXPECT_EQ(listing(1, {nullptr}).errorIdentifier, "KORVEX:dir:invalidInputType");
}

TEST_F(DirCommandTest, MissingStringIsRefused) {
    EXPECT_EQ(listing(0, {missing().get()}).errorIdentifier, "KORVEX:string:MissingNotSupported");
    EXPECT_EQ(listing(1, {missing().get()}).errorIdentifier, "KORVEX:string:MissingNotSupported");
}

TEST_F(DirCommandTest, StringScalarIsTakenLikeACharacterVector) {
    makeFiles({"sub/a"});
    EXPECT_EQ(listing(0, {string(u"sub").get()}).printed, "\na  \n\n");
}

// ----------------------------------------------------------------------------------------- what is listed

TEST_F(DirCommandTest, WithoutAnArgumentTheCurrentFolderIsPrintedWithoutAHeader) {
    makeFiles({"b", "A", "sub/inner", ".hidden"});
    EXPECT_EQ(print().printed, "\n.hidden  A        b        sub      \n\n");
}

TEST_F(DirCommandTest, WithoutAnArgumentAnEmptyFolderSaysSo) {
    EXPECT_EQ(print().printed, emptyFolder);
    expectEmptyStructure(list().outputs[0]);
}

TEST_F(DirCommandTest, WildcardInTheNameOfTheCurrentFolderIsNone) {
    makeFiles({"a*b/inner", "axb/other"});
    moveTo("a*b");
    EXPECT_EQ(print().printed, "\ninner  \n\n");
    EXPECT_THAT(column(list().outputs[0], "name"), ElementsAre("inner"));
}

TEST_F(DirCommandTest, WildcardInTheNameOfTheCurrentFolderIsOneForANameInIt) {
    makeFiles({"a*b/one", "axb/one", "axb/two"});
    moveTo("a*b");
    EXPECT_EQ(print(u"one").printed, "Files found in " + here("a*b") + ":\n\none  \n\n" + "Files found in " +
                                         here("axb") + ":\n\none  \n\n");
    EXPECT_THAT(column(list(u"one").outputs[0], "folder"), ElementsAre(here("a*b"), here("axb")));
    // Without its dot the current folder is its own name, which matches the ones beside it.
    EXPECT_EQ(print(u".").printed, "\na*b  axb  \n\n");
}

TEST_F(DirCommandTest, FolderWithAQuestionMarkInItsNameIsOpened) {
    makeFiles({"what?/inner", "whatx/other", "sub/a?/deep"});
    EXPECT_EQ(print(u"what?").printed, "\ninner  \n\n");
    EXPECT_EQ(print(u"what?/").printed, "\ninner  \n\n");
    EXPECT_EQ(print(u"sub/a?").printed, "\ndeep  \n\n");
    EXPECT_THAT(column(list(u"what?").outputs[0], "name"), ElementsAre("inner"));
    EXPECT_EQ(print(u"wha?x").printed, "\nwhatx  \n\n");
}

TEST_F(DirCommandTest, FolderIsOpenedWithoutAHeader) {
    makeFiles({"sub/x", "sub/deep/y"});
    for (const auto* name : {u"sub", u"sub/", u"./sub", u"sub/.", u"sub/deep/..", u"sub//"}) {
        EXPECT_EQ(print(name).printed, "\ndeep  x     \n\n");
    }
    EXPECT_EQ(print(scratch_.text() + u"/sub").printed, "\ndeep  x     \n\n");
}

TEST_F(DirCommandTest, DotsListTheCurrentFolderAndTheOneAbove) {
    makeFiles({"sub/x", "y"});
    moveTo("sub");
    EXPECT_EQ(print(u".").printed, "\nx  \n\n");
    EXPECT_EQ(print(u"..").printed, "\nsub  y    \n\n");
    EXPECT_THAT(column(list(u"..").outputs[0], "folder"), ElementsAre(here(), here()));
}

TEST_F(DirCommandTest, EmptyFolderIsReportedAndFound) {
    scratch_.makeFolder("empty");
    EXPECT_EQ(print(u"empty").printed, emptyFolder);
    EXPECT_EQ(print(u"empty/").printed, emptyFolder);
    EXPECT_EQ(print(u"empty/*").printed, emptyFolder);
    const ListingOutcome outcome = list(u"empty");
    expectEmptyStructure(outcome.outputs[0]);
    EXPECT_EQ(outcome.printed, "");
}

TEST_F(DirCommandTest, FileIsListedByItself) {
    makeFiles({"sub/x"});
    EXPECT_EQ(print(u"sub/x").printed, "\nx  \n\n");
    const Array structure = std::move(list(u"sub/x").outputs[0]);
    EXPECT_EQ(textOf(field(structure, 0, "folder")), here("sub"));
    EXPECT_EQ(kxGetScalar(field(structure, 0, "bytes")), 5);
    EXPECT_EQ(kxGetScalar(field(structure, 0, "isdir")), 0);
}

TEST_F(DirCommandTest, PatternPicksNamesWithoutAHeader) {
    makeFiles({"a.txt", "b.txt", "c.dat", "sub/d.txt"});
    EXPECT_EQ(print(u"*.txt").printed, "\na.txt  b.txt  \n\n");
    EXPECT_EQ(print(u"?.dat").printed, "\nc.dat  \n\n");
    EXPECT_EQ(print(u"sub/*.txt").printed, "\nd.txt  \n\n");
}

TEST_F(DirCommandTest, WildcardInTheFolderPartGivesHeaders) {
    makeFiles({"one/a", "two/b"});
    EXPECT_EQ(print(u"*/*").printed, "Files found in " + here("one") + ":\n\na  \n\n" + "Files found in " +
                                         here("two") + ":\n\nb  \n\n");
}

TEST_F(DirCommandTest, TwoStarsPrintTheWholeTreeAndCallTheCurrentFolderByThatName) {
    makeFiles({"a", "sub/b"});
    scratch_.makeFolder("empty");
    const std::string expected =
        "Files found in the current folder:\n\na      empty  sub    \n\nFiles found in " + here("empty") +
        ":\n" + emptyFolder + "Files found in " + here("sub") + ":\n\nb  \n\n";
    EXPECT_EQ(print(u"**").printed, expected);
    EXPECT_EQ(print(u"**/").printed, expected);
    EXPECT_EQ(print(u"**/*").printed, expected);
}

TEST_F(DirCommandTest, CurrentFolderReachedThroughAPrefixHasItsNameInTheHeader) {
    makeFiles({"sub/a"});
    moveTo("sub");
    // The prefix is not empty, so the folder is shown by name although it is the current one.
    EXPECT_EQ(print(scratch_.text() + u"/sub/**").printed, "Files found in " + here("sub") + ":\n\na  \n\n");
    EXPECT_EQ(print(u"./**").printed, "Files found in the current folder:\n\na  \n\n");
}

TEST_F(DirCommandTest, StructureComesSortedByFolderAndName) {
    makeFiles({"b", "a", "B", "sub/in/w", "sub/z", "sub-1/y"});
    const Array structure = std::move(list(u"**").outputs[0]);
    EXPECT_THAT(column(structure, "name"), ElementsAre("B", "a", "b", "sub", "sub-1", "in", "z", "y", "w"));
    EXPECT_THAT(column(structure, "folder"), ElementsAre(here(), here(), here(), here(), here(), here("sub"),
                                                         here("sub"), here("sub-1"), here("sub/in")));
}

TEST_F(DirCommandTest, LinkWithoutATargetHasEmptyFields) {
    std::filesystem::create_symlink("nowhere", scratch_.path() / "broken");
    const Array structure = std::move(list(u"broken").outputs[0]);
    ASSERT_EQ(dimensions(structure), (std::vector<std::size_t>{1, 1}));
    for (const char* name : {"date", "bytes", "datenum"})
        EXPECT_EQ(kxGetNumberOfElements(field(structure, 0, name)), 0U);
    EXPECT_EQ(kxGetScalar(field(structure, 0, "isdir")), 0);
}

TEST_F(DirCommandTest, BackSlashIsPartOfANameHere) {
    makeFiles({"a\\b"});
    EXPECT_EQ(print(u"a\\b").printed, "\na\\b  \n\n");
    EXPECT_EQ(print(u"a\\*").printed, "\na\\b  \n\n");
}

// ----------------------------------------------------------------------------------------- what is not there

TEST_F(DirCommandTest, WhatIsNotThereIsALineWithoutAnOutputAndNothingWithOne) {
    EXPECT_EQ(print(u"nothing").printed, notFound("nothing"));
    EXPECT_EQ(print(u"nothing/").printed, notFound("nothing/"));
    EXPECT_EQ(print(u"nothing/at/all").printed, notFound("nothing/at/all"));
    for (const auto* name : {u"nothing", u"nothing/", u"nothing*"}) {
        const ListingOutcome outcome = list(name);
        expectEmptyStructure(outcome.outputs[0]);
        EXPECT_EQ(outcome.printed, "");
        EXPECT_EQ(outcome.errorIdentifier, "");
    }
}

TEST_F(DirCommandTest, TypedWildcardThatMatchesNothingHasALineOfItsOwn) {
    makeFiles({"file"});
    EXPECT_EQ(print(u"nothing*").printed, noMatch("nothing*"));
    EXPECT_EQ(print(u"no*/x").printed, noMatch("no*/x"));
    EXPECT_EQ(print(u"**/nothing").printed, noMatch("**/nothing"));
    // A question mark is no wildcard to the command, and the star behind a closing slash is its own.
    EXPECT_EQ(print(u"nothin?").printed, notFound("nothin?"));
    EXPECT_EQ(print(u"no*/").printed, notFound("no*/"));
}

TEST_F(DirCommandTest, EmptyTextIsNotThere) {
    EXPECT_EQ(print(u"").printed, notFound(""));
    EXPECT_EQ(listing(0, {string(u"").get()}).printed, notFound(""));
    EXPECT_EQ(listing(0, {characters({1, 0}).get()}).printed, notFound(""));
    const ListingOutcome outcome = list(u"");
    expectEmptyStructure(outcome.outputs[0]);
    EXPECT_EQ(outcome.printed, "");
}

TEST_F(DirCommandTest, MessagesQuoteWhatWasTyped) {
    EXPECT_EQ(print(u"./a/../nothing").printed, notFound("./a/../nothing"));
}

// ------------------------------------------------------------------------------------------------ bad texts

TEST_F(DirCommandTest, NulIsAnError) {
    const std::u16string name(u"a\0b", 3);
    for (const int nlhs : {0, 1}) {
        EXPECT_EQ(listing(nlhs, {text(name).get()}).errorIdentifier, "KORVEX:FileManip:NullCharacterInName");
    }
}

TEST_F(DirCommandTest, EscapedNulIsOneOnlyInALocation) {
    makeFiles({"a%00b"});
    EXPECT_EQ(print(u"a%00b").printed, "\na%00b  \n\n");
    for (const int nlhs : {0, 1}) {
        const Array location = text(u"memory://box/a%00b");
        EXPECT_EQ(listing(nlhs, {location.get()}).errorIdentifier, "KORVEX:FileManip:NullCharacterInName");
    }
}

TEST_F(DirCommandTest, TwoStarsThatAreNoWholePartAreAnError) {
    for (const auto* pattern : {u"a**", u"**a", u"a/**b", u"***"}) {
        EXPECT_EQ(print(pattern).errorIdentifier, "KORVEX:dir:invalidGlob");
        EXPECT_EQ(list(pattern).errorIdentifier, "KORVEX:dir:invalidGlob");
    }
}

TEST_F(DirCommandTest, TwoPartsOfTwoStarsInARowAreAnError) {
    EXPECT_EQ(print(u"**/**/a").errorIdentifier, "KORVEX:dir:SuccessiveGlobs");
    EXPECT_EQ(list(u"a/**/**").errorIdentifier, "KORVEX:dir:SuccessiveGlobs");
}

TEST_F(DirCommandTest, PathOf1024UnitsIsTooLong) {
    const std::u16string longest(1023, u'x');
    EXPECT_EQ(print(longest).printed, notFound(std::string(1023, 'x')));
    const std::u16string tooLong(1024, u'x');
    for (const int nlhs : {0, 1}) {
        const ListingOutcome outcome = listing(nlhs, {text(tooLong).get()});
        EXPECT_EQ(outcome.errorIdentifier, "KORVEX:dir:pathnameTooLong");
        EXPECT_THAT(outcome.errorArguments, ElementsAre(tooLong));
    }
}

TEST_F(DirCommandTest, NulIsJudgedBeforeStarsAndStarsBeforeTheLength) {
    const std::u16string starsAndLength = u"a**" + std::u16string(1024, u'x');
    EXPECT_EQ(list(starsAndLength + std::u16string(1, u'\0')).errorIdentifier,
              "KORVEX:FileManip:NullCharacterInName");
    EXPECT_EQ(list(starsAndLength).errorIdentifier, "KORVEX:dir:invalidGlob");
    EXPECT_EQ(list(starsAndLength.substr(3)).errorIdentifier, "KORVEX:dir:pathnameTooLong");
}

TEST_F(DirCommandTest, LengthIsThatOfTheTextAsTyped) {
    makeFiles({"a"});
    // Short when its dots are gone, long as it stands.
    std::u16string roundabout;
    while (roundabout.size() < 1024)
        roundabout += u"./";
    EXPECT_EQ(print(roundabout).errorIdentifier, "KORVEX:dir:pathnameTooLong");
    EXPECT_EQ(print(roundabout.substr(0, 1022)).printed, "\na  \n\n");
}

// -------------------------------------------------------------------------------------------------- failures

TEST_F(DirCommandTest, CurrentFolderThatIsGoneIsAnError) {
    scratch_.makeFolder("gone");
    moveTo("gone");
    std::filesystem::remove(scratch_.path() / "gone");
    const Array noText = number(1);
    for (const int nlhs : {0, 1}) {
        for (const std::vector<const kxArray*>& arguments : {std::vector<const kxArray*>{}, {noText.get()}}) {
            const ListingOutcome outcome = listing(nlhs, arguments);
            EXPECT_EQ(outcome.errorIdentifier, "KORVEX:dir:cwdIsInvalid");
            EXPECT_EQ(outcome.catalogEntry, "KORVEX:services:cwdIsInvalid");
        }
    }
}

/// The local disk behind a provider that fails where it is told to.
class DirCommandFailureTest : public DirCommandTest {
protected:
    std::shared_ptr<const vfs::StorageSystem> system() {
        auto system = std::make_shared<vfs::StorageSystem>();
        system->add(u"file", local_);
        return system;
    }
    vfs::AbsoluteIRI location(const std::string& name) const {
        return vfs::AbsoluteIRI(u"file://" + (scratch_.path() / name).u16string());
    }

    std::shared_ptr<storage::FaultInjectingProvider> local_ =
        std::make_shared<storage::FaultInjectingProvider>(std::make_shared<storage::LocalProvider>());
    storage::ScopedStorageSystem scope_{system()};
};

TEST_F(DirCommandFailureTest, FailureOfTheStoragePassesOnWithAndWithoutAnOutput) {
    makeFiles({"sub/a"});
    local_->failAt(storage::Operation::list, location("sub"), {.code = vfs::ioError});
    EXPECT_THROW(print(u"sub"), vfs::Exception);
    EXPECT_THROW(list(u"sub/*"), vfs::Exception);
    // Interrupts are delivered again.
    EXPECT_NO_THROW(utInterruptState::ThrowIfInterruptPending());
}

/// Every question ends in an error of another kind.
class BrokenProvider : public storage::LocalProvider {
public:
    storage::ExistenceType existence(const vfs::AbsoluteIRI&) override { throw std::runtime_error("broken"); }
};

TEST_F(DirCommandFailureTest, CurrentFolderThatCannotBeReadForAnyReasonIsInvalid) {
    auto system = std::make_shared<vfs::StorageSystem>();
    system->add(u"file", std::make_shared<BrokenProvider>());
    const storage::ScopedStorageSystem broken(std::move(system));
    for (const int nlhs : {0, 1}) {
        const ListingOutcome outcome = listing(nlhs, {});
        EXPECT_EQ(outcome.errorIdentifier, "KORVEX:dir:cwdIsInvalid");
        EXPECT_EQ(outcome.catalogEntry, "KORVEX:services:cwdIsInvalid");
    }
}

TEST_F(DirCommandFailureTest, FolderThatMayNotBeListedIsNeitherEmptyNorFound) {
    makeFiles({"good/sub/a"});
    scratch_.makeFolder("bad/sub");
    local_->failAt(storage::Operation::list, location("bad/sub"), {.code = vfs::permissionDenied});
    EXPECT_EQ(print(u"*/sub").printed, "Files found in " + here("good/sub") + ":\n\na  \n\n");
    EXPECT_EQ(print(u"b*/sub").printed, noMatch("b*/sub"));
    expectEmptyStructure(list(u"b*/sub").outputs[0]);
}

TEST_F(DirCommandFailureTest, FolderBelowThatFailsIsPassedOver) {
    makeFiles({"good/a", "bad/b"});
    local_->failAt(storage::Operation::list, location("bad"), {.code = vfs::permissionDenied});
    EXPECT_THAT(column(list(u"**").outputs[0], "name"), ElementsAre("bad", "good", "a"));
}

TEST_F(DirCommandFailureTest, FileWithUnknownSizeIsListed) {
    makeFiles({"a"});
    local_->failAt(storage::Operation::read, location("a"), {.code = vfs::permissionDenied});
    const Array structure = std::move(list(u"a").outputs[0]);
    ASSERT_EQ(kxGetNumberOfElements(structure.get()), 1U);
    EXPECT_TRUE(kxIsEmpty(field(structure, 0, "bytes")));
    EXPECT_TRUE(kxIsEmpty(field(structure, 0, "date")));
}

}  // namespace
}  // namespace korvex::filemanip::tests
