// The trace statements of the commands.
#include "io/filesystem/filemanip/command_frame_trace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>

#include "platform/storage_vfs.h"
#include "runtime/log/diagnostic_source.h"
#include "runtime/log/trace_output.h"

namespace korvex::filemanip::tests {
namespace {

namespace vfs = foundation::storage::vfs;
using foundation::log::DiagnosticRecord;
using foundation::log::detail::indent_attribute;
using runtime::log::TraceOutput;
using testing::HasSubstr;
using testing::StartsWith;

constexpr std::string_view sourceFile = "io/filesystem/filemanip/DirManip";

/// A traced function that says something, calls another one, or fails.
void inner() {
    const TraceScope scope(traceLogger(), "void inner()", sourceFile, __LINE__);
    trace(severity::flowOfControl, "inside");
}
void outer(bool isFailing) {
    const TraceScope scope(traceLogger(), "void outer()", sourceFile, __LINE__);
    inner();
    if (isFailing) throw std::runtime_error("failed");
}

std::string traceOf(std::uint32_t mask, bool isFailing = false) {
    std::ostringstream lines;
    const TraceOutput output(lines, mask);
    try {
        outer(isFailing);
    } catch (const std::runtime_error&) {
    }
    return lines.str();
}

TEST(TraceStatement, ComputesNothingWhileItsSeverityIsOff) {
    std::ostringstream lines;
    const TraceOutput output(lines, severity::all & ~severity::workingValue);
    bool wasComputed = false;
    trace(severity::workingValue, [&](DiagnosticRecord&) { wasComputed = true; });
    EXPECT_FALSE(wasComputed);
    trace(severity::flowOfControl, [&](DiagnosticRecord&) { wasComputed = true; });
    EXPECT_TRUE(wasComputed);
}

TEST(TraceStatement, ComputesNothingWhileTheTraceGoesNowhere) {
    bool wasComputed = false;
    traceLogger().setMask(severity::all);
    trace(severity::workingValue, [&](DiagnosticRecord&) { wasComputed = true; });
    traceLogger().setMask(0);
    EXPECT_FALSE(wasComputed);
}

TEST(TraceStatement, WritesTextsNumbersAndHandles) {
    std::ostringstream lines;
    const TraceOutput output(lines, severity::all);
    const std::u16string path = u"/a b";
    const vfs::Folder folder(vfs::AbsoluteIRI(u"memory://box/f"), vfs::StorageSystemReference(nullptr));
    trace(severity::workingValue, [&](auto& record) { record << "Absolute path: " << path; });
    trace(severity::rawValue, [&](auto& record) {
        record << "Value of existenceType: " << foundation::storage::provider::ExtendedFolder << ' ' << folder
               << ' ' << path.size();
    });
    trace(severity::flowOfControl, "\n");
    EXPECT_EQ(lines.str(),
              "   8 Absolute path: /a b\n   1 Value of existenceType: Folder memory://box/f 4\n   4 \n");
}

TEST(TraceStatement, AnExceptionInItGoesOnAndTheRecordIsDropped) {
    std::ostringstream lines;
    const TraceOutput output(lines, severity::all);
    EXPECT_THROW(trace(severity::workingValue,
                       [](DiagnosticRecord& record) {
                           record << "half";
                           throw std::runtime_error("failed");
                       }),
                 std::runtime_error);
    EXPECT_EQ(lines.str(), "");
}

TEST(TraceStatement, AnExceptionThatStaysInItDropsNothing) {
    std::ostringstream lines;
    const TraceOutput output(lines, severity::all);
    trace(severity::workingValue, [](DiagnosticRecord& record) {
        try {
            throw std::runtime_error("failed");
        } catch (const std::runtime_error& failure) {
            record << failure.what();
        }
    });
    EXPECT_EQ(lines.str(), "   8 failed\n");
}

TEST(TraceScopeTest, BracketsAFunctionOneLevelDeeper) {
    EXPECT_EQ(traceOf(severity::all),
              "  32 void outer()\n"
              "  32   void inner()\n"
              "   4     inside\n"
              "  64   void inner()\n"
              "  64 void outer()\n");
}

TEST(TraceScopeTest, AnExceptionThatLeavesTheFunctionIsToldAtItsExitOnly) {
    EXPECT_EQ(traceOf(severity::functionEntry | severity::functionExit, true),
              "  32 void outer()\n"
              "  32   void inner()\n"
              "  64   void inner()\n"
              "  64 void outer() [throw]\n");
}

TEST(TraceScopeTest, AnExitWhileAnEarlierExceptionIsUnderWayIsAnOrdinaryOne) {
    struct TracesWhenItDies {
        ~TracesWhenItDies() { inner(); }
    };
    std::ostringstream lines;
    const TraceOutput output(lines, severity::functionEntry | severity::functionExit);
    try {
        const TracesWhenItDies dies;
        throw std::runtime_error("failed");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(lines.str(), "  32 void inner()\n  64 void inner()\n");
}

TEST(TraceScopeTest, WithoutEntriesThereIsNoExitAndNoIndent) {
    EXPECT_EQ(traceOf(severity::all & ~severity::functionEntry), "   4 inside\n");
}

TEST(TraceScopeTest, TheFilterDecidesAboutExits) {
    EXPECT_EQ(traceOf(severity::functionEntry), "  32 void outer()\n  32   void inner()\n");
}

TEST(TraceScopeTest, AChangeOfTheMaskInsideIsIgnoredByTheScope) {
    std::ostringstream lines;
    const TraceOutput output(lines, severity::functionEntry);
    {
        const TraceScope scope(traceLogger(), "void f()", sourceFile, 1);
        EXPECT_EQ(indent_attribute::depth(), 1);
        traceLogger().setMask(severity::functionExit);
    }
    EXPECT_EQ(lines.str(), "  32 void f()\n  64 void f()\n");
    {
        const TraceScope scope(traceLogger(), "void g()", sourceFile, 1);
        EXPECT_EQ(indent_attribute::depth(), 0);
        traceLogger().setMask(severity::all);
    }
    EXPECT_EQ(indent_attribute::depth(), 0);
    EXPECT_EQ(lines.str(), "  32 void f()\n  64 void f()\n");
}

TEST(TraceScopeTest, TheIndentFollowsTheMaskAlsoWhileTheTraceGoesNowhere) {
    traceLogger().setMask(severity::functionEntry);
    int depthInside = 0;
    {
        const TraceScope scope(traceLogger(), "void f()", sourceFile, 1);
        depthInside = indent_attribute::depth();
    }
    traceLogger().setMask(0);
    EXPECT_EQ(depthInside, 1);
    EXPECT_EQ(indent_attribute::depth(), 0);
}

TEST(TraceScopeTest, WithMaskZeroThereIsNoRecordNoIndentAndNoLock) {
    const std::string none = traceOf(0, true);
    EXPECT_EQ(none, "");

    auto held = runtime::log::diagnosticSource().holdOpening();
    std::promise<int> depthInside;
    std::future<int> answer = depthInside.get_future();
    std::thread function([&] {
        const TraceScope scope(traceLogger(), "void f()", sourceFile, 1);
        trace(severity::error, "nobody listens");
        traceCurrentException();
        depthInside.set_value(indent_attribute::depth());
    });
    // A function that waited for the lock would never answer.
    const std::future_status status = answer.wait_for(std::chrono::seconds(60));
    held.unlock();
    function.join();
    ASSERT_EQ(status, std::future_status::ready);
    EXPECT_EQ(answer.get(), 0);
}

TEST(TraceScopeTest, KeepsItsSourceAndTheCompilersSignature) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, sourceFile, 42);
    EXPECT_EQ(scope.sourcePath(), sourceFile);
    EXPECT_EQ(scope.line(), 42);
    EXPECT_THAT(KORVEX_FUNCTION_SIGNATURE, HasSubstr("TestBody"));
}

TEST(TraceCurrentException, TellsWhatIsKnownOfIt) {
    std::ostringstream lines;
    const TraceOutput output(lines, severity::exceptionInFlight);
    try {
        throw vfs::Exception(vfs::ioError, vfs::AbsoluteIRI(u"memory://box/f"), u"read", "on fire");
    } catch (const vfs::Exception&) {
        traceCurrentException();
    }
    EXPECT_THAT(lines.str(), StartsWith("  16 Exception caught: "));
    EXPECT_THAT(lines.str(), HasSubstr("on fire"));
}

TEST(TraceCurrentException, ToldOfNothingButItsTypeNamesThat) {
    std::ostringstream lines;
    const TraceOutput output(lines, severity::all);
    try {
        throw 1;
    } catch (int) {
        traceCurrentException();
    }
    EXPECT_THAT(lines.str(), StartsWith("  16 Exception caught: "));
    EXPECT_THAT(lines.str(), HasSubstr("int"));
}

TEST(TraceCurrentException, WithoutOneSaysSo) {
    std::ostringstream lines;
    const TraceOutput output(lines, severity::all);
    traceCurrentException();
    EXPECT_EQ(lines.str(), "  16 Exception caught: No diagnostic information available.\n");
}

TEST(TraceCurrentException, IsNotDescribedWhileItsSeverityIsOff) {
    std::ostringstream lines;
    const TraceOutput output(lines, severity::all & ~severity::exceptionInFlight);
    traceCurrentException();
    EXPECT_EQ(lines.str(), "");
}

}  // namespace
}  // namespace korvex::filemanip::tests
