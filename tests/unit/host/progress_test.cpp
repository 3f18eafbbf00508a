// The progress line: numbers with given clocks, the text, and when it is drawn.
#include <gmock/gmock.h>

#include <sstream>

#include "host/kwsh/progress_line.h"
#include "host/kwsh/progress_text.h"
#include "host/kwsh/stream_presenter.h"
#include "host/kwsh/text_layout.h"
#include "host/kwsh/values.h"
#include "runtime/text/encoding.h"

namespace korvex::host {
namespace {

using std::chrono::milliseconds;
using testing::HasSubstr;

// ------------------------------------------------------------------------------------------------ pace

class ProgressPaceTest : public testing::Test {
protected:
    ProgressPaceTest() { pace.begin(start); }
    static ProgressTime after(int time) { return start + milliseconds(time); }
    void record(const OperationCounts& counts, int time) { pace.record(counts, after(time)); }

    static constexpr ProgressTime start{std::chrono::hours(1)};
    ProgressPace pace;
};

TEST_F(ProgressPaceTest, NothingIsShownForHalfASecond) {
    EXPECT_FALSE(pace.isDue(after(499)));
    EXPECT_TRUE(pace.isDue(after(500)));
}

TEST_F(ProgressPaceTest, ItIsShownTenTimesASecond) {
    pace.shown(after(500));
    EXPECT_FALSE(pace.isDue(after(599)));
    EXPECT_TRUE(pace.isDue(after(600)));
    pace.begin(after(700));
    EXPECT_FALSE(pace.isDue(after(1199)));
    EXPECT_TRUE(pace.isDue(after(1200)));
}

TEST_F(ProgressPaceTest, ItemsAndBytesOfOneOperation) {
    record({1, 3, 100, 300}, 10);
    record({2, 3, 250, 300}, 20);
    const ProgressView view = pace.view(after(20));
    EXPECT_EQ(view.items, 2U);
    EXPECT_EQ(view.bytes, 250U);
    EXPECT_FALSE(view.percent);
}

TEST_F(ProgressPaceTest, OperationsAreAddedUp) {
    // Five files, each an operation of its own.
    for (int file = 0; file < 5; ++file)
        record({1, 1, 100, 100}, 10 * file);
    // A large one, of which is told on the way.
    record({0, 1, 400, 1000}, 60);
    record({0, 1, 1000, 1000}, 70);
    record({1, 1, 1000, 1000}, 80);
    // A folder of two empty files.
    record({1, 2, 0, 0}, 90);
    record({2, 2, 0, 0}, 91);
    const ProgressView view = pace.view(after(100));
    EXPECT_EQ(view.items, 8U);
    EXPECT_EQ(view.bytes, 1500U);
}

TEST_F(ProgressPaceTest, TheRateIsThatOfTheLastSeconds) {
    record({0, 1, 1000, 100000}, 1000);
    EXPECT_DOUBLE_EQ(pace.view(after(1000)).bytesPerSecond, 1000);
    // Slow at first, ten times as fast for ten seconds.
    for (int second = 2; second <= 11; ++second)
        record({0, 1, std::uint64_t(10000 * (second - 1)), 200000}, 1000 * second);
    EXPECT_DOUBLE_EQ(pace.view(after(11000)).bytesPerSecond, 10000);
}

TEST_F(ProgressPaceTest, OfOneFileItIsToldHowLongItWillTake) {
    record({0, 1, 2500, 10000}, 1000);
    const ProgressView view = pace.view(after(1000));
    EXPECT_EQ(view.percent, 25U);
    EXPECT_EQ(view.secondsLeft, 3U);
    record({0, 1, 9999, 10000}, 2000);
    EXPECT_EQ(pace.view(after(2000)).secondsLeft, 1U);
    record({1, 1, 10000, 10000}, 4000);
    EXPECT_FALSE(pace.view(after(4000)).secondsLeft);
}

TEST_F(ProgressPaceTest, ACommandBeginsWithNothing) {
    record({5, 9, 100, 300}, 10);
    pace.begin(after(20));
    record({1, 9, 10, 300}, 30);
    EXPECT_EQ(pace.view(after(30)).items, 1U);
    EXPECT_EQ(pace.view(after(30)).bytes, 10U);
}

// ------------------------------------------------------------------------------------------------ text

std::string lineOf(const ProgressView& view, std::size_t columns = 80) {
    return runtime::text::toDisplayBytes(progressText(view, columns));
}

TEST(ProgressText, Bytes) {
    EXPECT_EQ(byteText(0), u"0 B");
    EXPECT_EQ(byteText(999), u"999 B");
    EXPECT_EQ(byteText(1000), u"1.00 kB");
    EXPECT_EQ(byteText(1049), u"1.05 kB");
    EXPECT_EQ(byteText(9996), u"10.0 kB");
    EXPECT_EQ(byteText(99960), u"100 kB");
    EXPECT_EQ(byteText(999600), u"1.00 MB");
    EXPECT_EQ(byteText(3.61e9), u"3.61 GB");
    EXPECT_EQ(byteText(1.8e19), u"18.0 EB");
}

TEST(ProgressText, NumbersAndTimes) {
    EXPECT_EQ(groupedText(0), u"0");
    EXPECT_EQ(groupedText(999), u"999");
    EXPECT_EQ(groupedText(1204003), u"1,204,003");
    EXPECT_EQ(durationText(7), u"0:07");
    EXPECT_EQ(durationText(750), u"12:30");
    EXPECT_EQ(durationText(3 * 3600 + 129), u"3:02:09");
}

TEST(ProgressText, TellsWhatIsDone) {
    EXPECT_EQ(lineOf({1204, 3610000000, 300, 212e6, u"big.bin", 45, 12}),
              "1,204 items, 3.61 GB, 212 MB/s: big.bin 45%, 0:12 left");
    EXPECT_EQ(lineOf({1, 0, 0.4, 0, u"a", {}, {}}), "1 item: a");
    EXPECT_EQ(lineOf({0, 5000000, 0, 5e6, u"big.bin", 5, {}}), "5.00 MB, 5.00 MB/s: big.bin 5%");
}

TEST(ProgressText, FitsIntoAnyWidth) {
    const ProgressView view{1204, 3610000000, 300, 212e6, u"a rather long name.bin", 45, 12};
    for (std::size_t columns = 1; columns < 90; ++columns)
        EXPECT_LE(widthOf(progressText(view, columns)), columns);
    EXPECT_EQ(lineOf(view, 60), "1,204 items, 3.61 GB, 212 MB/s: …ong name.bin 45%, 0:12 left");
    EXPECT_EQ(lineOf(view, 50), "1,204 items, 3.61 GB, 212 MB/s: 45%, 0:12 left");
    EXPECT_EQ(lineOf(view, 22), "1,204 items, 3.61 GB");
    EXPECT_EQ(lineOf(view, 5), "1,204");
}

TEST(ProgressText, NamesCannotCommandTheTerminal) {
    EXPECT_EQ(progressText({1, 0, 1, 0, u"a\x1B[2Jb", {}, {}}, 80), u"1 item, 1 items/s: a\u241B[2Jb");
}

// ------------------------------------------------------------------------------------------------ line

class ProgressLineTest : public testing::Test {
protected:
    void SetUp() override { line.statementBegins({}); }

