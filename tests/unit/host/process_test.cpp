// The process around the environment.
#include "runtime/process/process.h"

#include <gmock/gmock.h>

#include <csignal>
#include <stdexcept>

#include "runtime/interpreter/interrupts.h"
#include "tests/support/scratch_folder.h"

namespace korvex::runtime::process {
namespace {

using testing::HasSubstr;

struct ShellRun {
    std::string output;
    int status = -1;
};

ShellRun runShell(const std::u16string& command, const std::u16string& folder) {
    ShellRun run;
    run.status = runShellCommand(command, folder, [&](std::string_view bytes) { run.output += bytes; });
    return run;
}

TEST(ShellCommand, RunsInTheFolderWithoutMovingTheProcess) {
    const tests::ScratchFolder scratch;
    const std::filesystem::path before = std::filesystem::current_path();
    EXPECT_EQ(runShell(u"pwd -P", scratch.text()).output, scratch.path().string() + "\n");
    EXPECT_EQ(std::filesystem::current_path(), before);
}

TEST(ShellCommand, GivesBothStreamsAndTheStatus) {
    const tests::ScratchFolder scratch;
    const ShellRun run = runShell(u"echo out; echo err >&2; exit 3", scratch.text());
    EXPECT_EQ(run.output, "out\nerr\n");
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(runShell(u"kill -TERM $$", scratch.text()).status, 128 + 15);
}

TEST(ShellCommand, HasAnEmptyInput) {
    const tests::ScratchFolder scratch;
    EXPECT_EQ(runShell(u"cat; echo done", scratch.text()).output, "done\n");
}

TEST(ShellCommand, TakesNamesOfAnyBytes) {
    const tests::ScratchFolder scratch;
    const std::u16string name = {u'a', 0xDCFF};
    EXPECT_EQ(runShell(u"printf %s " + name, scratch.text()).output, "a\xFF");
}

TEST(ShellCommand, AFolderThatIsNotThereIsAnError) {
    EXPECT_THROW(runShell(u"true", u"/nonexistent-folder"), std::runtime_error);
}

TEST(ShellCommand, AReceiverThatRaisesLeavesNothingBehind) {
    const tests::ScratchFolder scratch;
    EXPECT_THROW(
        runShellCommand(u"yes", scratch.text(), [](std::string_view) { throw std::logic_error("enough"); }),
        std::logic_error);
}

TEST(ReadFile, GivesAllBytes) {
    const tests::ScratchFolder scratch;
    std::string content(200000, 'x');
    content[5] = '\0';
    scratch.writeFile("a", content);
    EXPECT_EQ(readFile(scratch.text() + u"/a"), content);
}

TEST(ReadFile, TellsWhyItCannot) {
    const tests::ScratchFolder scratch;
    EXPECT_THROW(readFile(scratch.text() + u"/nothing"), std::runtime_error);
    EXPECT_THROW(readFile(scratch.text()), std::runtime_error);
    EXPECT_THROW(readFile(std::u16string(u"a\0b", 3)), std::runtime_error);
}

TEST(SharedLibrary, AMissingOneIsNamedInTheError) {
    try {
        SharedLibrary library(u"/nonexistent/libnothing.so");
        FAIL() << "it was loaded";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), HasSubstr("libnothing.so"));
    }
}

TEST(SharedLibrary, FindsExportsByName) {
    SharedLibrary library(u"libc.so.6");
    EXPECT_NE(library.symbol("strlen"), nullptr);
    EXPECT_EQ(library.symbol("no_such_symbol"), nullptr);
    SharedLibrary moved(std::move(library));
    EXPECT_NE(moved.symbol("strlen"), nullptr);
}

TEST(Environment, FoldersAreAbsolute) {
    EXPECT_TRUE(programFolder().starts_with(u'/'));
    EXPECT_FALSE(programFolder().ends_with(u'/'));
    EXPECT_TRUE(defaultConfigurationFolder().ends_with(u"/korvex"));
}

TEST(Environment, AVariableThatIsNotSetIsNothing) {
    EXPECT_TRUE(environmentVariable("PATH").has_value());
    EXPECT_FALSE(environmentVariable("KORVEX_NO_SUCH_VARIABLE").has_value());
}

TEST(InterruptKey, RaisesTheFlagAndNothingElse) {
    handleInterruptKey();
    EXPECT_EQ(std::raise(SIGINT), 0);
    EXPECT_TRUE(interpreter::takeInterrupt());
    EXPECT_FALSE(interpreter::isInterruptPending());
}

TEST(InterruptKey, TwiceIsAsGoodAsOnce) {
    handleInterruptKey();
    EXPECT_EQ(std::raise(SIGINT), 0);
    EXPECT_EQ(std::raise(SIGINT), 0);
    EXPECT_TRUE(interpreter::takeInterrupt());
    EXPECT_FALSE(interpreter::takeInterrupt());
}

}  // namespace
}  // namespace korvex::runtime::process
