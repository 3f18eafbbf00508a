// The entries of `mkdir` and `rmdir`: which arguments they take, in which order they judge them, and what
// goes to the outputs. (Argument counts: argument_counts_test.cpp.)
#include <limits>

#include "io/filesystem/filemanip/DirManip.h"
#include "tests/unit/filemanip/dir_manip/dir_manip_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DirManipEntriesTest : public DirManipTest {
protected:
    template <class... Arrays>
    static Outcome call(Entry entry, int nlhs, Arrays... arguments) {
        std::vector<Array> arrays;
        (arrays.push_back(std::move(arguments)), ...);
        return outcomeOf(entry, nlhs, arrays);
    }
    template <class... Arrays>
    static CommandResult resultOf(Entry entry, Arrays... arguments) {
        std::vector<Array> arrays;
        (arrays.push_back(std::move(arguments)), ...);
        return DirManipTest::resultOf(entry, arrays);
    }

    static Array logical(bool value) { return Array(kxCreateLogicalScalar(value)); }
    static Array linkOption() { return text(u"resolvesymboliclinks"); }

    /// Whether `rmdir(link, 'resolvesymboliclinks', value)` follows a link.
    bool isResolvedBy(Array value) const {
        scratch_.makeFolder("target");
        if (!isThere("link")) makeLink("target", "link");
        resultOf(removeDir, text(u"link"), linkOption(), std::move(value));
        return !isThere("target");
    }
    static std::string refusalOfLinkValue(Array value) {
        const Outcome outcome = call(removeDir, 3, text(u"a"), linkOption(), std::move(value));
        EXPECT_EQ(outcome.errorIdentifier, "KORVEX:io:common:validation:InternalError");
        return outcome.errorText;
    }
    static std::string internalError(const char* what) {
        return runtime::text::toDisplayBytes(
            textOf(KORVEX::io::common::validation::InternalError(std::string(what))));
    }
};

// ---- empty names

TEST_F(DirManipEntriesTest, EmptyFirstNameOfMkdirIsASuccessWithANote) {
    const CommandResult expected = noted(KORVEX::MKDIR::EmptyDirectoryName());
    EXPECT_EQ(resultOf(makeDir, text(u"")), expected);
    EXPECT_EQ(resultOf(makeDir, string(u"")), expected);
    EXPECT_EQ(resultOf(makeDir, characters({1, 0})), expected);
    EXPECT_EQ(resultOf(makeDir, Array(kxCreateDoubleMatrix(0, 0))), expected);
    EXPECT_EQ(resultOf(makeDir, cell({0, 0})), expected);
    EXPECT_EQ(resultOf(makeDir, strings({0, 3}, {})), expected);
    EXPECT_EQ(resultOf(makeDir, characters({0, 3})), expected);
    EXPECT_THAT(warnings_, IsEmpty());
    EXPECT_TRUE(fs::is_empty(scratch_.path()));
}

TEST_F(DirManipEntriesTest, EmptyFirstNameOfMkdirWarnsWhereNoMessageIsAskedFor) {
    const Outcome without = call(makeDir, 0, text(u""));
    EXPECT_EQ(without.errorIdentifier, "");
    EXPECT_EQ(without.outputs[0], nullptr);
    const Outcome withStatus = call(makeDir, 1, text(u""));
    EXPECT_THAT(logicals(withStatus.outputs[0]), ElementsAre(true));
    EXPECT_THAT(warnings_, ElementsAre("KORVEX:MKDIR:EmptyDirectoryName", "KORVEX:MKDIR:EmptyDirectoryName"));
    call(makeDir, 2, text(u""));
    EXPECT_EQ(warnings_.size(), 2U);
}

TEST_F(DirManipEntriesTest, EmptyFirstNameIsSeenBeforeTheSecondIsLookedAt) {
    EXPECT_EQ(resultOf(makeDir, text(u""), number(1)), noted(KORVEX::MKDIR::EmptyDirectoryName()));
}

