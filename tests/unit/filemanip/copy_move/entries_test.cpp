// The entries of `copyfile` and `movefile`: counts, the judging of arguments in their order, and outputs.
#include "platform/message_identifiers.h"
#include "runtime/text/encoding.h"
#include "tests/unit/filemanip/copy_move/copy_move_fixture.h"

namespace korvex::filemanip::tests {
namespace {

constexpr const char* missingString = "KORVEX:string:MissingNotSupported";
constexpr const char* notOneText = "KORVEX:string:MustBeSingleString";
constexpr const char* illegalName = "KORVEX:FileManip:IllegalName";

/// "/s/a" with content, an empty folder "/d", both at the settings' prefix.
class EntriesTest : public TransferTest {
protected:
    EntriesTest() {
        put(u"/s/a", "A");
        put(u"/d/");
        source_ = text(path(u"/s/a"));
        destination_ = text(path(u"/d"));
        before_ = tree();
    }

    Outcome callWith(int nlhs, const std::vector<const kxArray*>& arguments) const {
        return call(command().entry, nlhs, arguments);
    }
    std::string identifierOf(int nlhs, const std::vector<const kxArray*>& arguments) const {
        return callWith(nlhs, arguments).errorIdentifier;
    }

    /// The outputs that were set: a truth, then texts.
    static std::vector<std::string> outputsOf(const Outcome& outcome) {
        std::vector<std::string> outputs;
        for (const Array& array : outcome.outputs) {
            if (array == nullptr) continue;
            if (outputs.empty()) {
                outputs.emplace_back(logicals(array)[0] ? "true" : "false");
            } else {
                const std::span<const char16_t> units = kxGetChars(static_cast<const kxArray*>(array.get()));
                outputs.push_back(runtime::text::toDisplayBytes({units.data(), units.size()}));
            }
        }
        return outputs;
    }
    static std::vector<std::string> firstOf(int count, std::vector<std::string> outputs) {
        outputs.resize(static_cast<std::size_t>(count));
        return outputs;
    }

