// The command line.
#include "host/kwsh/options.h"

#include <gmock/gmock.h>

namespace korvex::host {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(Options, NoneAreAllAtTheirDefaults) {
    const Options options = parseOptions({});
    EXPECT_EQ(options.format, OutputFormat::people);
    EXPECT_FALSE(options.script || options.columns || options.stopsAtFailure);
}

TEST(Options, StatementsKeepTheirOrderAndEveryCharacter) {
    const Options options =
        parseOptions({"-e", "[1, 2]", "-e", "--json", "-e", "", "-e", "-1", "-e", "x = {'a','b'}"});
    EXPECT_THAT(options.statements, ElementsAre("[1, 2]", "--json", "", "-1", "x = {'a','b'}"));
    EXPECT_EQ(options.format, OutputFormat::people);
}

TEST(Options, AScriptMayBeStandardInput) {
    EXPECT_EQ(parseOptions({"-"}).script, "-");
    EXPECT_EQ(parseOptions({"--json", "a b.k"}).script, "a b.k");
}

TEST(Options, FoldersAndColumnsTakeAValue) {
    const Options options = parseOptions({"--cd", "d", "--config=c", "--columns", "120", "--stop-on-error"});
    EXPECT_EQ(options.currentFolder, "d");
    EXPECT_EQ(options.configurationFolder, "c");
    EXPECT_EQ(options.columns, 120U);
    EXPECT_TRUE(options.stopsAtFailure);
}

TEST(Options, TraceTakesAMaskBehindAnEqualsSignOnly) {
    EXPECT_FALSE(parseOptions({}).traceMask);
    EXPECT_EQ(parseOptions({"--trace"}).traceMask, 0xFFFFFFFFU);
    EXPECT_EQ(parseOptions({"--trace=96"}).traceMask, 96U);
    EXPECT_EQ(parseOptions({"--trace=0x60"}).traceMask, 96U);
    EXPECT_EQ(parseOptions({"--trace=0XfFffFFFF"}).traceMask, 0xFFFFFFFFU);
    EXPECT_EQ(parseOptions({"--trace=0"}).traceMask, 0U);
    const Options options = parseOptions({"--trace", "96"});
    EXPECT_EQ(options.traceMask, 0xFFFFFFFFU);
    EXPECT_EQ(options.script, "96");
}

TEST(Options, ColoursAndProgressCanBeChosen) {
    EXPECT_EQ(parseOptions({}).colours, ColourChoice::automatic);
    EXPECT_EQ(parseOptions({"--color=auto"}).colours, ColourChoice::automatic);
    EXPECT_EQ(parseOptions({"--color=always"}).colours, ColourChoice::always);
    EXPECT_EQ(parseOptions({"--color", "never"}).colours, ColourChoice::never);
    EXPECT_FALSE(parseOptions({}).isProgressUnwanted);
    EXPECT_TRUE(parseOptions({"--no-progress"}).isProgressUnwanted);
}

TEST(Options, ATraceFileAloneSwitchesTheTraceOn) {
    const Options alone = parseOptions({"--trace-file", "t.log"});
    EXPECT_EQ(alone.traceFile, "t.log");
    EXPECT_EQ(alone.traceMask, 0xFFFFFFFFU);
    EXPECT_EQ(parseOptions({"--trace-file=t.log", "--trace=8"}).traceMask, 8U);
}

TEST(Options, WrongOnesAreRefused) {
    using Arguments = std::vector<std::string>;
    for (const Arguments& arguments : {Arguments{"--nothing"},
                                       Arguments{"-x"},
                                       Arguments{"a.k", "b.k"},
                                       Arguments{"-e"},
                                       Arguments{"--cd"},
                                       Arguments{"--columns", "0"},
                                       Arguments{"--columns", "-3"},
                                       Arguments{"--columns", "wide"},
                                       Arguments{"--json", "--transcript"},
                                       Arguments{"-e", "x", "a.k"},
                                       Arguments{"--json=yes"},
                                       Arguments{"--trace=all"},
                                       Arguments{"--trace=0x"},
                                       Arguments{"--trace=-1"},
                                       Arguments{"--trace=4294967296"},
                                       Arguments{"--trace=1 2"},
                                       Arguments{"--trace=true"},
                                       Arguments{"--trace-file"},
                                       Arguments{"--color"},
                                       Arguments{"--color=red"},
                                       Arguments{"--color="},
                                       Arguments{"--no-progress=1"}}) {
        EXPECT_THROW(parseOptions(arguments), OptionError) << testing::PrintToString(arguments);
    }
}

std::string refusalOf(std::vector<std::string> arguments) {
    try {
        parseOptions(std::move(arguments));
    } catch (const OptionError& error) {
        return error.what();
    }
    return "taken";
}

TEST(Options, ARefusalSaysWhatTheOptionNeeds) {
    EXPECT_EQ(refusalOf({"--columns"}), "--columns needs a value");
    EXPECT_EQ(refusalOf({"-e"}), "-e needs a value");
    EXPECT_EQ(refusalOf({"-e", "x", "-e", "y", "-e"}), "-e needs a value");
    EXPECT_EQ(refusalOf({"--cd", "a", "--cd", "b"}), "--cd may be given once");
    EXPECT_EQ(refusalOf({"--json=1"}), "--json takes no value");
}

TEST(Options, HelpShowsEveryOptionWithAnExample) {
    const std::string usage = usageText();
    for (const char* option :
         {"FILE.k", "-e", "--json", "--transcript", "--stop-on-error", "--cd", "--config", "--columns",
          "--no-progress", "--color=WHEN", "-  ", "--trace[=MASK]", "--trace-file", "--version", "--help"}) {
        EXPECT_THAT(usage,
                    HasSubstr("  " + std::string(option == std::string("--help") ? "-h,--help" : option)));
    }
    std::size_t examples = 0;
    for (std::size_t at = usage.find("example: "); at != std::string::npos;
         at = usage.find("example: ", at + 1)) {
        ++examples;
    }
    EXPECT_EQ(examples, 15U);
}

}  // namespace
}  // namespace korvex::host
