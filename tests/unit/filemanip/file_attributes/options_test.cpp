// The grammar: which modes, users and modifiers are taken, and what each of them does.
#include "io/filesystem/filemanip/file_attributes.h"
#include "tests/unit/filemanip/file_attributes/file_attributes_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class FileAttributesOptionsTest : public FileAttributesTest {};

TEST_F(FileAttributesOptionsTest, EachLetterNamesOneAttribute) {
    EXPECT_EQ(attributesOf("file"), "w");
    for (const auto& [mode, attributes] : std::vector<std::pair<std::u16string, std::string>>{{u"+a", "aw"},
                                                                                              {u"+h", "ahw"},
                                                                                              {u"+s", "ahsw"},
                                                                                              {u"-w", "ahs"},
                                                                                              {u"-a", "hs"},
                                                                                              {u"-h", "s"},
                                                                                              {u"-s", ""},
                                                                                              {u"+w", "w"}}) {
        EXPECT_EQ(resultOf({u"file", mode}), "1");
        EXPECT_EQ(attributesOf("file"), attributes);
    }
}

TEST_F(FileAttributesOptionsTest, TokensAreSeparatedByBlanks) {
    EXPECT_EQ(resultOf({u"file", u"  +h   -w +a "}), "1");
    EXPECT_EQ(attributesOf("file"), "ah");
}

TEST_F(FileAttributesOptionsTest, ALaterTokenOverridesAnEarlierOneOfTheSameAttribute) {
    EXPECT_EQ(resultOf({u"file", u"+h -w -h +w"}), "1");
    EXPECT_EQ(attributesOf("file"), "w");
}

TEST_F(FileAttributesOptionsTest, AModeWithoutTokensChangesNothingAndIsNoError) {
    for (const std::u16string mode : {u"", u" ", u"    "}) {
        EXPECT_EQ(resultOf({u"file", mode}), "1");
        EXPECT_EQ(attributesOf("file"), "w");
    }
    EXPECT_EQ(resultOf({u"nothing", u""}), cannotFind);
}

TEST_F(FileAttributesOptionsTest, WhateverIsNoTokenIsAnErrorAndNothingIsChanged) {
    for (const std::u16string mode : {u"w", u"+", u"-", u"+x", u"+W", u"+wh", u"+w-h", u"++", u"+h\t-w",
                                      u"\t", u"+h w", u"+h +", u"=h", u"+h,-w", u"+\u00e4", u"h+"}) {
        EXPECT_EQ(resultOf({u"file", mode}), modeError) << runtime::text::toDisplayBytes(mode);
        EXPECT_EQ(attributesOf("file"), "w");
    }
}

TEST_F(FileAttributesOptionsTest, UsersAreWarnedOfAndIgnored) {
    EXPECT_EQ(resultOf({u"file", u"+h", u"u"}), "1");
    EXPECT_THAT(warnings_, ElementsAre("KORVEX:FILEATTRIB:SyntaxWarning"));
    EXPECT_EQ(attributesOf("file"), "hw");
}

TEST_F(FileAttributesOptionsTest, NoUsersAreNoWarning) {
    EXPECT_EQ(resultOf({u"file", u"+h", u""}), "1");
    EXPECT_EQ(resultOf({u"file", u"+h", u"", u"s"}), "1");
    EXPECT_THAT(warnings_, IsEmpty());
    EXPECT_EQ(resultOf({u"file", u"+h", u" ", u"s"}), "1");
    EXPECT_EQ(warnings_.size(), 1U);
}

TEST_F(FileAttributesOptionsTest, TheFirstCharacterOfTheModifierCounts) {
    scratch_.writeFile("tree/below");
    for (const std::u16string modifier : {u"s", u"S", u"sub", u"Sxs"}) {
        EXPECT_EQ(resultOf({u"tree", u"+h", u"", modifier}), "1");
        EXPECT_EQ(attributesOf("tree/below"), "hw");
        EXPECT_EQ(resultOf({u"tree", u"-h", u"", modifier}), "1");
        EXPECT_EQ(attributesOf("tree/below"), "w");
    }
}

TEST_F(FileAttributesOptionsTest, AnyOtherModifierIsAnErrorAndNothingIsChanged) {
    for (const std::u16string modifier : {u"", u"x", u" s", u"xs", u"-s"}) {
        EXPECT_EQ(resultOf({u"file", u"+h", u"", modifier}), modifierError);
        EXPECT_EQ(attributesOf("file"), "w");
    }
}

TEST_F(FileAttributesOptionsTest, OfTwoErrorsTheModesIsTheOneThatIsTold) {
    EXPECT_EQ(resultOf({u"file", u"w", u"u", u"x"}), modeError);
    EXPECT_THAT(warnings_, ElementsAre("KORVEX:FILEATTRIB:SyntaxWarning"));
}

TEST_F(FileAttributesOptionsTest, ASyntaxErrorComesBeforeTheLookForTheFile) {
    EXPECT_EQ(resultOf({u"nothing", u"w"}), modeError);
}

/// The engine by itself, without the command around it.
class FileAttributesEngineTest : public FileAttributesTest {
protected:
    using Status = io::filesystem::core::Status;

    FileAttributes engine_;
};

TEST_F(FileAttributesEngineTest, NoOptionsAndMoreThanThreeAreNotLookedAt) {
    engine_.ParseOptArgs({});
    engine_.ParseOptArgs({u"wrong", u"user", u"wrong", u"more"});
    EXPECT_EQ(engine_.Process(Words{}).code, Status::success);
    EXPECT_THAT(warnings_, IsEmpty());
}

TEST_F(FileAttributesEngineTest, OptionsStayReadForTheNextCall) {
    scratch_.writeFile("tree/below");
    engine_.ParseOptArgs({u"+h", u"", u"s"});
    EXPECT_EQ(engine_.Process({u"tree"}, {u"-w"}).code, Status::success);
    EXPECT_EQ(attributesOf("tree/below"), "h");
}

TEST_F(FileAttributesEngineTest, ProcessOfOneListTellsTheOutcomeSoFarAndDoesNothing) {
    EXPECT_EQ(engine_.Process(Words{u"file"}).code, Status::success);
    EXPECT_EQ(engine_.takeAttributes(), nullptr);
    engine_.ParseOptArgs({u"wrong"});
    EXPECT_NE(engine_.Process(Words{u"file"}).code, Status::success);
}

TEST_F(FileAttributesEngineTest, AChangeOfNoPathIsASuccess) {
    EXPECT_EQ(engine_.Process({}, {u"+h"}).code, Status::success);
    EXPECT_EQ(attributesOf(""), "w");
    EXPECT_EQ(engine_.takeAttributes(), nullptr);
}

}  // namespace
}  // namespace korvex::filemanip::tests
