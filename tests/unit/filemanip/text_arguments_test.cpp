// The reading and judging of text arguments that the commands share.
#include "io/filesystem/filemanip/command_frame.h"
#include "platform/message_catalog.h"
#include "platform/message_identifiers.h"
#include "tests/unit/filemanip/entry_call.h"

namespace korvex::filemanip {
namespace {

using namespace tests;

std::string errorOfReading(const kxArray* argument, bool strict) {
    try {
        textOfArgument(argument, strict);
    } catch (const foundation::core::except::IMsgIDException& error) {
        return error.get_error_id();
    }
    return "";
}

constexpr const char* noText = "KORVEX:string:MustBeStringScalarOrCharacterVector";

TEST(TextOfArgumentTest, ReadsCharacterVectorsAndStringScalars) {
    EXPECT_EQ(textOfArgument(text(u"abc").get(), true), u"abc");
    EXPECT_EQ(textOfArgument(text(u"").get(), true), u"");
    EXPECT_EQ(textOfArgument(characters({1, 0}).get(), true), u"");
    const Array scalar = string(u"a\u00e9");
    EXPECT_EQ(textOfArgument(scalar.get(), true), u"a\u00e9");
}

TEST(TextOfArgumentTest, NullIsNoText) {
    EXPECT_EQ(errorOfReading(nullptr, true), noText);
    EXPECT_EQ(errorOfReading(nullptr, false), noText);
}

TEST(TextOfArgumentTest, WithoutStrictnessAnyCharacterArrayIsReadInStorageOrder) {
    const Array matrix = characters({2, 3});
    const std::span<char16_t> units = kxGetChars(matrix.get());
    std::u16string(u"adbecf").copy(units.data(), 6);
    EXPECT_EQ(textOfArgument(matrix.get(), false), u"adbecf");
    EXPECT_EQ(errorOfReading(matrix.get(), true), noText);
    EXPECT_EQ(errorOfReading(characters({0, 3}).get(), true), noText);
    EXPECT_EQ(textOfArgument(characters({0, 3}).get(), false), u"");
    EXPECT_EQ(errorOfReading(characters({1, 2, 2}).get(), true), noText);
}

TEST(TextOfArgumentTest, OtherClassesAndStringArraysAreNoText) {
    EXPECT_EQ(errorOfReading(number(1).get(), false), noText);
    EXPECT_EQ(errorOfReading(cell({1, 1}, text(u"a")).get(), false), noText);
    EXPECT_EQ(errorOfReading(strings({1, 2}, {u"a", u"b"}).get(), false), noText);
    EXPECT_EQ(errorOfReading(strings({0, 0}, {}).get(), false), noText);
}

TEST(TextOfArgumentTest, MissingStringHasAnErrorOfItsOwn) {
    EXPECT_EQ(errorOfReading(missing().get(), false), "KORVEX:string:MissingNotSupported");
    EXPECT_EQ(errorOfReading(strings({1, 2}, {std::nullopt, u"b"}).get(), false), noText);
}

/// Runs `validateNameArgument` like an entry would.
struct Judgement : Outcome {
    explicit Judgement(const Array& argument, int nlhs = 0, std::string_view prefix = "COPYFILE") {
        std::vector<kxArray*> plhs(3, nullptr);
        try {
            mayGoOn = validateNameArgument(nlhs, plhs.data(), argument.get(), prefix);
        } catch (const foundation::core::except::IMsgIDException& error) {
            fail(error);
        }
        for (kxArray* output : plhs)
            outputs.emplace_back(output);
    }

    bool mayGoOn = false;
};

TEST(ValidateNameArgumentTest, TextWithAUnitPasses) {
    EXPECT_TRUE(Judgement(text(u"a")).mayGoOn);
    EXPECT_TRUE(Judgement(string(u"a")).mayGoOn);
}

TEST(ValidateNameArgumentTest, MissingStringIsRaisedFirst) {
    EXPECT_EQ(Judgement(missing(), 3).errorIdentifier, "KORVEX:string:MissingNotSupported");
}

TEST(ValidateNameArgumentTest, WhatIsNotOneTextIsRaisedUnderTheBareComponent) {
    for (const Array& argument : {strings({1, 2}, {u"a", u"b"}), number(1), characters({2, 3}),
                                  characters({0, 3}), cell({1, 1}, text(u"a"))}) {
        const Judgement judgement(argument, 3);
        EXPECT_EQ(judgement.errorIdentifier, "KORVEX:string");
        EXPECT_EQ(judgement.catalogEntry, "KORVEX:string:MustBeSingleString");
    }
}

TEST(ValidateNameArgumentTest, WhatIsNotOneTextIsCalledAnArgumentAndNotAName) {
    const auto textOf = [](const resource_core::BaseMsgID& label) {
        return fl::i18n::MessageCatalog::get_message(label, fl::i18n::KwLocale::global());
    };
    ASSERT_NE(textOf(KORVEX::string::Argument()), textOf(KORVEX::string::Name()));
    EXPECT_EQ(Judgement(number(1)).errorArguments,
              std::vector<std::u16string>{textOf(KORVEX::string::Argument())});
}

TEST(ValidateNameArgumentTest, EmptyTextIsRaisedWithoutOutputs) {
    for (const Array& argument : {text(u""), characters({1, 0}), string(u"")}) {
        const Judgement judgement(argument, 0);
        EXPECT_FALSE(judgement.mayGoOn);
        EXPECT_EQ(judgement.errorIdentifier, "KORVEX:COPYFILE:IllegalName");
        EXPECT_EQ(judgement.catalogEntry, "KORVEX:FileManip:IllegalName");
    }
}

TEST(ValidateNameArgumentTest, EmptyTextGoesToTheOutputsThatAreAskedFor) {
    const Judgement judgement(text(u""), 3);
    EXPECT_FALSE(judgement.mayGoOn);
    EXPECT_EQ(judgement.errorIdentifier, "");
    EXPECT_EQ(logicals(judgement.outputs[0]), std::vector<bool>{false});
    EXPECT_NE(textOfArgument(judgement.outputs[1].get(), true), u"");
    EXPECT_EQ(textOfArgument(judgement.outputs[2].get(), true), u"KORVEX:COPYFILE:IllegalName");
    EXPECT_EQ(Judgement(text(u""), 1).outputs[1], nullptr);
}

TEST(ValidateNameArgumentTest, EmptyTextFailsUnderTheWordOfTheCommand) {
    for (const std::string prefix : {"COPYFILE", "MOVEFILE", "MKDIR", "RMDIR", "FILEATTRIB"}) {
        const std::string identifier = "KORVEX:" + prefix + ":IllegalName";
        EXPECT_EQ(Judgement(text(u""), 0, prefix).errorIdentifier, identifier);
        const Judgement judgement(text(u""), 3, prefix);
        EXPECT_EQ(textOfArgument(judgement.outputs[2].get(), true),
                  std::u16string(identifier.begin(), identifier.end()));
    }
}

}  // namespace
}  // namespace korvex::filemanip
