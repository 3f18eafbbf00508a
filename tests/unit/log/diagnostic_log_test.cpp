// The diagnostic logger and where its trace goes.
#include "platform/diagnostic_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <future>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "runtime/log/diagnostic_source.h"
#include "runtime/log/trace_output.h"
#include "tests/support/scratch_folder.h"

namespace korvex::runtime::log {
namespace {

namespace severity = foundation::log::severity;
using foundation::log::DiagnosticRecord;
using foundation::log::detail::indent_attribute;
using io::filesystem::core::log::getLogger;
using korvex::tests::ScratchFolder;
using testing::HasSubstr;

void write(std::uint32_t severityBit, const std::string& text) {
    if (DiagnosticRecord record = getLogger().openRecord(severityBit)) record << text;
}

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(DiagnosticLogger, WantsNothingAtFirst) {
    EXPECT_EQ(getLogger().mask(), 0U);
    for (std::uint32_t bit = 1; bit != 0; bit <<= 1)
        EXPECT_FALSE(getLogger().isEnabled(bit));
}

TEST(DiagnosticLogger, EnablesTheBitsOfItsMask) {
    std::ostringstream lines;
    const TraceOutput output(lines, severity::flowOfControl | severity::error);
    EXPECT_TRUE(getLogger().isEnabled(severity::flowOfControl));
    EXPECT_TRUE(getLogger().isEnabled(severity::error));
    EXPECT_FALSE(getLogger().isEnabled(severity::workingValue));
}

TEST(DiagnosticLogger, OpensNoRecordWhileTheTraceGoesNowhere) {
    getLogger().setMask(severity::all);
    EXPECT_FALSE(getLogger().openRecord(severity::error));
    getLogger().setMask(0);
}

TEST(DiagnosticLogger, OpensNoRecordThatTheFilterRefuses) {
    std::ostringstream lines;
    const TraceOutput output(lines, severity::functionEntry);
    EXPECT_TRUE(getLogger().openRecord(severity::functionEntry));
    EXPECT_FALSE(getLogger().openRecord(severity::functionExit));
}

TEST(DiagnosticLogger, IsTheSameEachTime) { EXPECT_EQ(&getLogger(), &getLogger()); }

TEST(DiagnosticRecordTest, WritesTextNumbersAndWideText) {
    std::ostringstream lines;
    const TraceOutput output(lines, severity::all);
    const std::u16string path = u"/ä";
    {
        DiagnosticRecord record = getLogger().openRecord(severity::workingValue);
        record << "path " << path << u" and " << std::u16string_view(path).substr(0, 1) << ' ' << 42;
    }
    EXPECT_EQ(lines.str(), "   8 path /ä and / 42\n");
}

TEST(DiagnosticRecordTest, AnUnpairedUnitDoesNotStopIt) {
    std::ostringstream lines;
    const TraceOutput output(lines, severity::all);
    getLogger().openRecord(severity::workingValue) << std::u16string{0xD800};
    EXPECT_EQ(lines.str(), "   8 \xEF\xBF\xBD\n");
}

TEST(DiagnosticRecordTest, IsDroppedWhenAnExceptionLeavesTheStatement) {
    std::ostringstream lines;
    const TraceOutput output(lines, severity::all);
    try {
        DiagnosticRecord record = getLogger().openRecord(severity::workingValue);
        record << "half";
        throw std::runtime_error("no more");
    } catch (const std::runtime_error&) {
        write(severity::workingValue, "whole");
    }
    EXPECT_EQ(lines.str(), "   8 whole\n");
}

TEST(DiagnosticRecordTest, MadeWhileAnExceptionIsUnderWayGoesOut) {
    struct WritesWhenItDies {
        ~WritesWhenItDies() { write(severity::workingValue, "unwinding"); }
    };
    std::ostringstream lines;
    const TraceOutput output(lines, severity::all);
    try {
        const WritesWhenItDies dies;
        throw std::runtime_error("no more");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(lines.str(), "   8 unwinding\n");
}

TEST(TraceOutputTest, WritesALineWithSeverityIndentAndText) {
    std::ostringstream lines;
    const TraceOutput output(lines, severity::all);
    write(severity::functionEntry, "outer");
    indent_attribute::increase();
    write(severity::error, "inner");
    indent_attribute::decrease();
    write(severity::functionExit, "outer");
    EXPECT_EQ(lines.str(), "  32 outer\n 512   inner\n  64 outer\n");
}

TEST(TraceOutputTest, OnceGoneNothingIsWrittenAndTheMaskIsBack) {
    std::ostringstream lines;
    { const TraceOutput output(lines, severity::all); }
    EXPECT_EQ(getLogger().mask(), 0U);
    EXPECT_FALSE(getLogger().openRecord(severity::error));
    EXPECT_EQ(lines.str(), "");
}

TEST(TraceOutputTest, TwoOutputsGetTheSame) {
    std::ostringstream outer;
    std::ostringstream inner;
    const TraceOutput outerOutput(outer, severity::error);
    {
        const TraceOutput innerOutput(inner, severity::rawValue);
        write(severity::rawValue, "both");
        write(severity::error, "neither");
    }
    EXPECT_EQ(getLogger().mask(), severity::error);
    write(severity::error, "outer");
    EXPECT_EQ(inner.str(), "   1 both\n");
    EXPECT_EQ(outer.str(), "   1 both\n 512 outer\n");
}

TEST(TraceOutputTest, AFileIsEmptiedFirstAndHasEachLineAtOnce) {
    const ScratchFolder scratch;
    const std::filesystem::path file = scratch.writeFile("trace.log", "old\n");
    const TraceOutput output(file.u16string(), severity::all);
    EXPECT_EQ(contentOf(file), "");
    write(severity::error, "new");
    EXPECT_EQ(contentOf(file), " 512 new\n");
}

TEST(TraceOutputTest, AFileThatCannotBeOpenedIsAnErrorAndNothingIsTraced) {
    const ScratchFolder scratch;
    EXPECT_THROW(TraceOutput(scratch.text() + u"/no/such/folder/file", severity::all), std::system_error);
    EXPECT_EQ(getLogger().mask(), 0U);
    EXPECT_FALSE(getLogger().openRecord(severity::error));
}

TEST(TraceOutputTest, APathWithANulOpensNoOtherFile) {
    const ScratchFolder scratch;
    const std::filesystem::path file = scratch.writeFile("a", "old");
    EXPECT_THROW(TraceOutput(file.u16string() + std::u16string(u"\0b", 2), severity::all), std::system_error);
    EXPECT_EQ(contentOf(file), "old");
}

TEST(TraceOutputTest, ARecordThatEndsItsLineItselfGetsNoSecondLineEnd) {
    std::ostringstream lines;
    const TraceOutput output(lines, severity::all);
    write(severity::flowOfControl, "\n");
    EXPECT_EQ(lines.str(), "   4 \n");
}

TEST(TraceOutputTest, AStreamThatCannotBeWrittenDisturbsNobody) {
    struct Full : std::streambuf {};
    Full full;
    std::ostream stream(&full);
    stream.exceptions(std::ios::badbit);
    const TraceOutput output(stream, severity::all);
    EXPECT_NO_THROW(write(severity::error, "lost"));
    EXPECT_TRUE(stream.bad());
}

TEST(Indent, IsThatOfTheThread) {
    indent_attribute::increase();
    int elsewhere = -1;
    std::thread([&] { elsewhere = indent_attribute::depth(); }).join();
    EXPECT_EQ(indent_attribute::depth(), 1);
    EXPECT_EQ(elsewhere, 0);
    indent_attribute::decrease();
}

TEST(DiagnosticLogger, ManyThreadsWriteWholeLines) {
    constexpr int threads = 4;
    constexpr int records = 200;
    std::ostringstream lines;
    {
        const TraceOutput output(lines, severity::all);
        std::vector<std::thread> writers;
        for (int i = 0; i < threads; ++i) {
            writers.emplace_back([i] {
                for (int j = 0; j < records; ++j)
                    write(1U << i, "writer " + std::to_string(i));
            });
        }
        for (std::thread& writer : writers)
            writer.join();
    }
    std::istringstream read(lines.str());
    int count = 0;
    for (std::string line; std::getline(read, line); ++count) {
        const int writer = line.back() - '0';
        EXPECT_EQ(line, (writer == 3   ? "   8"
                         : writer == 2 ? "   4"
                         : writer == 1 ? "   2"
                                       : "   1") +
                            std::string(" writer ") + line.back());
    }
    EXPECT_EQ(count, threads * records);
}

TEST(DiagnosticLogger, RecordsOpenUnderTheLockOnly) {
    std::ostringstream lines;
    const TraceOutput output(lines, severity::all);
    std::unique_lock held = diagnosticSource().holdOpening();
    std::future<void> writing = std::async(std::launch::async, [] { write(severity::error, "late"); });
    EXPECT_EQ(lines.str(), "");
    held.unlock();
    writing.get();
    EXPECT_EQ(lines.str(), " 512 late\n");
}

}  // namespace
}  // namespace korvex::runtime::log
