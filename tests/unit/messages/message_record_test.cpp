// Message records and the classes that make them.
#include <gtest/gtest.h>

#include <type_traits>

#include "platform/message_identifiers.h"

namespace {

using resource_core::BaseMsgID;
using resource_core::MessageArgument;

TEST(MessageRecord, AClassSpellsItsComponentAndKey) {
    const BaseMsgID message = KORVEX::virtualfileio::stream::writeNotAllowed();
    EXPECT_EQ(message.component, "KORVEX:virtualfileio:stream");
    EXPECT_EQ(message.key, "writeNotAllowed");
    EXPECT_EQ(message.identifier(), "KORVEX:virtualfileio:stream:writeNotAllowed");
    EXPECT_TRUE(message.args.empty());
}

TEST(MessageRecord, ArgumentsKeepTheirOrderAndTheVectorIsReservedToTheirNumber) {
    const BaseMsgID message = KORVEX::DELETE::DeletedFileFromPackage(u"file", u"package");
    ASSERT_EQ(message.args.size(), 2U);
    EXPECT_EQ(*message.args[0].wideText(), u"file");
    EXPECT_EQ(*message.args[1].wideText(), u"package");
    EXPECT_EQ(KORVEX::DELETE::DeletedFileFromPackage(u"file", u"package").args.capacity(), 2U);
}

TEST(MessageRecord, ArgumentsAreWideTextButForTheOneNarrowMessage) {
    const BaseMsgID wide = KORVEX::FILE::ReadOnly(std::u16string_view(u"a.txt"));
    const BaseMsgID narrow = KORVEX::io::common::validation::InternalError("Expected double scalar");
    EXPECT_EQ(wide.args[0].tag(), MessageArgument::Tag::wideText);
    EXPECT_EQ(wide.args[0].narrowText(), nullptr);
    EXPECT_EQ(narrow.args[0].tag(), MessageArgument::Tag::narrowText);
    EXPECT_EQ(*narrow.args[0].narrowText(), "Expected double scalar");
    EXPECT_EQ(narrow.args[0].wideText(), nullptr);
}

TEST(MessageRecord, AnArgumentWithoutTextOwnsNothing) {
    const MessageArgument argument;
    EXPECT_EQ(argument.tag(), MessageArgument::Tag::empty);
    EXPECT_EQ(argument.narrowText(), nullptr);
    EXPECT_EQ(argument.wideText(), nullptr);
}

TEST(MessageRecord, AClassTakesExactlyItsArgumentsInTheirKindOfText) {
    using KORVEX::FILE::ReadOnly;
    using KORVEX::io::common::validation::InternalError;
    EXPECT_TRUE((std::is_constructible_v<ReadOnly, std::u16string>));
    EXPECT_FALSE((std::is_constructible_v<ReadOnly, std::string>));
    EXPECT_FALSE((std::is_constructible_v<ReadOnly, std::u16string, std::u16string>));
    EXPECT_FALSE((std::is_default_constructible_v<ReadOnly>));
    EXPECT_TRUE((std::is_constructible_v<InternalError, std::string>));
    EXPECT_FALSE((std::is_constructible_v<InternalError, std::u16string>));
}

TEST(MessageRecord, EqualKeysInTwoComponentsAreTwoMessages) {
    EXPECT_FALSE((std::is_same_v<KORVEX::FILE::ReadOnly, KORVEX::FileManip::ReadOnly>));
    EXPECT_EQ(KORVEX::FILE::ReadOnly(u"a").identifier(), "KORVEX:FILE:ReadOnly");
    EXPECT_EQ(KORVEX::FileManip::ReadOnly(u"a").identifier(), "KORVEX:FileManip:ReadOnly");
}

}  // namespace