    /// As the storage layer tells it, so much later.
    static void tell(std::uint64_t items, milliseconds later) {
        now += later;
        using foundation::storage::vfs::AbsoluteIRI;
        runtime::storage::progressObserver()->progressed(
            {items, 100, 0, 0, AbsoluteIRI(u"memory://box/file")});
    }

    /// What a terminal of 80 columns shows of the text: carriage returns and line feeds are obeyed.
    std::vector<std::string> screen() const {
        std::vector<std::string> lines(1);
        std::size_t column = 0;
        for (const char unit : shown.str()) {
            if (unit == '\r') {
                column = 0;
            } else if (unit == '\n') {
                lines.emplace_back();
                column = 0;
            } else {
                lines.back().resize(std::max(lines.back().size(), column + 1), ' ');
                lines.back()[column++] = unit;
            }
        }
        for (std::string& text : lines)
            text.erase(text.find_last_not_of(' ') + 1);
        return lines;
    }

    static inline ProgressTime now{std::chrono::hours(1)};
    std::ostringstream shown;
    StreamPresenter presenter{shown, shown};
    ProgressLine line{presenter, {shown, [] { return std::size_t{80}; }, [] { return now; }}};
};

TEST_F(ProgressLineTest, AShortStatementDrawsNothing) {
    tell(1, milliseconds(100));
    tell(2, milliseconds(300));
    line.statementEnds();
    EXPECT_EQ(shown.str(), "");
}

TEST_F(ProgressLineTest, ALongOneDrawsItsLineAndTakesItAway) {
    tell(1, milliseconds(600));
    EXPECT_THAT(screen(), testing::ElementsAre("1 item, 2 items/s: file"));
    tell(40, milliseconds(400));
    EXPECT_THAT(screen(), testing::ElementsAre("40 items, 40 items/s: file"));
    line.statementEnds();
    EXPECT_THAT(screen(), testing::ElementsAre(""));
}

TEST_F(ProgressLineTest, AShorterLineLeavesNothingOfTheLongerOne) {
    tell(100, milliseconds(600));
    tell(1, milliseconds(60000));
    EXPECT_THAT(screen(), testing::ElementsAre("101 items: file"));
}

TEST_F(ProgressLineTest, ItGoesBeforeAnythingIsShown) {
    tell(1, milliseconds(600));
    line.printed(u"text\n");
    EXPECT_THAT(screen(), testing::ElementsAre("text", ""));
    tell(2, milliseconds(200));
    line.warned({"KORVEX:A:b", u"careful"});
    tell(3, milliseconds(200));
    line.result("x", makeDouble(1).get(), true);
    tell(4, milliseconds(200));
    line.failed({"KORVEX:C:d", u"wrong"});
    line.statementEnds();
    EXPECT_THAT(screen(), testing::ElementsAre("text", "Warning: careful", "  (KORVEX:A:b)", "x =", "    1",
                                               "Error: wrong", "  (KORVEX:C:d)", ""));
}

TEST_F(ProgressLineTest, PrintedTextThatIsNoWholeLineIsNotOverwritten) {
    line.printed(u"no line end");
    tell(1, milliseconds(600));
    EXPECT_THAT(screen(), testing::ElementsAre("no line end"));
    line.printed(u"\n");
    tell(2, milliseconds(200));
    EXPECT_THAT(screen(), testing::ElementsAre("no line end", "2 items, 3 items/s: file"));
}

TEST_F(ProgressLineTest, WhatIsToldBetweenStatementsIsNotDrawn) {
    line.statementEnds();
    tell(1, milliseconds(6000));
    EXPECT_EQ(shown.str(), "");
}

TEST(ProgressObserverOfTheLine, IsTheOneBeforeWhenTheLineGoes) {
    std::ostringstream stream;
    StreamPresenter presenter(stream, stream);
    {
        const ProgressLine line(presenter,
                                {stream, [] { return std::size_t{80}; }, std::chrono::steady_clock::now});
        EXPECT_NE(runtime::storage::progressObserver(), nullptr);
    }
    EXPECT_EQ(runtime::storage::progressObserver(), nullptr);
}

}  // namespace
}  // namespace korvex::host
