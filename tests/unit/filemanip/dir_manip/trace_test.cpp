// What `mkdir` and `rmdir` write to the diagnostic trace: every record with its severity, in its place.
#include <algorithm>
#include <chrono>
#include <future>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "platform/diagnostic_log.h"
#include "runtime/log/diagnostic_source.h"
#include "runtime/log/trace_output.h"
#include "tests/unit/filemanip/dir_manip/dir_manip_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using runtime::log::TraceOutput;
using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::StartsWith;
namespace severity = foundation::log::severity;
using Records = std::vector<std::string>;

/// "MakeDir::CreatePath" of the compiler's text of a signature.
std::string functionOf(std::string signature) {
    for (const char* anonymous : {"(anonymous namespace)::", "{anonymous}::"}) {
        const std::size_t at = signature.find(anonymous);
        if (at != std::string::npos) signature.erase(at, std::string(anonymous).size());
    }
    signature.resize(signature.find('('));
    std::string name = signature.substr(signature.rfind(' ') + 1);
    const std::string module = "korvex::filemanip::";
    return name.starts_with(module) ? name.substr(module.size()) : name;
}

/// "32   void f(int)" becomes "  > f", and the record of its exit "  < f".
std::string shortened(const std::string& line) {
    constexpr std::size_t textColumn = 5;
    constexpr std::size_t blanksOfLevel = 2;
    const std::string severityText = line.substr(0, textColumn);
    std::size_t begin = std::min(line.find_first_not_of(' ', textColumn), line.size());
    begin -= (begin - textColumn) % blanksOfLevel;  // one blank more belongs to the text
    const std::string indent = line.substr(textColumn, begin - textColumn);
    if (severityText == "  32 ") return indent + "> " + functionOf(line.substr(begin));
    if (severityText == "  64 ") {
        return indent + "< " + functionOf(line.substr(begin)) + (line.ends_with("[throw]") ? " [throw]" : "");
    }
    std::string record =
        indent + severityText.substr(severityText.find_first_not_of(' ')) + line.substr(begin);
    record.resize(record.find_last_not_of(' ') + 1);
    return record;
}

/// The first question for existence, which is for the current folder, meets an error of another kind.
class ProviderThatBreaksOnce : public runtime::storage::LocalProvider {
public:
    runtime::storage::ExistenceType existence(const vfs::AbsoluteIRI& location) override {
        if (std::exchange(isWhole_, true)) return LocalProvider::existence(location);
        throw std::runtime_error("broken");
    }

private:
    bool isWhole_ = false;
};

/// Takes every location for one that does not parse.
class ProviderOfInvalidLocations : public runtime::storage::LocalProvider {
public:
    void createFolderRecursive(const vfs::AbsoluteIRI& folder) override {
        throw vfs::InvalidIRIException(folder.toString());
    }
};

class DirManipTraceTest : public DirManipTest {
protected:
    /// The records of a command, shortened; SCRATCH stands for the scratch folder.
    Records recordsUnder(std::uint32_t mask, Entry entry, const std::vector<std::u16string>& words) const {
        std::ostringstream lines;
        {
            const TraceOutput output(lines, mask);
            run(entry, words);
        }
        return recordsIn(lines.str());
    }
    Records recordsIn(const std::string& text) const {
        Records records;
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            for (std::size_t at; (at = line.find(scratch_.path().string())) != std::string::npos;)
                line.replace(at, scratch_.path().string().size(), "SCRATCH");
            records.push_back(shortened(line));
        }
        return records;
    }
    /// All of them, one a line.
    std::string traceOf(Entry entry, const std::vector<std::u16string>& words) const {
        std::string text;
        for (const std::string& record : recordsUnder(severity::all, entry, words))
            text += record + '\n';
        return text;
    }
    /// What is decided and met, without entries and exits, and so without indents.
    Records recordsOf(Entry entry, const std::vector<std::u16string>& words) const {
        return recordsUnder(severity::all & ~severity::functionEntry, entry, words);
    }
};