TEST_F(DirManipEntriesTest, EmptySecondNameOfMkdirIsIllegal) {
    const CommandResult expected = failure(KORVEX::FileManip::IllegalName(), "KORVEX:MKDIR:IllegalName");
    EXPECT_EQ(resultOf(makeDir, text(u"a"), text(u"")), expected);
    EXPECT_EQ(resultOf(makeDir, text(u"a"), string(u"")), expected);
    EXPECT_FALSE(isThere("a"));
    EXPECT_EQ(call(makeDir, 0, text(u"a"), text(u"")).errorIdentifier, "KORVEX:MKDIR:IllegalName");
}

TEST_F(DirManipEntriesTest, AnyEmptyArgumentOfRmdirIsIllegal) {
    scratch_.makeFolder("a");
    const CommandResult expected = failure(KORVEX::FileManip::IllegalName(), "KORVEX:RMDIR:IllegalName");
    EXPECT_EQ(resultOf(removeDir, text(u"")), expected);
    EXPECT_EQ(resultOf(removeDir, text(u"a"), text(u"")), expected);
    EXPECT_EQ(resultOf(removeDir, text(u"a"), text(u"s"), string(u"")), expected);
    EXPECT_TRUE(isThere("a"));
}

// ---- what is no name

TEST_F(DirManipEntriesTest, WhatIsNotOneTextIsRaised) {
    for (const Entry entry : {makeDir, removeDir}) {
        EXPECT_EQ(call(entry, 3, missing()).errorIdentifier, "KORVEX:string:MissingNotSupported");
        EXPECT_EQ(call(entry, 3, number(1)).errorIdentifier, "KORVEX:string");
        EXPECT_EQ(call(entry, 3, logical(true)).errorIdentifier, "KORVEX:string");
        EXPECT_EQ(call(entry, 3, characters({2, 3})).errorIdentifier, "KORVEX:string");
        EXPECT_EQ(call(entry, 3, strings({1, 2}, {u"a", u"b"})).errorIdentifier, "KORVEX:string");
        EXPECT_EQ(call(entry, 3, cell({1, 1}, text(u"a"))).errorIdentifier, "KORVEX:string");
        EXPECT_EQ(call(entry, 3, text(u"a"), number(1)).errorIdentifier, "KORVEX:string");
        EXPECT_EQ(call(entry, 3, text(u"a"), missing()).errorIdentifier, "KORVEX:string:MissingNotSupported");
    }
    EXPECT_TRUE(fs::is_empty(scratch_.path()));
}

TEST_F(DirManipEntriesTest, StringsAndCharactersNameAlike) {
    EXPECT_EQ(resultOf(makeDir, string(u"a"), text(u"b")), success());
    EXPECT_EQ(resultOf(removeDir, string(u"a"), string(u"s")), success());
    EXPECT_TRUE(fs::is_empty(scratch_.path()));
}

// ---- mkdir's outputs

TEST_F(DirManipEntriesTest, ExistingFolderWarnsWhereNoMessageIsAskedFor) {
    scratch_.makeFolder("a");
    const Outcome without = call(makeDir, 0, text(u"a"));
    EXPECT_EQ(without.errorIdentifier, "");
    EXPECT_EQ(without.outputs[0], nullptr);
    EXPECT_THAT(logicals(call(makeDir, 1, text(u"a")).outputs[0]), ElementsAre(true));
    EXPECT_THAT(warnings_, ElementsAre("KORVEX:MKDIR:DirectoryExists", "KORVEX:MKDIR:DirectoryExists"));
    const Outcome withMessage = call(makeDir, 2, text(u"a"));
    EXPECT_THAT(logicals(withMessage.outputs[0]), ElementsAre(true));
    EXPECT_EQ(charsOf(withMessage.outputs[1]), textOf(KORVEX::MKDIR::DirectoryExists()));
    EXPECT_EQ(warnings_.size(), 2U);
}

TEST_F(DirManipEntriesTest, FailureIsRaisedWhereNoOutputIsAskedFor) {
    scratch_.writeFile("a");
    EXPECT_EQ(call(makeDir, 0, text(u"a")).errorIdentifier, "KORVEX:MKDIR:ExistsAsFile");
    EXPECT_EQ(call(removeDir, 0, text(u"a")).errorIdentifier, "KORVEX:RMDIR:DirectoryNotRemoved");
    EXPECT_THAT(logicals(call(removeDir, 1, text(u"a")).outputs[0]), ElementsAre(false));
    EXPECT_THAT(warnings_, IsEmpty());
}

