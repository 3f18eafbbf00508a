// Expressions, indexing, concatenation and host functions, seen through what they show.
#include <gmock/gmock.h>

#include <chrono>

#include "tests/unit/host/host_fixture.h"

namespace korvex::tests {
namespace {

class Evaluation : public testing::Test {
protected:
    std::string show(std::string text) { return host.show(std::move(text)); }
    HostSession host;
};

TEST_F(Evaluation, LiteralsHaveTheirClassAndSize) {
    EXPECT_EQ(show("class('a')"), "    char");
    EXPECT_EQ(show("class(\"a\")"), "    string");
    EXPECT_EQ(show("class(1)"), "    double");
    EXPECT_EQ(show("class(true)"), "    logical");
    EXPECT_EQ(show("class({})"), "    cell");
    EXPECT_EQ(show("class(missing)"), "    string");
    EXPECT_EQ(show("size('')"), "    0    0");
    EXPECT_EQ(show("size(\"\")"), "    1    1");
    EXPECT_EQ(show("size([])"), "    0    0");
}

TEST_F(Evaluation, BlanksInsideOfBracketsSeparate) {
    EXPECT_EQ(show("[1 -1]"), "    1    -1");
    EXPECT_EQ(show("x = 5; size([x (1)])"), "    1    2");
    EXPECT_EQ(show("x = 5; size([x(1)])"), "    1    1");
    EXPECT_EQ(show("size({'a' 'b'})"), "    1    2");
    EXPECT_EQ(show("[numel( {1, 2} ) 3]"), "    2    3");
    EXPECT_EQ(show("x = 5; x (1)"), "    5");
}

TEST_F(Evaluation, ThereIsNoArithmetic) {
    for (const char* text : {"1 + 2", "[1+2]", "[1 - 2]", "2*3", "-'a'", "- 1", "x = 1 - 1"}) {
        EXPECT_EQ(show(text), "KORVEX:host:syntax") << text;
    }
    EXPECT_EQ(show("-Inf"), "    -Inf");
}

TEST_F(Evaluation, ComparisonsGoElementByElementAndASingleElementGoesWithAll) {
    EXPECT_EQ(show("[1 2 3] == [1 5 3]"), "    1    0    1");
    EXPECT_EQ(show("2 >= [1; 2; 3]"), "    1\n    1\n    0");
    EXPECT_EQ(show("class('a' < 98)"), "    logical");
    EXPECT_EQ(show("[\"a\" missing \"b\"] ~= 'a'"), "    0    1    1");
    EXPECT_EQ(show("size(zeros(0, 3) == 1)"), "    0    3");
    EXPECT_EQ(show("size(reshape([1 2 3 4], 1, 2, 2) < 3)"), "    1    2    2");
}

TEST_F(Evaluation, WhatCannotBeComparedIsRefused) {
    for (const char* text : {"[1 2] == [1 2 3]", "[1 2] == [1; 2]", "'ab' == 'abc'",
                             "[\"a\" \"b\"] == [\"a\"; \"b\"]", "strcmp({'a', 'b'}, [\"a\" \"b\" \"c\"])"}) {
        EXPECT_EQ(show(text), "KORVEX:host:differentSizes") << text;
    }
    for (const char* text : {"\"a\" < \"b\"", "\"a\" == 1", "{1} == 1", "struct() == struct()", "~\"a\"",
                             "~{1}", "~NaN", "\"a\" == ['a'; 'b']"}) {
        EXPECT_EQ(show(text), "KORVEX:host:badOperand") << text;
    }
    for (const char* text : {"\"a\" && 1", "1 && {}", "0 || NaN", "0 || struct()"}) {
        EXPECT_EQ(show(text), "KORVEX:host:badCondition") << text;
    }
}

TEST_F(Evaluation, TextsAreTheSameWhateverTheirClass) {
    EXPECT_EQ(show("strcmp({'a', \"a\", 1, {}, missing}, 'a')"), "    1    1    0    0    0");
    EXPECT_EQ(show("strcmp('', char(zeros(1, 0)))"), "    1");
    EXPECT_EQ(show("strcmp(['ab'; 'cd'], 'abcd')"), "    0");
    EXPECT_EQ(show("size(strcmp({}, 'a'))"), "    0    0");
    EXPECT_EQ(show("strcmp({'a'}, {'a', 'b'})"), "    1    0");
}

TEST_F(Evaluation, TheRightSideIsLookedAtOnlyWhereTheLeftLeavesItOpen) {
    EXPECT_EQ(show("false && nothing"), "    0");
    EXPECT_EQ(show("true || nothing"), "    1");
    EXPECT_EQ(show("true && nothing"), "KORVEX:UndefinedFunction");
    EXPECT_EQ(show("false || true && nothing"), "KORVEX:UndefinedFunction");
}

TEST_F(Evaluation, OperatorsBindInTheirOrder) {
    EXPECT_EQ(show("~1 == 0"), "    1");
    EXPECT_EQ(show("3 > 2 > 1"), "    0");
    EXPECT_EQ(show("1 || 1 && 0"), "    1");
    EXPECT_EQ(show("(1 || 1) && 0"), "    0");
    EXPECT_EQ(show("[1 == 1 ~0 -1 < 0]"), "    1    1    1");
}

TEST_F(Evaluation, AHundredThousandOperatorsTakeNoDeepStack) {
    std::string chain = "1";
    for (int count = 0; count < 100000; ++count)
        chain += " == 1";
    EXPECT_EQ(show(chain), "    1");
    EXPECT_EQ(show(std::string(100000, '~') + "3"), "    1");
    EXPECT_EQ(show(std::string(100001, '~') + "3"), "    0");
}

TEST_F(Evaluation, AVariableHidesAConstantBehindASignToo) {
    EXPECT_EQ(show("NaN = 5; -NaN"), "    -5");
    EXPECT_EQ(show("Inf = {}; -Inf"), "KORVEX:host:badOperand");
    EXPECT_EQ(show("clear NaN Inf\n[-NaN +Inf -Inf]"), "    NaN    Inf    -Inf");
}

TEST_F(Evaluation, ErrorsOfTheUsersOwnHaveTheirIdentifier) {
    EXPECT_EQ(show("error('A:b:c-d_1', 'text')"), "A:b:c-d_1");
    EXPECT_EQ(show("error('text')"), "KORVEX:host:userError");
    for (const char* text :
         {"error('', 'x')", "error('A', 'x')", "error('A:', 'x')", "error(':b', 'x')", "error('A: b', 'x')",
          "error('A::b', 'x')", "error(1, 'x')", "error('A:b', 1)"}) {
        EXPECT_EQ(show(text), "KORVEX:host:badArgument") << text;
    }
}

TEST_F(Evaluation, OnlyWholeVariablesAreSet) {
    EXPECT_EQ(show("x = 1; x(1) = 2"), "KORVEX:host:syntax");
    EXPECT_EQ(show("x"), "    1");
}

TEST_F(Evaluation, MatricesJoinByRowsAndColumns) {
    EXPECT_EQ(show("[[1 2]; [3 4]]"), "    1    2\n    3    4");
    EXPECT_EQ(show("['ab' 'c'; 'def']"), "    abc\n    def");
    EXPECT_EQ(show("[[] 1 []]"), "    1");
    EXPECT_EQ(show("['' \"a\"]"), "    \"\"    \"a\"");
    EXPECT_EQ(show("[{1} {'a' 2}]"), "    {[1]}    {'a'}    {[2]}");
    EXPECT_EQ(show("class([true 2])"), "    double");
    EXPECT_EQ(show("size([struct() struct()])"), "    1    2");
}

TEST_F(Evaluation, ACommaInFrontOfARowsEndChangesNothing) {
    EXPECT_EQ(show("[1, 2,\n 3, 4,]"), "    1    2\n    3    4");
    EXPECT_EQ(show("{'a', ; 'b'}"), "    {'a'}\n    {'b'}");
    EXPECT_EQ(show("[1, 2, ...\n 3]"), "    1    2    3");
    EXPECT_EQ(show("[, 1]"), "KORVEX:host:syntax");
    EXPECT_EQ(show("[1,, 2]"), "KORVEX:host:syntax");
}

TEST_F(Evaluation, WhatDoesNotFitTogetherIsRefused) {
    for (const char* text : {"['ab'; 'c']", "[1 2; 3]", "{1 2; 3}", "[[1; 2] 3]", "['a' 1]", "[{1} 'a']",
                             "[\"a\" ['b'; 'c']]", "[ones(1, 1, 2) 1]"}) {
        EXPECT_EQ(show(text), "KORVEX:host:badConcatenation") << text;
    }
}

TEST_F(Evaluation, ElementsAreFoundByOneIndexOrSeveral) {
    host.run("x = [1 2; 3 4]; p = reshape([1 2 3 4 5 6 7 8], 2, 2, 2);");
    EXPECT_EQ(show("x(2)"), "    3");
    EXPECT_EQ(show("x(1, 2)"), "    2");
    EXPECT_EQ(show("p(2, 1, 2)"), "    6");
    EXPECT_EQ(show("p(2, 3)"), "    6");
    EXPECT_EQ(show("x(2, 2, 1)"), "    4");
    EXPECT_EQ(show("x()"), "    1    2\n    3    4");
}

TEST_F(Evaluation, WrongIndexesAreRefused) {
    host.run("x = [1 2; 3 4]; c = {1};");
    for (const char* text : {"x(5)", "x(3, 1)", "x(1, 3)", "x(1, 1, 2)", "c{2}", "x(1e300)", "x(Inf)"}) {
        EXPECT_EQ(show(text), "KORVEX:host:indexOutOfRange") << text;
    }
    for (const char* text :
         {"x(0)", "x(-1)", "x(1.5)", "x(NaN)", "x('a')", "x(true)", "x([1 2])", "x{1}", "c{}"}) {
        EXPECT_EQ(show(text), "KORVEX:host:badIndex") << text;
    }
}

TEST_F(Evaluation, ACellGivesElementsAsCellsAndContentsAsTheyAre) {
    host.run("c = {'a', {2}};");
    EXPECT_EQ(show("class(c(1))"), "    cell");
    EXPECT_EQ(show("c{1}"), "    a");
    EXPECT_EQ(show("c{2}{1}"), "    2");
    EXPECT_EQ(show("c = cell(1); size(c{1})"), "    0    0");
}

TEST_F(Evaluation, FieldsOfWhatHasNoneAreRefused) {
    EXPECT_EQ(show("x = 1; x.name"), "KORVEX:host:noSuchField");
    EXPECT_EQ(show("s = struct(); s.name"), "KORVEX:host:noSuchField");
}

TEST_F(Evaluation, UnknownNamesAreUndefined) {
    EXPECT_EQ(show("nothing"), "KORVEX:UndefinedFunction");
    EXPECT_EQ(show("nothing(1)"), "KORVEX:UndefinedFunction");
    EXPECT_EQ(show("nothing.field"), "KORVEX:UndefinedFunction");
    EXPECT_EQ(show("numel(nothing)"), "KORVEX:UndefinedFunction");
}

TEST_F(Evaluation, AVariableHidesAFunction) {
    EXPECT_EQ(show("numel = 7; numel"), "    7");
    EXPECT_EQ(show("clear numel\nnumel('ab')"), "    2");
}

TEST_F(Evaluation, SizesThatNoMemoryHoldsAreRefusedAtOnce) {
    for (const char* text : {"zeros(1e9, 1e9)", "ones(1e5, 1e5)", "cell(1e300)", "strings(1e9, 1)",
                             "zeros(Inf)", "repmat('a', 1e9, 1e9)", "repmat({}, 1e18, 1e18)",
                             "zeros(0, 1e15)", "repmat(zeros(0, 2), 1, 9e15)"}) {
        const std::string shown = show(text);
        EXPECT_TRUE(shown == "KORVEX:host:arrayTooLarge" || shown == "    0x0 cell") << text << ": " << shown;
    }
}

TEST_F(Evaluation, SizesMustBeWholeNumbersFromZero) {
    for (const char* text : {"zeros(-1)", "zeros(1.5)", "zeros(NaN)", "zeros('a', 1)", "zeros({1})",
                             "cell([])", "repmat(1, -1, 1)", "reshape([1 2], -1, -2)", "zeros(1, [1 2])"}) {
        EXPECT_EQ(show(text), "KORVEX:host:badArgument") << text;
    }
}

TEST_F(Evaluation, AMillionElementsTakeNoTime) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(show("x = repmat({'a'}, 1000, 1000); size(x)"), "    1000    1000");
    EXPECT_EQ(show("x{1000000}"), "    a");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
}

TEST_F(Evaluation, RepeatedElementsOfACellAreShared) {
    show("x = repmat({'a'}, 10, 10)");
    const kxArray* cell = host.presenter.results.back().get();
    EXPECT_EQ(kxGetCell(cell, 0), kxGetCell(cell, 99));
}

TEST_F(Evaluation, CodeUnitsGoThereAndBack) {
    EXPECT_EQ(show("double(char(0, 55296, 65535))"), "    0    55296    65535");
    EXPECT_EQ(show("numel(strcat(char(0), 'a '))"), "    3");
    EXPECT_EQ(show("char(65536)"), "KORVEX:host:badArgument");
    EXPECT_EQ(show("char({1})"), "KORVEX:host:badArgument");
}

TEST_F(Evaluation, DeeplyNestedCellsFromManyStatementsAreShown) {
    std::string text = "x = {1};\n";
    for (int level = 0; level < 2000; ++level)
        text += "x = {x};\n";
    EXPECT_EQ(show(text + "x"), "    {1x1 cell}");
}

}  // namespace
}  // namespace korvex::tests