TEST_F(DirManipTraceTest, OfAWholeMkdir) {
    EXPECT_EQ(traceOf(makeDir, {u"a", u"b"}), R"(4
> makeDir
  8 Path element: a
  > checkInvalidChar
  < checkInvalidChar
  4 Valid path element
  8 Path element: b
  > checkInvalidChar
  < checkInvalidChar
  4 Valid path element
  > DirManipulator::Process
    4 Two paths passed, parent directory: a its length: 1, child directory : b its length : 1
    8 Final path to process: a/b
    8 Absolute path: SCRATCH/a/b
    > MakeDir::DirProcess
      2  strOriginalPath=a/b
      > MakeDir::CreatePath
        2  strOriginalPath=a/b
        8 Path name of created folder: file://SCRATCH/a/b
        8 Path name of topmost created folder: file://SCRATCH/a
        4 Created a new (empty) Folder hierarchy
        512 Creating folder error return code: 1
      < MakeDir::CreatePath
    < MakeDir::DirProcess
  < DirManipulator::Process
  4 Exiting the mkdir function!!!
< makeDir
)");
}

TEST_F(DirManipTraceTest, OfAWholeRmdir) {
    scratch_.writeFile("t/u/file.k");
    EXPECT_EQ(traceOf(removeDir, {u"t", u"s"}), R"(4
> removeDir
  > RemoveDir::Process
    > RemoveDir::Process
      1 Directory name after checking for path seperator & sym link: t
      > DirManipulator::Process
        8 Final path to process: t
        8 Absolute path: SCRATCH/t
        > RemoveDir::DirProcess
          1 Value of existenceType: Folder
          > RemoveDir::removeSingleItem
            > RemoveDir::doFolderRemoval
              4 Recursively trying to remove multiple items.
              > RemoveDir::removeMultipleItems
                4 Value of fileOrFolder: file://SCRATCH/t/u, isFile? false
                > RemoveDir::doFolderRemoval
                  4 Recursively trying to remove multiple items.
                  > RemoveDir::removeMultipleItems
                    4 Value of fileOrFolder: file://SCRATCH/t/u/file.k, isFile? true
                    > RemoveDir::doFileRemoval
                      4 value of fileObject: file://SCRATCH/t/u/file.k
                      4 Setting fileObject writable to True
                      > clearKFunction
                      < clearKFunction
                    < RemoveDir::doFileRemoval
                  < RemoveDir::removeMultipleItems
                  4 Setting vfsFolder writable to True.
                  1 folder Location: file://SCRATCH/t/u
                  > updateWindowsPath
                  < updateWindowsPath
                < RemoveDir::doFolderRemoval
                1 Value of tempFilesRemoved: true
              < RemoveDir::removeMultipleItems
              4 Setting vfsFolder writable to True.
              1 folder Location: file://SCRATCH/t
              > updateWindowsPath
              < updateWindowsPath
            < RemoveDir::doFolderRemoval
          < RemoveDir::removeSingleItem
          > updateUnixPath
          < updateUnixPath
        < RemoveDir::DirProcess
      < DirManipulator::Process
    < RemoveDir::Process
  < RemoveDir::Process
  4 Exiting the rmdir function!!!
< removeDir
)");
}

TEST_F(DirManipTraceTest, OfPathsThatAreRefused) {
    const std::u16string tooLong(1025, u'p');
    EXPECT_THAT(recordsOf(makeDir, {tooLong, u"c"}),
                Contains("512 ERROR: PATHMAX, Parent Path Length is: 1025, Exceeds MAX_PATH LENGTH: 1024"));
    EXPECT_THAT(recordsOf(removeDir, {u"a" + std::u16string(1, u'\0')}),
                Contains(StartsWith("512 Null File name a")));
    EXPECT_THAT(
        recordsOf(removeDir, {u"http://host/a"}),
        ElementsAre("4", "1 Directory name after checking for path seperator & sym link: http://host/a",
                    "8 Final path to process: http://host/a", "4 Path has IRI prefix",
                    "512 Http/s URLs are read only.", "4 Exiting the rmdir function!!!"));
}

