// `delete`: which arguments are names, options and graphics handles, and in which order they are taken.
#include <cmath>
#include <limits>

#include "runtime/interpreter/functions.h"
#include "tests/unit/filemanip/delete/delete_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* graphicsFunction = "korvex.graphics.internal.hgdelete";
constexpr const char* noSingleText = "KORVEX:string:MustBeSingleString";
constexpr const char* badOption = "KORVEX:io:common:validation:InternalError";

/// The interpreter's function for graphics, which remembers what it was called with.
class DeleteArgumentsTest : public DeleteTest {
protected:
    DeleteArgumentsTest() {
        runtime::interpreter::registerFunction(
            graphicsFunction, [this](int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
                EXPECT_EQ(nlhs, 0);
                ASSERT_EQ(nrhs, 1);
                handles_.push_back(kxGetScalar(prhs[0]));
                leftAtCall_.push_back(left());
                plhs[0] = kxCreateDoubleScalar(1);
            });
    }
    ~DeleteArgumentsTest() override { runtime::interpreter::registerFunction(graphicsFunction, {}); }

    std::vector<double> handles_;
    std::vector<Names> leftAtCall_;
};

TEST_F(DeleteArgumentsTest, NeedsOneAndHasNoOutput) {
    EXPECT_EQ(outcomeOf({}).errorIdentifier, "KORVEX:minrhs");
    EXPECT_EQ(outcomeOf({}, 1).errorIdentifier, "KORVEX:maxlhs");
    make({"a"});
    std::vector<Array> arguments;
    arguments.push_back(text(u"a"));
    EXPECT_EQ(outcomeOf(arguments, 1).errorIdentifier, "KORVEX:maxlhs");
    EXPECT_EQ(left(), Names{"a"});
    const Outcome outcome = outcomeOf(arguments);
    EXPECT_EQ(outcome.outputs[0], nullptr);
    EXPECT_EQ(left(), Names{});
}

TEST_F(DeleteArgumentsTest, TextsOfBothKindsAreNames) {
    make({"a", "b", "c"});
    EXPECT_EQ(outcomeOfArrays(text(u"a"), string(u"b")).errorIdentifier, "");
    EXPECT_EQ(left(), Names{"c"});
    EXPECT_THAT(environment_.takeWarnings(), IsEmpty());
}

TEST_F(DeleteArgumentsTest, AnyNumberIsTaken) {
    std::vector<Array> arguments;
    for (int i = 0; i < 500; ++i) {
        const std::string name = "f" + std::to_string(i);
        make({name});
        arguments.push_back(text(runtime::text::fromBytes(name)));
    }
    EXPECT_EQ(outcomeOf(arguments).errorIdentifier, "");
    EXPECT_EQ(left(), Names{});
}

TEST_F(DeleteArgumentsTest, WhatIsNoSingleTextIsAnErrorBehindWhichNothingHappens) {
    const auto refused = [this](Array wrong) {
        make({"a", "b"});
        const Outcome outcome = outcomeOfArrays(text(u"a"), std::move(wrong), text(u"b"));
        EXPECT_EQ(outcome.errorIdentifier, noSingleText);
        EXPECT_EQ(outcome.catalogEntry, noSingleText);
        EXPECT_THAT(outcome.errorArguments, ElementsAre(u"The name"));
        EXPECT_EQ(left(), Names{"b"}) << "names in front are gone";
    };
    refused(cell({1, 1}, text(u"b")));
    refused(cell({0, 0}));
    refused(missing());
    refused(strings({1, 2}, {u"b", u"b"}));
    refused(strings({0, 0}, {}));
    refused(characters({2, 2}));
    refused(characters({0, 3}));
    refused(logical(true));
    refused(Array(kxCreateStructMatrix(1, 1, 0, nullptr)));
}

