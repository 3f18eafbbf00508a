// `dir` over a lister that does what a test tells it: what it is asked, what becomes of each of its failures,
// and when interrupts count.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "io/filesystem/filemanip/dir_listing_display.h"
#include "platform/foundation_filesystem.h"
#include "platform/message_identifiers.h"
#include "platform/storage_vfs.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/messages/environment_messages.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/filemanip/dir_listing/listing_outcome.h"

namespace korvex::filemanip::tests {
namespace {

/// How the lister was called.
struct ListerCall {
    std::u16string folder;
    std::u16string pattern;
    std::u16string prefix;
    bool isIri;
    ListingDisplay display;
    std::u16string currentFolder;

    bool operator==(const ListerCall&) const = default;
};

struct FakeLister {
    std::vector<ListerCall> calls;
    /// What each call does; its number counts from 1.
    std::function<bool(std::size_t number, std::vector<FileNameWithStatLight>& entries)> answer =
        [](std::size_t, std::vector<FileNameWithStatLight>&) { return false; };
};

FakeLister& fakeLister() {
    static FakeLister lister;
    return lister;
}

}  // namespace
}  // namespace korvex::filemanip::tests

bool ioGetDirListRecursive(const foundation::storage::vfs::AbsoluteIRI& folder, std::u16string_view pattern,
                           std::vector<FileNameWithStatLight>& entries, const std::u16string& prefix,
                           bool isIri, ListingDisplay display, const std::u16string& currentFolder) {
    auto& lister = korvex::filemanip::tests::fakeLister();
    lister.calls.push_back(
        {folder.toString(), std::u16string(pattern), prefix, isIri, display, currentFolder});
    return lister.answer(lister.calls.size(), entries);
}

namespace korvex::filemanip::tests {
namespace {

namespace vfs = foundation::storage::vfs;
using foundation::core::except::Exception;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Entries = std::vector<FileNameWithStatLight>;

class FakeListerTest : public testing::Test {
protected:
    FakeListerTest() {
        fakeLister() = FakeLister();
        runtime::dispatcher::setCurrentFolderPath(scratch_.text());
        here_ = runtime::dispatcher::currentFolderPath();
        runtime::interpreter::takeInterrupt();
    }
    ~FakeListerTest() override {
        runtime::interpreter::takeInterrupt();
        fakeLister() = FakeLister();
        runtime::dispatcher::setCurrentFolderPath(u"/");
    }

    /// Every call raises a copy.
    template <class Failure>
    static void listerRaises(const Failure& failure) {
        fakeLister().answer = [failure](std::size_t, Entries&) -> bool { throw failure; };
    }
    /// The first call raises a copy; the next ones find an entry.
    template <class Failure>
    static void listerRaisesAtFirst(const Failure& failure) {
        fakeLister().answer = [failure](std::size_t number, Entries& entries) {
            if (number == 1) throw failure;
            entries.push_back(someEntry());
            return true;
        };
    }
    static void listerFinds() {
        fakeLister().answer = [](std::size_t, Entries& entries) {
            entries.push_back(someEntry());
            return true;
        };
    }
    static FileNameWithStatLight someEntry() {
        FileNameWithStatLight entry;
        entry.name = u"entry";
        entry.folder = std::make_shared<const std::u16string>(u"/folder");
        return entry;
    }
    std::u16string location(const std::u16string& path = {}) const { return u"file://" + here_ + path; }