    Array source_;
    Array destination_;
    Tree before_;
};

INSTANTIATE_TEST_SUITE_P(CopyMove, EntriesTest, testing::ValuesIn(allSettings()), nameOfSetting);

TEST_P(EntriesTest, CountsAreCheckedOutputsFirst) {
    const kxArray* const a = source_.get();
    EXPECT_EQ(identifierOf(4, {a, a, a, a, a, a}), "KORVEX:maxlhs");
    EXPECT_EQ(identifierOf(4, {}), "KORVEX:maxlhs");
    EXPECT_EQ(identifierOf(3, {a, a, a, a, a, a}), "KORVEX:maxrhs");
    EXPECT_EQ(identifierOf(3, {}), "KORVEX:minrhs");
    EXPECT_EQ(identifierOf(0, {}), "KORVEX:minrhs");
    EXPECT_EQ(tree(), before_);
}

TEST_P(EntriesTest, SuccessSetsAsManyOutputsAsAreAskedFor) {
    for (int nlhs = 0; nlhs <= 3; ++nlhs) {
        put(u"/s/a", "A");
        const Outcome outcome =
            callWith(nlhs, {source_.get(), text(path(u"/d/") + char16_t(u'0' + nlhs)).get()});
        EXPECT_EQ(outcome.errorIdentifier, "");
        EXPECT_EQ(outputsOf(outcome), firstOf(nlhs, {"true", "", ""}));
    }
    EXPECT_EQ(tree()["d/3"], "A");
}

TEST_P(EntriesTest, FailureIsRaisedOnlyWithoutOutputs) {
    const Array nothing = text(path(u"/s/nothing"));
    const Outcome raised = callWith(0, {nothing.get(), destination_.get()});
    EXPECT_NE(raised.errorIdentifier, "");
    EXPECT_EQ(raised.outputs[0], nullptr);
    for (int nlhs = 1; nlhs <= 3; ++nlhs) {
        const Outcome outcome = callWith(nlhs, {nothing.get(), destination_.get()});
        EXPECT_EQ(outcome.errorIdentifier, "");
        EXPECT_EQ(outputsOf(outcome), firstOf(nlhs, {"false", raised.errorText, raised.errorIdentifier}));
    }
}

TEST_P(EntriesTest, MissingStringIsRaisedWhereverItStandsAndWhateverIsAskedFor) {
    const Array none = missing();
    for (const int nlhs : {0, 3}) {
        EXPECT_EQ(identifierOf(nlhs, {none.get()}), missingString);
        EXPECT_EQ(identifierOf(nlhs, {source_.get(), none.get()}), missingString);
        EXPECT_EQ(identifierOf(nlhs, {source_.get(), destination_.get(), none.get()}), missingString);
    }
    EXPECT_EQ(tree(), before_);
}

TEST_P(EntriesTest, WhatIsNotOneTextIsRaisedUnderTheBareComponent) {
    std::vector<Array> refused;
    refused.push_back(number(1));
    refused.push_back(Array(kxCreateLogicalScalar(true)));
    refused.push_back(cell({1, 1}, text(u"a")));
    refused.push_back(strings({1, 2}, {u"a", u"b"}));
    refused.push_back(strings({0, 0}, {}));
    refused.push_back(characters({2, 3}));
    refused.push_back(characters({3, 1}));
    refused.push_back(characters({0, 3}));
    refused.push_back(Array(kxCreateDoubleMatrix(0, 0)));
    for (const Array& argument : refused) {
        const Failure expected = failure("KORVEX:string", notOneText, {u"The argument"});
        EXPECT_EQ(failureOfArrays(command(), {argument.get()}), expected);
        EXPECT_EQ(failureOfArrays(command(), {source_.get(), argument.get()}), expected);
        EXPECT_EQ(failureOfArrays(command(), {source_.get(), destination_.get(), argument.get()}), expected);
        EXPECT_EQ(identifierOf(3, {argument.get()}), "KORVEX:string");
    }
    EXPECT_EQ(tree(), before_);
}

TEST_P(EntriesTest, EmptyTextIsAnIllegalNameOfTheCommand) {
    const Failure expected = failure(commandIdentifier("IllegalName"), illegalName);
    for (const Array& empty : {text(u""), string(u""), characters({0, 0}), characters({1, 0})}) {
        EXPECT_EQ(failureOfArrays(command(), {empty.get()}), expected);
        EXPECT_EQ(failureOfArrays(command(), {source_.get(), empty.get()}), expected);
        EXPECT_EQ(failureOfArrays(command(), {source_.get(), destination_.get(), empty.get()}), expected);
    }
    EXPECT_EQ(tree(), before_);
}

TEST_P(EntriesTest, IllegalNameGoesIntoTheOutputs) {
    const Outcome outcome = callWith(3, {text(u"").get(), destination_.get()});
    EXPECT_EQ(outcome.errorIdentifier, "");
    EXPECT_EQ(outputsOf(outcome), (std::vector<std::string>{"false", textOf(KORVEX::FileManip::IllegalName()),
                                                            commandIdentifier("IllegalName")}));
}

TEST_P(EntriesTest, FirstBadArgumentIsToldAndNoFurtherOneIsLookedAt) {
    const Array empty = text(u"");
    const Array one = number(1);
    const Array none = missing();
    const Array odd = text(u"odd");
    const kxArray* const s = source_.get();
    const kxArray* const d = destination_.get();
    EXPECT_EQ(identifierOf(0, {empty.get(), one.get()}), commandIdentifier("IllegalName"));
    EXPECT_EQ(identifierOf(3, {empty.get(), none.get()}), "");
    EXPECT_EQ(identifierOf(0, {one.get(), empty.get()}), "KORVEX:string");
    EXPECT_EQ(identifierOf(0, {none.get(), one.get()}), missingString);
    EXPECT_EQ(identifierOf(0, {s, d, odd.get(), one.get()}), commandIdentifier("InvalidOption"));
    EXPECT_EQ(identifierOf(0, {s, d, one.get(), odd.get()}), "KORVEX:string");
    EXPECT_EQ(identifierOf(0, {s, d, empty.get(), odd.get()}), commandIdentifier("IllegalName"));
    EXPECT_EQ(identifierOf(0, {s, d, text(u"f").get(), empty.get()}), commandIdentifier("IllegalName"));
    EXPECT_EQ(tree(), before_);
}

TEST_P(EntriesTest, BadArgumentIsToldBeforeABadPath) {
    const Array nul = text(std::u16string(u"a\0b", 3));
    const Array odd = text(u"odd");
    EXPECT_EQ(identifierOf(0, {nul.get(), nul.get(), odd.get()}), commandIdentifier("InvalidOption"));
    EXPECT_EQ(identifierOf(0, {nul.get(), number(1).get()}), "KORVEX:string");
}

TEST_P(EntriesTest, StringsAndCharacterVectorsAreTheSame) {
    EXPECT_EQ(failureOfArrays(command(),
                              {string(path(u"/s/a")).get(), string(path(u"/d")).get(), string(u"f").get()}),
              noFailure());
    EXPECT_EQ(tree()["d/a"], "A");
}

TEST_P(EntriesTest, PositionDecidesWhatAnArgumentIs) {
    storage_.put(u"/here/s", "S");
    storage_.put(u"/here/other/");
    EXPECT_EQ(failureOf(command(), Texts{u"s", u"f"}), noFailure());
    EXPECT_EQ(storage_.treeOf(u"/here")["f"], "S");
    EXPECT_EQ(failureOf(command(), Texts{u"f", command().linkOption}), noFailure());
    EXPECT_EQ(storage_.treeOf(u"/here")[runtime::text::toDisplayBytes(command().linkOption)], "S");
}

TEST_P(EntriesTest, DestinationThatIsLeftOutIsTheCurrentFolder) {
    EXPECT_EQ(failureOfArrays(command(), {source_.get()}), noFailure());
    EXPECT_EQ(storage_.treeOf(u"/here"), (Tree{{"a", "A"}}));
    EXPECT_EQ(tree().contains("s/a"), command().isCopy);
}

TEST_P(EntriesTest, CallsLeaveNothingBehindForTheNext) {
    put(u"/d/a", "old");
    storage_.protect(path(u"/d/a"));
    EXPECT_EQ(run(u"/s/a", u"/d", {u"f"}), noFailure());
    put(u"/s/a", "A");
    storage_.protect(path(u"/d/a"));
    EXPECT_EQ(run(u"/s/a", u"/d"),
              failure(commandIdentifier("ReadOnly"), "KORVEX:FILE:ReadOnly", {path(u"/d/a")}));
}

}  // namespace
}  // namespace korvex::filemanip::tests