// ---- rmdir's options

TEST_F(DirManipEntriesTest, RecursionIsOneLetterInEitherCase) {
    for (const std::u16string option : {u"s", u"S"}) {
        scratch_.writeFile("a/file");
        EXPECT_EQ(rmdir({u"a", option}), success());
    }
}

TEST_F(DirManipEntriesTest, UnknownOptionIsRaisedByName) {
    scratch_.makeFolder("a");
    for (const std::u16string option : {u"x", u"ss", u"resolvesymboliclink"}) {
        const Outcome outcome = call(removeDir, 3, text(u"a"), text(option));
        EXPECT_EQ(outcome.errorIdentifier, "KORVEX:RMDIR:InvalidOption");
        EXPECT_THAT(outcome.errorArguments, ElementsAre(option));
    }
    EXPECT_TRUE(isThere("a"));
}

TEST_F(DirManipEntriesTest, OptionThatComesTwiceIsRaised) {
    scratch_.makeFolder("a");
    EXPECT_THAT(call(removeDir, 3, text(u"a"), text(u"s"), text(u"s")).errorArguments, ElementsAre(u"s"));
    EXPECT_THAT(call(removeDir, 3, text(u"a"), text(u"s"), text(u"x")).errorArguments, ElementsAre(u"x"));
    EXPECT_TRUE(isThere("a"));
}

TEST_F(DirManipEntriesTest, OfTwoUnknownOptionsTheFirstIsRaised) {
    scratch_.makeFolder("a");
    EXPECT_THAT(call(removeDir, 3, text(u"a"), text(u"s"), text(u"x"), text(u"y")).errorArguments,
                ElementsAre(u"x"));
    EXPECT_TRUE(isThere("a"));
}

TEST_F(DirManipEntriesTest, LaterOptionsThanTheSecondAreNeverLookedAt) {
    scratch_.writeFile("target/file");
    makeLink("target", "link");
    RemoveDir engine;
    const auto status = engine.Process({u"link"}, {u"s", u"resolvesymboliclinks", u"junk"});
    EXPECT_EQ(status.code, io::filesystem::core::Status::success);
    EXPECT_FALSE(isThere("target"));
}

TEST_F(DirManipEntriesTest, LinkOptionIsAWholeWordInAnyCase) {
    scratch_.makeFolder("target");
    makeLink("target", "link");
    EXPECT_EQ(resultOf(removeDir, text(u"link"), text(u"ResolveSymbolicLinks"), logical(true)), success());
    EXPECT_FALSE(isThere("target"));
}

TEST_F(DirManipEntriesTest, BothOptionsGoInEitherOrder) {
    makeLink("target", "link");
    scratch_.writeFile("target/file");
    EXPECT_EQ(resultOf(removeDir, text(u"link"), text(u"s"), linkOption(), logical(true)), success());
    scratch_.writeFile("target/file");
    EXPECT_EQ(resultOf(removeDir, text(u"link"), linkOption(), logical(true), text(u"S")), success());
    EXPECT_FALSE(isThere("target"));
}

TEST_F(DirManipEntriesTest, ValueOfTheLinkOptionIsALogicalOrANumberAboveZero) {
    EXPECT_TRUE(isResolvedBy(logical(true)));
    EXPECT_TRUE(isResolvedBy(number(1)));
    EXPECT_TRUE(isResolvedBy(number(0.5)));
    EXPECT_TRUE(isResolvedBy(number(std::numeric_limits<double>::infinity())));
    EXPECT_FALSE(isResolvedBy(logical(false)));
    EXPECT_FALSE(isResolvedBy(number(0)));
    EXPECT_FALSE(isResolvedBy(number(-1)));
    EXPECT_FALSE(isResolvedBy(number(std::numeric_limits<double>::quiet_NaN())));
}

TEST_F(DirManipEntriesTest, LinkOptionThatIsOffLeavesRmdirAsItIs) {
    scratch_.makeFolder("a");
    EXPECT_EQ(resultOf(removeDir, text(u"a"), linkOption(), logical(false)), success());
    EXPECT_FALSE(isThere("a"));
}