    korvex::tests::ScratchFolder scratch_;
    std::u16string here_;
};

// ------------------------------------------------------------------------------- what the lister is asked

TEST_F(FakeListerTest, WithoutAnArgumentItIsAskedForEverythingInTheCurrentFolder) {
    print();
    list();
    EXPECT_THAT(fakeLister().calls,
                ElementsAre(ListerCall{location(), u"*", here_, false, displayPlain, here_},
                            ListerCall{location(), u"*", here_, false, nullptr, here_}));
}

TEST_F(FakeListerTest, PathIsCutAndItsPrefixIsWhatWasTyped) {
    print(u"sub/name");
    print(u"sub/*.txt");
    print(u"sub/**");
    print(u"sub/");
    EXPECT_THAT(fakeLister().calls,
                ElementsAre(ListerCall{location(u"/sub"), u"name", u"sub/name", false, displayPlain, here_},
                            ListerCall{location(u"/sub"), u"*.txt", u"sub", false, displayPlain, here_},
                            ListerCall{location(u"/sub"), u"**/*", u"sub", false, displayWithHeaders, here_},
                            ListerCall{location(u"/sub"), u"*", u"sub/", false, displayPlain, here_}));
}

TEST_F(FakeListerTest, LocationIsCutAndItsPatternDecoded) {
    print(u"memory://box/a%20b/c%20*");
    EXPECT_THAT(fakeLister().calls,
                ElementsAre(ListerCall{u"memory://box/a%20b", u"c *", u"memory://box/a%20b/c%20*", true,
                                       displayPlain, here_}));
}

TEST_F(FakeListerTest, WebLocationHasAnEmptyPattern) {
    list(u"http://host/a/*");
    print(u"HTTPS://host/a/**");
    EXPECT_THAT(fakeLister().calls,
                ElementsAre(ListerCall{u"http://host/a/*", u"", u"http://host/a/*", true, nullptr, here_},
                            // Step by step: the tail is expanded also where no star was appended.
                            ListerCall{u"https://host/a/**/*", u"", u"HTTPS://host/a/**", true,
                                       displayWithHeaders, here_}));
}

TEST_F(FakeListerTest, BadTextsNeverReachIt) {
    for (const auto* bad : {u"", u"file:/a", u"memory://box/../a", u"a**", u"memory://box/%00"}) {
        print(bad);
        list(bad);
    }
    EXPECT_THAT(fakeLister().calls, IsEmpty());
}

TEST_F(FakeListerTest, NegativeNumberOfOutputsShowsNoNamesAndStillSaysWhatIsNotThere) {
    EXPECT_EQ(listing(-1, {text(u"name").get()}).printed,
              "\"name\" was not found. Check the spelling and the current folder.\n");
    EXPECT_THAT(fakeLister().calls,
                ElementsAre(ListerCall{location(), u"name", u"name", false, nullptr, here_}));
}

// ------------------------------------------------------------------------------------------- its failures

TEST_F(FakeListerTest, InvalidLocationOfAPathIsTriedAgainWithASlashAndThenNotFound) {
    listerRaises(vfs::InvalidIRIException(u"bad"));
    EXPECT_EQ(print(u"name").printed, "\"name\" was not found. Check the spelling and the current folder.\n");
    EXPECT_THAT(
        fakeLister().calls,
        ElementsAre(ListerCall{location(), u"name", u"name", false, displayPlain, here_},
                    ListerCall{location(u"/name"), u"*", here_ + u"/name/", false, displayPlain, here_}));
    const ListingOutcome outcome = list(u"name");
    expectEmptyStructure(outcome.outputs[0]);
    EXPECT_EQ(outcome.printed, "");
}

TEST_F(FakeListerTest, InvalidLocationWithATypedStarIsNoMatchOnlyWithoutTheSecondPass) {
    listerRaises(vfs::InvalidIRIException(u"bad"));
    // The second pass has put a star of its own at the end, so that the typed one does not count any more.
    EXPECT_EQ(print(u"na*").printed, "\"na*\" was not found. Check the spelling and the current folder.\n");
}

TEST_F(FakeListerTest, InvalidLocationOfALocationIsALineOfItsOwnAfterTheSecondPass) {
    listerRaises(vfs::InvalidIRIException(u"bad"));
    EXPECT_EQ(print(u"memory://box/a").printed,
              "\"memory://box/a\" is not a valid location. Write scheme://host/path, or file:///path for a "
              "local file.\n");
    EXPECT_THAT(fakeLister().calls, SizeIs(2));
    const ListingOutcome outcome = list(u"memory://box/a");
    expectEmptyStructure(outcome.outputs[0]);
    EXPECT_EQ(outcome.printed, "");
    EXPECT_EQ(outcome.errorIdentifier, "");
}

TEST_F(FakeListerTest, SecondPassMayFind) {
    listerRaisesAtFirst(vfs::InvalidIRIException(u"bad"));
    EXPECT_THAT(column(list(u"memory://box/a").outputs[0], "name"), ElementsAre("entry"));
    EXPECT_THAT(fakeLister().calls,
                ElementsAre(ListerCall{u"memory://box/", u"a", u"memory://box/a", true, nullptr, here_},
                            ListerCall{u"memory://box/a", u"*", u"memory://box/a/", true, nullptr, here_}));
}

TEST_F(FakeListerTest, SecondPassOfAWebLocationGetsNoStar) {
    listerRaisesAtFirst(vfs::InvalidIRIException(u"bad"));
    EXPECT_EQ(print(u"http://host/a").printed, "");
    EXPECT_THAT(
        fakeLister().calls,
        ElementsAre(ListerCall{u"http://host/a", u"", u"http://host/a", true, displayPlain, here_},
                    ListerCall{u"http://host/a/", u"", u"http://host/a/", true, displayPlain, here_}));
}

TEST_F(FakeListerTest, WhatWasCollectedBeforeAFailureIsReturned) {
    fakeLister().answer = [](std::size_t, Entries& entries) -> bool {
        entries.push_back(someEntry());
        throw vfs::UnsupportedIRISchemeException(u"gopher");
    };
    EXPECT_THAT(column(list(u"name").outputs[0], "name"), ElementsAre("entry"));
    EXPECT_THAT(fakeLister().calls, SizeIs(1));
}

TEST_F(FakeListerTest, SchemeWithoutAProviderIsALineAndNotTriedAgain) {
    listerRaises(vfs::UnsupportedIRISchemeException(u"gopher"));
    EXPECT_EQ(
        print(u"gopher://host/a").printed,
        "No storage provider serves \"gopher://host/a\". Check the spelling of the scheme, which stands "
        "before the colon.\n");
    expectEmptyStructure(list(u"gopher://host/a").outputs[0]);
    EXPECT_THAT(fakeLister().calls, SizeIs(2));
}

TEST_F(FakeListerTest, CurrentFolderThatIsGoneIsAnErrorUnderTheCommandsIdentifier) {
    for (const int nlhs : {0, 1}) {
        listerRaises(Exception<KORVEX::services::cwdIsInvalid>(KORVEX::services::cwdIsInvalid()));
        const ListingOutcome outcome = listing(nlhs, {});
        EXPECT_EQ(outcome.errorIdentifier, "KORVEX:dir:cwdIsInvalid");
        EXPECT_EQ(outcome.catalogEntry, "KORVEX:services:cwdIsInvalid");
        listerRaises(fl::filesystem::PathNotFound());
        EXPECT_EQ(listing(nlhs, {}).errorIdentifier, "KORVEX:dir:cwdIsInvalid");
    }
}

TEST_F(FakeListerTest, SuccessiveGlobsAreRaised) {
    listerRaises(Exception<KORVEX::dir::SuccessiveGlobs>(KORVEX::dir::SuccessiveGlobs()));
    EXPECT_EQ(print(u"**/**").errorIdentifier, "KORVEX:dir:SuccessiveGlobs");
    EXPECT_EQ(list(u"**/**").errorIdentifier, "KORVEX:dir:SuccessiveGlobs");
}

TEST_F(FakeListerTest, AnyOtherFailurePassesOnAndInterruptsAreDeliveredAgain) {
    const auto raisesPendingInterrupt = [] {
        runtime::interpreter::raiseInterrupt();
        EXPECT_THROW(utInterruptState::ThrowIfInterruptPending(), Exception<KORVEX::host::interrupted>);
    };
    for (const int nlhs : {0, 1}) {
        listerRaises(std::runtime_error("the disk is on fire"));
        EXPECT_THROW(listing(nlhs, {}), std::runtime_error);
        raisesPendingInterrupt();
        listerRaises(vfs::Exception(vfs::ioError, vfs::AbsoluteIRI(u"memory://box/")));
        EXPECT_THROW(listing(nlhs, {}), vfs::Exception);
        raisesPendingInterrupt();
    }
}

// ----------------------------------------------------------------------------------------------------
// interrupts

TEST_F(FakeListerTest, InterruptBeforeTheListingKeepsItFromBeginning) {
    runtime::interpreter::raiseInterrupt();
    EXPECT_EQ(list().errorIdentifier, "KORVEX:host:interrupted");
    EXPECT_THAT(fakeLister().calls, IsEmpty());
}

TEST_F(FakeListerTest, InterruptDuringTheListingCountsWhenItIsOver) {
    for (const int nlhs : {0, 1}) {
        fakeLister().answer = [](std::size_t, Entries& entries) {
            runtime::interpreter::raiseInterrupt();
            EXPECT_NO_THROW(utInterruptState::ThrowIfInterruptPending());
            entries.push_back(someEntry());
            return true;
        };
        const ListingOutcome outcome = listing(nlhs, {});
        EXPECT_EQ(outcome.errorIdentifier, "KORVEX:host:interrupted");
        EXPECT_EQ(outcome.outputs[0], nullptr);
    }
}

TEST_F(FakeListerTest, InterruptComesBeforeTheLineOfWhatIsNotThere) {
    fakeLister().answer = [](std::size_t, Entries&) {
        runtime::interpreter::raiseInterrupt();
        return false;
    };
    const ListingOutcome outcome = print(u"nothing");
    EXPECT_EQ(outcome.errorIdentifier, "KORVEX:host:interrupted");
    EXPECT_EQ(outcome.printed, "");
}

TEST_F(FakeListerTest, InterruptIsNotLookedAtWhereNothingIsListed) {
    runtime::interpreter::raiseInterrupt();
    EXPECT_EQ(print(u"").printed, "\"\" was not found. Check the spelling and the current folder.\n");
    expectEmptyStructure(list(u"").outputs[0]);
    const std::string line = "\"file:/a\" was not found. Check the spelling and the current folder.\n";
    EXPECT_EQ(print(u"file:/a").printed, line + line);
    EXPECT_EQ(print(u"a**").errorIdentifier, "KORVEX:dir:invalidGlob");
    EXPECT_EQ(print(u"memory://bad host").errorIdentifier, "");
    EXPECT_THAT(fakeLister().calls, IsEmpty());
    EXPECT_TRUE(runtime::interpreter::isInterruptPending());
}

TEST_F(FakeListerTest, InterruptStaysPendingWhereALineIsTheWholeAnswer) {
    const auto interruptedBy = [](const auto& failure) {
        fakeLister().answer = [failure](std::size_t, Entries&) -> bool {
            runtime::interpreter::raiseInterrupt();
            throw failure;
        };
        const ListingOutcome outcome = print(u"memory://box/a");
        EXPECT_EQ(outcome.errorIdentifier, "");
        EXPECT_NE(outcome.printed, "");
        EXPECT_TRUE(runtime::interpreter::takeInterrupt());
    };
    interruptedBy(vfs::InvalidIRIException(u"bad"));
    interruptedBy(vfs::UnsupportedIRISchemeException(u"gopher"));
}

// ---------------------------------------------------------------------------------------- what it reports

TEST_F(FakeListerTest, NotFoundIsALineAlthoughEntriesCame) {
    fakeLister().answer = [](std::size_t, Entries& entries) {
        entries.push_back(someEntry());
        return false;
    };
    EXPECT_EQ(print(u"name").printed, "\"name\" was not found. Check the spelling and the current folder.\n");
    EXPECT_THAT(column(list(u"name").outputs[0], "name"), ElementsAre("entry"));
}

TEST_F(FakeListerTest, FoundIsSilentWithoutAnOutput) {
    listerFinds();
    const ListingOutcome outcome = print(u"name");
    EXPECT_EQ(outcome.printed, "");
    EXPECT_EQ(outcome.outputs[0], nullptr);
}

}  // namespace
}  // namespace korvex::filemanip::tests