TEST_F(DirManipTraceTest, OfAPathThatCannotBeMadeAbsolute) {
    const auto system = std::make_shared<vfs::StorageSystem>();
    system->add(u"file", std::make_shared<ProviderThatBreaksOnce>());
    const runtime::storage::ScopedStorageSystem broken(system);
    const Records records = recordsOf(makeDir, {u"a"});
    // The work goes on with the relative path.
    EXPECT_THAT(records, IsSupersetOf({"512 Error while generating absolute path. Exception not caught. Path "
                                       "name:a",
                                       "8 Absolute path: a", "4 Created a new (empty) Folder hierarchy"}));
    EXPECT_THAT(records, Contains(StartsWith("16 Exception caught: ")));
}

TEST_F(DirManipTraceTest, OfASchemeThatNobodyServes) {
    EXPECT_THAT(recordsOf(makeDir, {u"gopher://host/a"}),
                Contains(StartsWith("16 Exception caught: ")).Times(1));
}

TEST_F(DirManipTraceTest, OfALocationThatTurnsOutToBeNone) {
    const auto system = std::make_shared<vfs::StorageSystem>();
    system->add(u"file", std::make_shared<ProviderOfInvalidLocations>());
    const runtime::storage::ScopedStorageSystem invalid(system);
    EXPECT_THAT(recordsOf(makeDir, {u"a"}), Contains(StartsWith("16 Exception caught: ")).Times(1));
}

TEST_F(DirManipTraceTest, OfAnEmptyNameHasNoLastRecord) {
    EXPECT_EQ(traceOf(makeDir, {u""}), "4\n> makeDir\n< makeDir\n");
    EXPECT_THAT(recordsOf(makeDir, {u"a", u""}),
                ElementsAre("4", "8 Path element: a", "4 Valid path element"));
    EXPECT_THAT(recordsOf(removeDir, {u""}), ElementsAre("4"));
}

TEST_F(DirManipTraceTest, OfAFolderThatExists) {
    scratch_.makeFolder("a");
    const Records records = recordsOf(makeDir, {u"a"});
    EXPECT_THAT(records, Contains(StartsWith("512 Exception while creating folder object ")));
    EXPECT_THAT(records, Contains("512 Creating folder error return code: 1"));
    EXPECT_THAT(records, testing::Not(Contains(testing::HasSubstr("OS Error!!"))));
}

TEST_F(DirManipTraceTest, OfAFolderThatCannotBeMade) {
    local_->failCall(Operation::createFolderRecursive, 1, {.code = vfs::ioError});
    EXPECT_THAT(recordsOf(makeDir, {u"a"}),
                IsSupersetOf({"512 OS Error!! while creating folder object where folder does not exist.",
                              "512 Creating folder error return code: 0"}));
}

TEST_F(DirManipTraceTest, OfWhatCannotBeRemoved) {
    scratch_.writeFile("a/file");
    EXPECT_THAT(recordsOf(removeDir, {u"a"}), Contains("8 No Directories removed: a"));
    EXPECT_THAT(recordsOf(removeDir, {u"nothing"}),
                Contains("4 Not a directory; folder contents and resources not found."));
    EXPECT_THAT(
        recordsOf(removeDir, {u"file://host/"}),
        Contains("512 IRI's path does not have a parent. Possible cause of error is that 'it is a root "
                 "path', 'Resource Not Found' or 'it is not a directory'"));
}

