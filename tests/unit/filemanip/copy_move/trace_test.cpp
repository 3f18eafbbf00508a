// The trace of whole calls: which records are written, in which order, under which severity.
#include <algorithm>
#include <sstream>
#include <utility>

#include "platform/diagnostic_log.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/dispatcher/search_path.h"
#include "runtime/log/trace_output.h"
#include "tests/unit/filemanip/copy_move/copy_move_fixture.h"

namespace korvex::filemanip::tests {
namespace {

namespace severity = foundation::log::severity;
using storage::Operation;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Matcher;
using testing::StartsWith;

/// A record: its severity and its text, without the indent.
struct Line {
    unsigned severity;
    std::string text;
};

void PrintTo(const Line& line, std::ostream* stream) { *stream << line.severity << ' ' << line.text; }

Matcher<Line> record(unsigned severity, const Matcher<std::string>& text) {
    return testing::AllOf(testing::Field(&Line::severity, severity), testing::Field(&Line::text, text));
}

bool beginsARecord(const std::string& line) {
    const std::size_t digits = line.find_first_not_of(' ');
    return digits < 4 && line.find_first_not_of("0123456789", digits) == 4;
}

std::vector<Line> linesOf(const std::string& trace) {
    std::vector<Line> lines;
    std::istringstream stream(trace);
    std::size_t depth = 0;
    for (std::string line; std::getline(stream, line);) {
        if (!beginsARecord(line)) {
            lines.back().text += '\n' + line;
            continue;
        }
        const auto number = static_cast<unsigned>(std::stoul(line.substr(0, 4)));
        if (number == severity::functionExit) --depth;
        lines.push_back({number, line.substr(5 + 2 * depth)});
        if (number == severity::functionEntry) ++depth;
    }
    return lines;
}

class CopyMoveTraceTest : public WatchedStorageTest {
protected:
    CopyMoveTraceTest() {
        storage_.put(u"/s/a", "A");
        storage_.put(u"/s/b", "B");
        storage_.put(u"/d/");
    }

    static std::string traceOf(std::uint32_t mask, const Command& command, const Texts& arguments) {
        std::ostringstream lines;
        const runtime::log::TraceOutput output(lines, mask);
        failureOf(command, arguments);
        return lines.str();
    }

    /// The records of a call but for those of functions that are entered and left.
    static std::vector<Line> recordsOf(const Command& command, const Texts& arguments) {
        std::vector<Line> lines = linesOf(traceOf(severity::all, command, arguments));
        std::erase_if(lines, [](const Line& line) {
            return line.severity == severity::functionEntry || line.severity == severity::functionExit;
        });
        return lines;
    }

