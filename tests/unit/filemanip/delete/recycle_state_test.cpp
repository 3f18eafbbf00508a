// `recycle`: the state of the recycle bin, its forms, and where it is kept.
#include <fstream>
#include <iterator>

#include "runtime/configuration/stored_document.h"
#include "tests/unit/filemanip/delete/delete_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RecycleStateTest : public DeleteTest {
protected:
    RecycleStateTest() { runtime::configuration::setConfigurationFolder(folder().u16string()); }

    fs::path folder() const { return diskPath("configuration"); }
    std::string kept() const {
        std::ifstream stream(folder() / "settings.json", std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    static std::string errorOf(const Array& argument) {
        return call(bnFullRecycleFcn, 0, {argument.get()}).errorIdentifier;
    }
};

TEST_F(RecycleStateTest, IsOffAtFirst) { EXPECT_EQ(recycle(), "off"); }

TEST_F(RecycleStateTest, ChangeGivesTheStateBefore) {
    EXPECT_EQ(recycle(u"on"), "off");
    EXPECT_EQ(recycle(u"on"), "on");
    EXPECT_EQ(recycle(u"off"), "on");
    EXPECT_EQ(recycle(u"off"), "off");
}

TEST_F(RecycleStateTest, QuestionSetsItsOutputAlsoWhenNoneIsAskedFor) {
    EXPECT_EQ(stateOf(call(bnFullRecycleFcn, 0, {})), "off");
    EXPECT_EQ(stateOf(call(bnFullRecycleFcn, 1, {})), "off");
}

TEST_F(RecycleStateTest, ChangeSetsItsOutputOnlyWhenItIsAskedFor) {
    const Array on = text(u"on");
    EXPECT_EQ(call(bnFullRecycleFcn, 0, {on.get()}).outputs[0], nullptr);
    EXPECT_EQ(recycle(), "on");
}

TEST_F(RecycleStateTest, OutputIsACharacterRow) {
    const Outcome outcome = call(bnFullRecycleFcn, 1, {});
    EXPECT_EQ(kxGetClassID(outcome.outputs[0].get()), kxCHAR_CLASS);
    EXPECT_EQ(dimensions(outcome.outputs[0]), (std::vector<std::size_t>{1, 3}));
}

TEST_F(RecycleStateTest, WordsIgnoreTheCaseOfLetters) {
    for (const char16_t* word : {u"ON", u"oN", u"On", u"on"}) {
        recycle(u"off");
        EXPECT_EQ(recycle(word), "off");
        EXPECT_EQ(recycle(), "on");
    }
    for (const char16_t* word : {u"OFF", u"oFf", u"Off"}) {
        recycle(u"on");
        EXPECT_EQ(recycle(word), "on");
        EXPECT_EQ(recycle(), "off");
    }
}

TEST_F(RecycleStateTest, StringsAreTextsToo) {
    const Array on = string(u"on");
    EXPECT_EQ(stateOf(call(bnFullRecycleFcn, 1, {on.get()})), "off");
    EXPECT_EQ(recycle(), "on");
}

TEST_F(RecycleStateTest, OtherWordsAreRefusedAndChangeNothing) {
    recycle(u"on");
    for (const char16_t* word : {u"on ", u" on", u"", u"o", u"onn", u"true", u"1", u"of", u"offf", u"\u00F6n",
                                 u"o\uFF4E", u"o\u0146", u"\u1D0Fn", u"\U0001D428n", u"o\u017F"}) {
        const Outcome outcome = call(bnFullRecycleFcn, 1, {text(word).get()});
        EXPECT_EQ(outcome.errorIdentifier, "KORVEX:RECYCLE:InvalidRecycleState");
        EXPECT_THAT(outcome.errorArguments, IsEmpty());
    }
    const std::u16string withNul(u"on\0", 3);
    EXPECT_EQ(errorOf(text(withNul)), "KORVEX:RECYCLE:InvalidRecycleState");
    EXPECT_EQ(errorOf(string(u"")), "KORVEX:RECYCLE:InvalidRecycleState");
    EXPECT_EQ(recycle(), "on");
}

TEST_F(RecycleStateTest, WhatIsNoSingleTextIsRefused) {
    const Array wrong[] = {number(1),          Array(kxCreateLogicalScalar(true)), cell({1, 1}, text(u"on")),
                           characters({2, 2}), strings({1, 2}, {u"on", u"on"}),    characters({0, 2})};
    for (const Array& argument : wrong) {
        const Outcome outcome = call(bnFullRecycleFcn, 0, {argument.get()});
        EXPECT_EQ(outcome.errorIdentifier, "KORVEX:string:MustBeSingleString");
        EXPECT_THAT(outcome.errorArguments, ElementsAre(u"The recycle state"));
    }
    EXPECT_EQ(errorOf(missing()), "KORVEX:string:MissingNotSupported");
    EXPECT_EQ(recycle(), "off");
}

TEST_F(RecycleStateTest, OneOutputAndOneArgumentAtMostOutputsFirst) {
    const Array on = text(u"on");
    EXPECT_EQ(call(bnFullRecycleFcn, 2, {}).errorIdentifier, "KORVEX:maxlhs");
    EXPECT_EQ(call(bnFullRecycleFcn, 2, {on.get(), on.get()}).errorIdentifier, "KORVEX:maxlhs");
    EXPECT_EQ(call(bnFullRecycleFcn, 1, {on.get(), on.get()}).errorIdentifier, "KORVEX:maxrhs");
    EXPECT_EQ(recycle(), "off");
}

TEST_F(RecycleStateTest, IsKeptAsTheInverseOfASettingOfTheUser) {
    recycle(u"on");
    EXPECT_EQ(kept(), "{\n    \"korvex\": {\n        \"DeleteFilesPermanently\": false\n    }\n}\n");
    recycle(u"off");
    EXPECT_EQ(kept(), "{\n    \"korvex\": {\n        \"DeleteFilesPermanently\": true\n    }\n}\n");
}

TEST_F(RecycleStateTest, IsThatOfTheConfigurationFolder) {
    recycle(u"on");
    runtime::configuration::setConfigurationFolder(pathOf(u"another"));
    EXPECT_EQ(recycle(), "off");
    runtime::configuration::setConfigurationFolder(folder().u16string());
    EXPECT_EQ(recycle(), "on");
}

TEST_F(RecycleStateTest, FailureOfTheSettingsReachesTheInterpreterAndDeletesNothing) {
    make({"a", "configuration/settings.json/"});
    EXPECT_THROW(recycle(), runtime::configuration::ConfigurationError);
    EXPECT_THROW(recycle(u"on"), runtime::configuration::ConfigurationError);
    EXPECT_THROW(outcomeOfArrays(text(u"a")), runtime::configuration::ConfigurationError);
    EXPECT_EQ(left(), (Names{"a", "configuration"}));
}

TEST_F(RecycleStateTest, CountsAreCheckedBeforeTheSettingsAreRead) {
    make({"configuration/settings.json/"});
    EXPECT_EQ(outcomeOf({}).errorIdentifier, "KORVEX:minrhs");
    EXPECT_EQ(call(bnFullRecycleFcn, 2, {}).errorIdentifier, "KORVEX:maxlhs");
}

}  // namespace
}  // namespace korvex::filemanip::tests
