// What a display is called with: once for each folder, on the caller's thread, depth first.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

#include "platform/kx.h"
#include "runtime/interpreter/interrupts.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/listing/lister_calls.h"

namespace korvex::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DisplayContractTest : public testing::Test {
protected:
    DisplayContractTest() { displayCalls().clear(); }
    ~DisplayContractTest() override { displayCalls().clear(); }

    bool list(std::u16string_view pattern, ListingDisplay display = rememberDisplay) {
        return ioGetDirListRecursive(Velquist::PathManagement::GetIRIFromString(scratch_.text()), pattern,
                                     buffer_, u"the prefix", false, display, u"");
    }
    std::string folder(const std::string& name) const { return (scratch_.path() / name).string(); }
    std::string top() const { return scratch_.path().string(); }

    ScratchFolder scratch_;
    std::vector<FileNameWithStatLight> buffer_;
};

TEST_F(DisplayContractTest, EachFolderIsDisplayedOnceBeforeThoseInIt) {
    for (const char* file : {"b/x", "a/y", "a/in/z", "c"})
        scratch_.writeFile(file);
    EXPECT_TRUE(list(u"**/*"));
    EXPECT_THAT(displayCalls(), ElementsAre(Displayed{{"a", "b", "c"}, top(), "the prefix", false},
                                            Displayed{{"in", "y"}, folder("a"), "the prefix", false},
                                            Displayed{{"z"}, folder("a/in"), "the prefix", false},
                                            Displayed{{"x"}, folder("b"), "the prefix", false}));
}

TEST_F(DisplayContractTest, EmptyFolderIsDisplayedWithItsOwnText) {
    scratch_.makeFolder("empty");
    EXPECT_TRUE(list(u"empty"));
    EXPECT_THAT(displayCalls(), ElementsAre(Displayed{{}, "", folder("empty"), true}));
}

TEST_F(DisplayContractTest, EmptyFoldersOfATreeAreDisplayedAsSuchOnlyWhenEverythingIsAsked) {
    scratch_.makeFolder("empty");
    scratch_.writeFile("file.txt");
    EXPECT_TRUE(list(u"**/*"));
    EXPECT_THAT(displayCalls(), ElementsAre(Displayed{{"empty", "file.txt"}, top(), "the prefix", false},
                                            Displayed{{}, "", folder("empty"), true}));
    displayCalls().clear();
    EXPECT_TRUE(list(u"**/*.txt"));
    EXPECT_THAT(displayCalls(), ElementsAre(Displayed{{"file.txt"}, top(), "the prefix", false},
                                            Displayed{{}, "", "the prefix", false}));
}

TEST_F(DisplayContractTest, FolderWithoutAMatchIsDisplayedWithoutEntriesAndNotFound) {
    scratch_.writeFile("file");
    EXPECT_FALSE(list(u"nothing*"));
    EXPECT_THAT(displayCalls(), ElementsAre(Displayed{{}, "", "the prefix", false}));
}

TEST_F(DisplayContractTest, FoldersOnTheWayAreNotDisplayed) {
    scratch_.writeFile("a/b/x");
    scratch_.writeFile("beside");
    EXPECT_TRUE(list(u"*/b/x*"));
    EXPECT_THAT(displayCalls(), ElementsAre(Displayed{{"x"}, folder("a/b"), "the prefix", false}));
}

TEST_F(DisplayContractTest, NothingIsDisplayedOfWhatIsNotThere) {
    EXPECT_FALSE(list(u"nothing"));
    EXPECT_FALSE(list(u"nothing/*"));
    EXPECT_THAT(displayCalls(), IsEmpty());
}

TEST_F(DisplayContractTest, BufferIsEmptyAtTheEnd) {
    scratch_.writeFile("a/x");
    EXPECT_TRUE(list(u"**/*"));
    EXPECT_THAT(buffer_, IsEmpty());
}

TEST_F(DisplayContractTest, FoldersAreToldAndLinksAreNone) {
    scratch_.makeFolder("folder");
    scratch_.writeFile("file");
    std::filesystem::create_symlink("folder", scratch_.path() / "link");
    EXPECT_TRUE(list(u"*", [](std::vector<FileNameWithStatLight>& entries, const std::u16string&, bool) {
        ASSERT_EQ(entries.size(), 3U);
        EXPECT_FALSE(entries[0].isDirectory);
        EXPECT_TRUE(entries[1].isDirectory);
        EXPECT_FALSE(entries[2].isDirectory);
        EXPECT_FALSE(entries[0].sizeKnown);
    }));
}

TEST_F(DisplayContractTest, DisplayRunsOnTheCallersThread) {
    for (int i = 0; i < 50; ++i)
        scratch_.writeFile("folder" + std::to_string(i) + "/file");
    static std::thread::id caller;
    caller = std::this_thread::get_id();
    EXPECT_TRUE(list(u"**/*", [](std::vector<FileNameWithStatLight>&, const std::u16string&, bool) {
        EXPECT_EQ(std::this_thread::get_id(), caller);
    }));
}

TEST_F(DisplayContractTest, DisplayMayTakeTheEntries) {
    scratch_.writeFile("a/x");
    static std::vector<FileNameWithStatLight> taken;
    EXPECT_TRUE(list(u"**/*", [](std::vector<FileNameWithStatLight>& entries, const std::u16string&, bool) {
        for (FileNameWithStatLight& entry : entries)
            taken.push_back(std::move(entry));
        entries.clear();
    }));
    EXPECT_EQ(taken.size(), 2U);
    taken.clear();
}

TEST_F(DisplayContractTest, WhatTheDisplayRaisesIsRaised) {
    scratch_.writeFile("a/x");
    EXPECT_THROW(list(u"**/*", [](std::vector<FileNameWithStatLight>&, const std::u16string&,
                                  bool) { throw std::runtime_error("the window is closed"); }),
                 std::runtime_error);
}

TEST_F(DisplayContractTest, PendingInterruptIsLeftAlone) {
    scratch_.writeFile("a/x");
    korvex::runtime::interpreter::raiseInterrupt();
    EXPECT_TRUE(list(u"**/*"));
    EXPECT_EQ(displayCalls().size(), 2U);
    EXPECT_TRUE(korvex::runtime::interpreter::takeInterrupt());
}

}  // namespace
}  // namespace korvex::tests