    /// The records on the way to two locations.
    static std::vector<Matcher<Line>> intake(const std::string& source, const std::string& parent,
                                             const std::string& destination, const std::string& kind) {
        return {record(8, "Value of source string: " + source),
                record(8, "Value of VFS Path: " + source),
                record(4, "Source IRI has Parent, value: " + parent),
                record(8, "Value of destination: " + destination),
                record(8, "Destination VFS path: " + destination),
                record(8, "Value of source exists status: " + kind)};
    }
    static std::vector<Matcher<Line>> joined(std::vector<Matcher<Line>> first,
                                             const std::vector<Matcher<Line>>& then) {
        first.insert(first.end(), then.begin(), then.end());
        return first;
    }
    static Matcher<Line> items(const std::string& source, const std::string& destination) {
        return record(2, testing::AllOf(HasSubstr(" srcItem=file://" + source),
                                        HasSubstr(" destItem=file://" + destination)));
    }
};

TEST_F(CopyMoveTraceTest, CopyOfAFile) {
    EXPECT_THAT(
        recordsOf(copyCommand, {u"/s/a", u"/d/new"}),
        ElementsAreArray(joined(
            intake("/s/a", "/s", "/d/new", "AsFile"),
            {items("/s/a", "/d/new"),
             record(4,
                    "Performing operation: Copy file from location file:///s/a to location file:///d/new "
                    "using policy: ReplaceWritable"),
             record(4, "Exiting the copyFile function!!!")})));
}

TEST_F(CopyMoveTraceTest, ForcedMoveOfAFile) {
    EXPECT_THAT(
        recordsOf(moveCommand, {u"/s/a", u"/d/new", u"f"}),
        ElementsAreArray(joined(
            intake("/s/a", "/s", "/d/new", "AsFile"),
            {record(4, "Setting file/folder: file:///d/new to be writable."),
             record(16, StartsWith("Exception caught: ")), items("/s/a", "/d/new"),
             record(4, "Setting file/folder: file:///s/a to be writable."),
             record(4,
                    "Performing operation: Move file from location file:///s/a to location file:///d/new "
                    "using policy: ReplaceAny"),
             record(4, "Exiting the moveFile function!!!")})));
}

TEST_F(CopyMoveTraceTest, MoveOfAFolderOnTheSearchPathBelowAMissingOne) {
    ASSERT_TRUE(runtime::dispatcher::addToSearchPath({u"/s"}).empty());
    EXPECT_THAT(
        recordsOf(moveCommand, {u"/s", u"/x/new"}),
        ElementsAreArray(joined(
            intake("/s", "/", "/x/new", "AsFolder"),
            {record(8, "Destination exist status: AsNeither"),
             record(4, HasSubstr("Parent does not exist, created the parent, value: ")),
             record(2, testing::AllOf(HasSubstr(" srcFolder=file:///s"),
                                      HasSubstr(" destFolder=file:///x/new"))),
             items("/s", "/x/new"),
             record(4,
                    "Performing operation: Move folder from location file:///s to location file:///x/new "
                    "using policy: MergeFolder"),
             record(4, "Exiting the moveFile function!!!")})));
    EXPECT_THAT(runtime::dispatcher::searchPath(), IsEmpty());
}

TEST_F(CopyMoveTraceTest, CopyOfMatchesIntoANewFolder) {
    EXPECT_THAT(recordsOf(copyCommand, {u"/s/b*", u"/d/new"}),
                ElementsAreArray(
                    joined(intake("/s/b*", "/s", "/d/new", "AsNeither"),
                           {record(8, "Destination exist status: AsNeither"),
                            record(4,
                                   "Performing operation: Creating a new (empty) folder as the status is "
                                   "vfs::ExistenceType::AsNeither i.e. destination does not exist."),
                            items("/s/b", "/d/new/b"),
                            record(4,
                                   "Performing operation: Copy file from location file:///s/b to location "
                                   "file:///d/new/b using policy: ReplaceWritable"),
                            record(4, "Exiting the copyFile function!!!")})));
}

TEST_F(CopyMoveTraceTest, NameThatIsNotThereBelowAMissingFolder) {
    EXPECT_THAT(recordsOf(copyCommand, {u"/s/nothing", u"/x/new"}),
                ElementsAreArray(
                    joined(intake("/s/nothing", "/s", "/x/new", "AsNeither"),
                           {record(8, "Destination exist status: AsNeither"),
                            record(4, HasSubstr("Parent does not exist, created the parent, value: ")),
                            record(4, "Performing operation: Removing (deleting) the Folder: file:///x")})));
}

TEST_F(CopyMoveTraceTest, DestinationThatIsLeftOut) {
    const std::vector<Line> lines = recordsOf(copyCommand, {u"/s/a"});
    ASSERT_GT(lines.size(), 3U);
    EXPECT_THAT(lines[3], record(4, "No destination specified, destination is cwd: /here"));
    EXPECT_THAT(lines[4], record(8, "Destination VFS path: /here"));
}

TEST_F(CopyMoveTraceTest, RootAsTheSourceHasNoParent) {
    const std::vector<Line> lines = recordsOf(copyCommand, {u"/", u"/d"});
    ASSERT_GT(lines.size(), 2U);
    EXPECT_THAT(lines[2], record(8, "Value of destination: /d"));
}

TEST_F(CopyMoveTraceTest, WebLocationAsTheDestinationAndAsTheSourceOfAMove) {
    for (const auto& [command, source, destination] : {std::tuple{copyCommand, u"/s/a", u"http://host/b"},
                                                       {moveCommand, u"/s/a", u"http://host/b"},
                                                       {moveCommand, u"http://host/a", u"/d/a"}}) {
        const std::vector<Line> lines = recordsOf(command, {source, destination});
        ASSERT_GT(lines.size(), 2U);
        EXPECT_THAT(lines[lines.size() - 2], record(512, "HTTP/S URLs are read only."));
        EXPECT_THAT(lines.back(), record(16, "Exception caught: No diagnostic information available."));
    }
}

TEST_F(CopyMoveTraceTest, FailureOfATransferHasItsOwnText) {
    storage_.provider->failCall(Operation::copyFile, 1, {.code = vfs::ioError, .systemText = "on fire"});
    const std::vector<Line> lines = recordsOf(copyCommand, {u"/s/a", u"/d/new"});
    EXPECT_THAT(lines, testing::Contains(record(512, HasSubstr("on fire"))));
}

TEST_F(CopyMoveTraceTest, FailureOfAQuestionHasItsOwnText) {
    storage_.provider->failCall(Operation::existence, 1, {.code = vfs::ioError, .systemText = "on fire"});
    const std::vector<Line> lines = recordsOf(copyCommand, {u"/s/a", u"/d/new"});
    EXPECT_THAT(lines, testing::Contains(record(512, HasSubstr("on fire"))));
}

TEST_F(CopyMoveTraceTest, RefusedNewFolderIsTold) {
    storage_.provider->failCall(Operation::createFolder, 1, {.code = vfs::ioError, .systemText = "on fire"});
    const std::string trace = traceOf(severity::error, copyCommand, {u"/s/b*", u"/d/new"});
    EXPECT_THAT(trace, HasSubstr("Exception while explicitly creating destination which does not exist\n"));
    EXPECT_THAT(trace, HasSubstr("on fire"));
}

TEST_F(CopyMoveTraceTest, DoubtAboutATargetIsTold) {
    storage_.put(u"/d/a", "old");
    storage_.provider->failCall(Operation::isWritable, 1, {.code = vfs::ioError, .systemText = "on fire"});
    EXPECT_THAT(
        linesOf(traceOf(severity::exceptionInFlight, copyCommand, {u"/s/a", u"/d"})),
        ElementsAre(record(16, testing::AllOf(StartsWith("Exception caught: "), HasSubstr("on fire")))));
}

TEST_F(CopyMoveTraceTest, DoubtAboutTheTargetOfAMatchIsTold) {
    storage_.provider->failCall(Operation::isWritable, 1, {.code = vfs::ioError, .systemText = "on fire"});
    EXPECT_THAT(
        linesOf(traceOf(severity::exceptionInFlight, copyCommand, {u"/s/*", u"/d"})),
        ElementsAre(record(16, testing::AllOf(StartsWith("Exception caught: "), HasSubstr("on fire")))));
}

TEST_F(CopyMoveTraceTest, MissingParentThatCannotBeMadeIsTold) {
    storage_.provider->failCall(Operation::createFolderRecursive, 1,
                                {.code = vfs::ioError, .systemText = "on fire"});
    EXPECT_THAT(linesOf(traceOf(severity::error, copyCommand, {u"/s", u"/x/new"})),
                ElementsAre(record(512, HasSubstr("on fire"))));
}

TEST_F(CopyMoveTraceTest, NewFolderForTheContentsOfTheCurrentOneThatCannotBeMadeIsTold) {
    storage_.put(u"/here/a", "A");
    storage_.provider->failCall(Operation::createFolder, 1, {.code = vfs::ioError, .systemText = "on fire"});
    EXPECT_THAT(linesOf(traceOf(severity::error, copyCommand, {u"/here", u"/d/new"})),
                ElementsAre(record(512, HasSubstr("on fire"))));
}

TEST_F(CopyMoveTraceTest, FailedTransferOfAFolderIsToldTwice) {
    for (const auto& [command, operation] :
         {std::pair{copyCommand, Operation::copyFolder}, {moveCommand, Operation::moveFolder}}) {
        storage_.provider->failCall(operation, 1, {.code = vfs::ioError, .systemText = "on fire"});
        const std::vector<Line> lines = recordsOf(command, {u"/s", u"/d/new"});
        EXPECT_THAT(lines, testing::Contains(record(16, HasSubstr("on fire"))));
        EXPECT_THAT(lines, testing::Contains(record(512, HasSubstr("on fire"))));
    }
}

TEST_F(CopyMoveTraceTest, DoubtAboutTheSourceOfAForcedMoveIsTold) {
    storage_.provider->failCall(Operation::isWritable, 1, {.code = vfs::ioError, .systemText = "on fire"});
    EXPECT_THAT(linesOf(traceOf(severity::exceptionInFlight, moveCommand, {u"/s/a", u"/d/new", u"f"})),
                testing::Contains(
                    record(16, testing::AllOf(StartsWith("Exception caught: "), HasSubstr("on fire")))));
}

TEST_F(CopyMoveTraceTest, ProtectionThatCannotBePutBackIsTold) {
    storage_.protect(u"/s/a");
    storage_.provider->failCall(Operation::setWritable, 3, {.code = vfs::ioError, .systemText = "on fire"});
    EXPECT_THAT(linesOf(traceOf(severity::exceptionInFlight, moveCommand, {u"/s/a", u"/d/new", u"f"})),
                testing::Contains(
                    record(16, testing::AllOf(StartsWith("Exception caught: "), HasSubstr("on fire")))));
    EXPECT_EQ(storage_.provider->faultsRaised(), 1U);
}

TEST_F(CopyMoveTraceTest, ExitIsToldOnceTheOutputsAreSetAndSoNotOfAnIllegalName) {
    const auto flowOf = [](const std::u16string& source, int nlhs) {
        std::ostringstream lines;
        const runtime::log::TraceOutput output(lines, severity::flowOfControl);
        call(copyFile, nlhs, {text(source).get()});
        return lines.str();
    };
    const std::u16string withNull(u"a\0b", 3);
    EXPECT_EQ(flowOf(withNull, 1), "   4 Exiting the copyFile function!!!\n");
    // Without outputs the failure is raised, and nothing comes behind that.
    EXPECT_EQ(flowOf(withNull, 0), "");
    EXPECT_EQ(flowOf(u"", 1), "");
    EXPECT_THAT(recordsOf(moveCommand, {u"/s/a", u"/d", u"odd"}), IsEmpty());
}

TEST_F(CopyMoveTraceTest, FunctionsAreBracketedAndAnUnwindingExitIsMarked) {
    const auto functions = [](const Command& command, const Texts& arguments) {
        return linesOf(traceOf(severity::functionEntry | severity::functionExit, command, arguments));
    };
    const std::vector<Line> lines = functions(copyCommand, {u"/s/a", u"/d/new"});
    ASSERT_FALSE(lines.empty());
    EXPECT_THAT(lines.front(), record(32, HasSubstr("copyFile")));
    EXPECT_THAT(lines.back(), record(64, HasSubstr("copyFile")));
    EXPECT_EQ(
        std::count_if(lines.begin(), lines.end(), [](const Line& line) { return line.severity == 32; }),
        std::count_if(lines.begin(), lines.end(), [](const Line& line) { return line.severity == 64; }));

    EXPECT_THAT(functions(moveCommand, {u"/s/a", u"/d", u"odd"}).back(),
                record(64, testing::AllOf(HasSubstr("moveFile"), EndsWith(" [throw]"))));
    EXPECT_EQ(foundation::log::detail::indent_attribute::depth(), 0);
}

TEST_F(CopyMoveTraceTest, NothingIsTracedWithoutAMask) {
    EXPECT_EQ(traceOf(0, copyCommand, {u"/s/a", u"/d/new"}), "");
    EXPECT_EQ(traceOf(0, moveCommand, {u"/s/nothing", u"/d/new"}), "");
}

TEST_F(CopyMoveTraceTest, TraceChangesNothing) {
    const Failure quiet = failureOf(copyCommand, Texts{u"/s/nothing", u"/d/new"});
    std::ostringstream lines;
    const runtime::log::TraceOutput output(lines, severity::all);
    EXPECT_EQ(failureOf(copyCommand, Texts{u"/s/nothing", u"/d/new"}), quiet);
    EXPECT_EQ(failureOf(copyCommand, Texts{u"/s/a", u"/d/new"}), noFailure());
}

}  // namespace
}  // namespace korvex::filemanip::tests