TEST_F(DeleteArgumentsTest, NumbersGoToTheGraphicsInTheirPlace) {
    make({"a", "b"});
    EXPECT_EQ(outcomeOfArrays(text(u"a"), number(42), text(u"b"), number(-1.5)).errorIdentifier, "");
    EXPECT_THAT(handles_, ElementsAre(42, -1.5));
    EXPECT_THAT(leftAtCall_, ElementsAre(Names{"b"}, Names{}));
    EXPECT_THAT(environment_.takeEvents(),
                testing::IsSupersetOf({std::string("functionCalled ") + graphicsFunction}));
}

TEST_F(DeleteArgumentsTest, EmptyNumberIsPassedOver) {
    make({"a"});
    EXPECT_EQ(
        outcomeOfArrays(Array(kxCreateDoubleMatrix(0, 0)), Array(kxCreateDoubleMatrix(0, 3)), text(u"a"))
            .errorIdentifier,
        "");
    EXPECT_THAT(handles_, IsEmpty());
    EXPECT_EQ(left(), Names{});
}

TEST_F(DeleteArgumentsTest, ArrayOfHandlesIsOneCall) {
    Array handles(kxCreateDoubleMatrix(1, 3));
    kxGetDoubles(handles.get())[0] = 7;
    EXPECT_EQ(outcomeOfArrays(std::move(handles)).errorIdentifier, "");
    EXPECT_THAT(handles_, ElementsAre(7));
}

TEST_F(DeleteArgumentsTest, ErrorOfTheGraphicsPassesThroughAndEndsTheCommand) {
    make({"a"});
    runtime::interpreter::registerFunction(graphicsFunction, [](int, kxArray*[], int, const kxArray*[]) {
        throw std::runtime_error("no such object");
    });
    EXPECT_THROW(outcomeOfArrays(number(1), text(u"a")), std::runtime_error);
    runtime::interpreter::registerFunction(graphicsFunction, {});
    EXPECT_EQ(outcomeOfArrays(number(1), text(u"a")).errorIdentifier, "KORVEX:UndefinedFunction");
    EXPECT_EQ(left(), Names{"a"});
}

// ----------------------------------------------------------------------------------------- the option pair

class DeleteOptionTest : public DeleteArgumentsTest {
protected:
    DeleteOptionTest() {
        make({"target"});
        makeLink("target", "link");
    }

    /// What `delete('link', 'resolvesymboliclinks', value)` leaves.
    Names leftWith(Array value, const std::u16string& word = u"resolvesymboliclinks") const {
        make({"target"});
        if (!left().contains("link")) makeLink("target", "link");
        EXPECT_EQ(outcomeOfArrays(text(u"link"), text(word), std::move(value)).errorIdentifier, "");
        return left();
    }
    /// The text of the error of a value that is refused.
    std::u16string refusalOf(Array value) const {
        const Outcome outcome =
            outcomeOfArrays(text(u"link"), text(u"resolvesymboliclinks"), std::move(value));
        EXPECT_EQ(outcome.errorIdentifier, badOption);
        EXPECT_EQ(left(), (Names{"link", "target"})) << "nothing was deleted";
        const std::string expected = "Expected ";
        const std::size_t begin = outcome.errorText.find(expected);
        const std::size_t end = outcome.errorText.find(" scalar", begin);
        return end == std::string::npos
                   ? u"another text"
                   : runtime::text::fromBytes(outcome.errorText.substr(begin, end + 7 - begin));
    }

    const Names linkIsLeft_{"link"};
    const Names targetIsLeft_{"target"};
};

TEST_F(DeleteOptionTest, TrueAndNumbersAboveZeroResolveLinks) {
    EXPECT_EQ(leftWith(logical(true)), linkIsLeft_);
    for (const double value : {1.0, 0.5, 1e-300, 42.0, std::numeric_limits<double>::infinity()})
        EXPECT_EQ(leftWith(number(value)), linkIsLeft_) << value;
}

TEST_F(DeleteOptionTest, FalseZeroNegativeNumbersAndNaNDoNot) {
    EXPECT_EQ(leftWith(logical(false)), targetIsLeft_);
    for (const double value : {0.0, -0.0, -1.0, std::nan(""), -std::numeric_limits<double>::infinity()})
        EXPECT_EQ(leftWith(number(value)), targetIsLeft_) << value;
}