TEST_F(DirManipEntriesTest, ValueOfTheLinkOptionMustBeAScalarOfItsKind) {
    scratch_.makeFolder("a");
    EXPECT_EQ(refusalOfLinkValue(Array(kxCreateDoubleMatrix(1, 2))), internalError("Expected double scalar"));
    EXPECT_EQ(refusalOfLinkValue(Array(kxCreateDoubleMatrix(0, 0))), internalError("Expected double scalar"));
    const std::string noLogical = internalError("Expected logical scalar");
    EXPECT_EQ(refusalOfLinkValue(text(u"true")), noLogical);
    EXPECT_EQ(refusalOfLinkValue(text(u"")), noLogical);
    EXPECT_EQ(refusalOfLinkValue(missing()), noLogical);
    EXPECT_EQ(refusalOfLinkValue(cell({1, 1}, logical(true))), noLogical);
    constexpr std::size_t twoLogicals[] = {1, 2};
    EXPECT_EQ(refusalOfLinkValue(Array(kxCreateLogicalArray(twoLogicals))), noLogical);
    EXPECT_TRUE(isThere("a"));
}

TEST_F(DirManipEntriesTest, LinkOptionWithoutAValueIsRaised) {
    scratch_.makeFolder("a");
    const Outcome outcome = call(removeDir, 3, text(u"a"), linkOption());
    EXPECT_EQ(outcome.errorIdentifier, "KORVEX:io:common:validation:InternalError");
    EXPECT_EQ(outcome.errorText, internalError("Expected logical scalar"));
    EXPECT_EQ(call(removeDir, 3, text(u"a"), linkOption(), logical(true), linkOption()).errorIdentifier,
              "KORVEX:io:common:validation:InternalError");
    EXPECT_TRUE(isThere("a"));
}

TEST_F(DirManipEntriesTest, ValueThatIsMissingIsRaisedBeforeAnUnknownOption) {
    scratch_.makeFolder("a");
    EXPECT_EQ(call(removeDir, 3, text(u"a"), text(u"x"), linkOption()).errorIdentifier,
              "KORVEX:io:common:validation:InternalError");
    EXPECT_EQ(call(removeDir, 3, text(u"a"), text(u"x"), linkOption(), logical(true)).errorIdentifier,
              "KORVEX:RMDIR:InvalidOption");
    EXPECT_TRUE(isThere("a"));
}

TEST_F(DirManipEntriesTest, WordOfTheLinkOptionMayNameAFolder) {
    scratch_.makeFolder("resolvesymboliclinks");
    scratch_.makeFolder("s");
    EXPECT_EQ(rmdir({u"resolvesymboliclinks"}), success());
    EXPECT_EQ(rmdir({u"s"}), success());
    EXPECT_TRUE(fs::is_empty(scratch_.path()));
}

// ---- the current folder

TEST_F(DirManipEntriesTest, EachCommandSaysUnderItsOwnWordThatTheCurrentFolderIsGone) {
    scratch_.makeFolder("gone");
    runtime::dispatcher::setCurrentFolderPath(pathOf(u"gone"));
    fs::remove(diskPath("gone"));
    const Outcome made = call(makeDir, 3, text(u"a"));
    EXPECT_EQ(made.errorIdentifier, "KORVEX:MKDIR:cwdIsInvalid");
    EXPECT_EQ(made.catalogEntry, "KORVEX:services:cwdIsInvalid");
    const Outcome removed = call(removeDir, 3, text(u"a"));
    EXPECT_EQ(removed.errorIdentifier, "KORVEX:RMDIR:cwdIsInvalid");
    EXPECT_EQ(removed.catalogEntry, "KORVEX:services:cwdIsInvalid");
    // Whether the name without the separator is a link cannot be told, and is left open.
    EXPECT_EQ(call(removeDir, 3, text(u"a/")).errorIdentifier, "KORVEX:RMDIR:cwdIsInvalid");
    EXPECT_EQ(mkdir({pathOf(u"b")}), success());
}

}  // namespace
}  // namespace korvex::filemanip::tests
