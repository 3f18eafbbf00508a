// The file of typed lines.
#include "host/kwsh/history_file.h"

#include <gmock/gmock.h>

#include <fstream>

#include "runtime/process/process.h"
#include "tests/support/scratch_folder.h"

namespace korvex::host {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tests::ScratchFolder;

class HistoryFileTest : public testing::Test {
protected:
    std::string content() const { return runtime::process::readFile(folder() + u"/history"); }
    std::u16string folder() const { return scratch.text() + u"/configuration"; }

    ScratchFolder scratch;
    const HistoryFile history{folder()};
};

TEST_F(HistoryFileTest, KeepsLinesInTheirOrder) {
    EXPECT_THAT(history.lines(), IsEmpty());
    history.add(u"x = 1");
    history.add(u"y = 'gr\u00FC\u00DF'");
    EXPECT_THAT(HistoryFile(folder()).lines(), ElementsAre(u"x = 1", u"y = 'gr\u00FC\u00DF'"));
}

TEST_F(HistoryFileTest, IsForTheUserAlone) {
    history.add(u"x");
    const std::filesystem::perms others =
        std::filesystem::perms::group_all | std::filesystem::perms::others_all;
    EXPECT_EQ(std::filesystem::status(scratch.path() / "configuration/history").permissions() & others,
              std::filesystem::perms::none);
}

TEST_F(HistoryFileTest, KeepsLinesOfOtherSessions) {
    const HistoryFile other(folder());
    history.add(u"mine");
    other.add(u"theirs");
    history.add(u"mine again");
    EXPECT_THAT(other.lines(), ElementsAre(u"mine", u"theirs", u"mine again"));
}

TEST_F(HistoryFileTest, KeepsALineOnceWhereItIsTypedAgain) {
    for (const char16_t* line : {u"a", u"a", u"b", u"a"})
        history.add(line);
    EXPECT_THAT(history.lines(), ElementsAre(u"a", u"b", u"a"));
}

TEST_F(HistoryFileTest, KeepsBytesThatAreNoText) {
    const std::u16string line = {u'a', 0xDCFF};
    history.add(line);
    EXPECT_EQ(content(), "a\xFF\n");
    EXPECT_THAT(history.lines(), ElementsAre(line));
}

TEST_F(HistoryFileTest, TheOldestLinesGo) {
    std::string full;
    for (std::size_t line = 0; line < HistoryFile::mostLines; ++line)
        full += std::to_string(line) + "\n";
    scratch.writeFile("configuration/history", full);
    history.add(u"new");
    const std::vector<std::u16string> lines = history.lines();
    EXPECT_EQ(lines.size(), HistoryFile::mostLines);
    EXPECT_EQ(lines.front(), u"1");
    EXPECT_EQ(lines.back(), u"new");
}

TEST_F(HistoryFileTest, WhatNoFileOfLinesCanHoldIsNotKept) {
    history.add(u"");
    history.add(u"a\nb");
    history.add(std::u16string(HistoryFile::longestLine + 1, u'x'));
    history.add(std::u16string{0xD800});
    EXPECT_THAT(history.lines(), IsEmpty());
}

TEST_F(HistoryFileTest, WithoutAFolderNothingIsKept) {
    const HistoryFile nowhere{std::u16string()};
    nowhere.add(u"x");
    EXPECT_THAT(nowhere.lines(), IsEmpty());
}

TEST_F(HistoryFileTest, AFileThatCannotBeWrittenStaysAndIsNoError) {
    const std::filesystem::path file = scratch.writeFile("configuration/history", "old\n");
    std::filesystem::permissions(file, std::filesystem::perms::owner_read);
    history.add(u"new");
    EXPECT_EQ(content(), "old\n");
    scratch.makeFolder("other/history");
    const HistoryFile folderInTheWay(scratch.text() + u"/other");
    folderInTheWay.add(u"new");
    EXPECT_THAT(folderInTheWay.lines(), IsEmpty());
}

}  // namespace
}  // namespace korvex::host