TEST_F(DirManipTraceTest, OfAFolderThatMayNotGoTellsTheFailureTwice) {
    scratch_.makeFolder("a");
    local_->failAt(Operation::removeFolder, locationOf(u"a"), {.code = vfs::permissionDenied});
    // Where it is met, and where it is judged.
    EXPECT_THAT(recordsOf(removeDir, {u"a"}), Contains(StartsWith("512 Permission is denied")).Times(2));
}

TEST_F(DirManipTraceTest, OfAListingInATreeThatFails) {
    scratch_.writeFile("t/u/file");
    local_->failAt(Operation::list, locationOf(u"t/u"), {.code = vfs::permissionDenied});
    local_->failAt(Operation::removeFolder, locationOf(u"t/u"), {.code = vfs::permissionDenied});
    // The listing is left by the failure, the removal around it is not.
    EXPECT_THAT(traceOf(removeDir, {u"t", u"s"}), testing::HasSubstr(R"(
                > RemoveDir::doFolderRemoval
                  4 Recursively trying to remove multiple items.
                  > RemoveDir::removeMultipleItems
                  < RemoveDir::removeMultipleItems [throw]
                  512 Permission is denied)"));
}

TEST_F(DirManipTraceTest, OfAPartialRemoval) {
    scratch_.makeFolder("a1");
    scratch_.writeFile("a2");
    scratch_.makeFolder("a3");
    fs::permissions(diskPath("a3"), fs::perms::owner_read);
    EXPECT_THAT(recordsOf(removeDir, {u"a*"}),
                IsSupersetOf({"8 VFS path: SCRATCH/a3", "8 Some directories could not be removed: a*"}));
}

TEST_F(DirManipTraceTest, OfAListingThatFails) {
    local_->failCall(Operation::list, 1, {.code = vfs::ioError});
    // A line feed stands in the middle of the record.
    EXPECT_THAT(recordsOf(removeDir, {u"a*"}),
                Contains("512 [[ERROR]]: Exception while removing single/multiple items"));
}

TEST_F(DirManipTraceTest, OfTheLastResort) {
    scratch_.writeFile("a/file");
    local_->failCall(Operation::setWritable, 1, {.code = vfs::permissionDenied});
    local_->failCall(Operation::removeFile, 1, {.code = vfs::permissionDenied});
    EXPECT_THAT(
        recordsOf(removeDir, {u"a", u"s"}),
        ElementsAre("4", "1 Directory name after checking for path seperator & sym link: a",
                    "8 Final path to process: a", "8 Absolute path: SCRATCH/a",
                    "1 Value of existenceType: Folder", "4 Recursively trying to remove multiple items.",
                    "4 Value of fileOrFolder: file://SCRATCH/a/file, isFile? true",
                    "4 value of fileObject: file://SCRATCH/a/file", "4 Setting fileObject writable to True",
                    StartsWith("16 Exception caught: "), StartsWith("std::exception::what: "),
                    StartsWith("512 Permission is denied"), "4 Setting vfsFolder writable to True.",
                    StartsWith("512 The folder "), "8 Recursively removing folder.",
                    "4 Recursively removing folder",
                    "4 Recursively removing rootFolder and all subfolders from KORVEX path",
                    "4 Exiting the rmdir function!!!"));
}

TEST_F(DirManipTraceTest, WithoutItNothingIsWrittenAndNoLockIsTaken) {
    auto held = runtime::log::diagnosticSource().holdOpening();
    std::promise<bool> made;
    std::future<bool> answer = made.get_future();
    std::thread command([&] { made.set_value(mkdir({u"a"}) == success()); });
    // A command that waited for the lock would never answer.
    const std::future_status status = answer.wait_for(std::chrono::seconds(60));
    held.unlock();
    command.join();
    ASSERT_EQ(status, std::future_status::ready);
    EXPECT_TRUE(answer.get());
    EXPECT_EQ(foundation::log::detail::indent_attribute::depth(), 0);
}

}  // namespace
}  // namespace korvex::filemanip::tests