TEST_F(DeleteOptionTest, OtherValuesAreRefusedBeforeAnythingIsDeleted) {
    EXPECT_EQ(refusalOf(Array(kxCreateDoubleMatrix(1, 2))), u"Expected double scalar");
    EXPECT_EQ(refusalOf(Array(kxCreateDoubleMatrix(0, 0))), u"Expected double scalar");
    EXPECT_EQ(refusalOf(text(u"true")), u"Expected logical scalar");
    EXPECT_EQ(refusalOf(text(u"")), u"Expected logical scalar");
    EXPECT_EQ(refusalOf(string(u"on")), u"Expected logical scalar");
    EXPECT_EQ(refusalOf(missing()), u"Expected logical scalar");
    EXPECT_EQ(refusalOf(cell({1, 1}, logical(true))), u"Expected logical scalar");
    constexpr std::size_t two[] = {1, 2};
    EXPECT_EQ(refusalOf(Array(kxCreateLogicalArray(two))), u"Expected logical scalar");
}

TEST_F(DeleteOptionTest, TheWordIsWholeAndIgnoresCase) {
    EXPECT_EQ(leftWith(logical(true), u"ResolveSymbolicLinks"), linkIsLeft_);
    make({"target", "resolvesymboliclink"});
    const Outcome outcome =
        outcomeOfArrays(text(u"resolvesymboliclink"), text(u"resolvesymboliclink"), logical(true));
    EXPECT_EQ(outcome.errorIdentifier, noSingleText) << "a shortened word is a name";
    EXPECT_EQ(left(), (Names{"link", "target"}));
}

TEST_F(DeleteOptionTest, TheWordMayBeAString) {
    EXPECT_EQ(
        outcomeOfArrays(string(u"link"), string(u"resolvesymboliclinks"), logical(true)).errorIdentifier, "");
    EXPECT_EQ(left(), linkIsLeft_);
}

TEST_F(DeleteOptionTest, WithoutANameInFrontThePairIsTwoNames) {
    make({"resolvesymboliclinks"});
    EXPECT_EQ(outcomeOfArrays(text(u"resolvesymboliclinks"), logical(true)).errorIdentifier, noSingleText);
    EXPECT_EQ(left(), (Names{"link", "target"}));
}

TEST_F(DeleteOptionTest, ThePairCountsAtTheEndOnly) {
    make({"resolvesymboliclinks", "true", "other"});
    EXPECT_THAT(deleteNames({u"link", u"resolvesymboliclinks", u"true", u"other"}), IsEmpty());
    EXPECT_EQ(left(), targetIsLeft_);
}

TEST_F(DeleteOptionTest, SecondPairInFrontIsNamesAndFails) {
    make({"resolvesymboliclinks"});
    const Outcome outcome = outcomeOfArrays(text(u"link"), text(u"resolvesymboliclinks"), logical(true),
                                            text(u"resolvesymboliclinks"), logical(false));
    EXPECT_EQ(outcome.errorIdentifier, noSingleText);
    EXPECT_EQ(left(), targetIsLeft_);
}

TEST_F(DeleteOptionTest, ThreeOtherTextsAreThreeNames) {
    make({"a", "b", "c"});
    EXPECT_THAT(deleteNames({u"a", u"b", u"c"}), IsEmpty());
    EXPECT_EQ(left(), (Names{"link", "target"}));
}

TEST_F(DeleteOptionTest, NumberBeforeTheLastIsAHandleAndNoOption) {
    EXPECT_EQ(outcomeOfArrays(text(u"link"), number(3), number(4)).errorIdentifier, "");
    EXPECT_THAT(handles_, ElementsAre(3, 4));
    EXPECT_EQ(left(), targetIsLeft_);
}

TEST_F(DeleteOptionTest, HandleMayStandInFrontOfThePair) {
    EXPECT_EQ(outcomeOfArrays(number(3), text(u"resolvesymboliclinks"), logical(true)).errorIdentifier, "");
    EXPECT_THAT(handles_, ElementsAre(3));
}

}  // namespace
}  // namespace korvex::filemanip::tests
