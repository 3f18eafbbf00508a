// Texts in JSON documents: what UTF-8 can hold as strings, everything else in pieces, and all of it back.
#include "runtime/configuration/json_text.h"

#include <gtest/gtest.h>

namespace korvex::runtime::configuration {
namespace {

using nlohmann::json;

/// Through the text of a document, as a file holds it.
std::optional<std::u16string> throughAFile(std::u16string_view text) {
    return fromJson(json::parse(toJson(text).dump()));
}

TEST(JsonTextTest, OrdinaryTextIsAString) {
    EXPECT_EQ(toJson(u"C:\\a \"b\"/\u00E9\u20AC"), json("C:\\a \"b\"/\u00E9\u20AC"));
    EXPECT_EQ(toJson(u"\U0001F600"), json("\U0001F600"));
    EXPECT_EQ(toJson(u""), json(""));
}

TEST(JsonTextTest, UnpairedUnitsStandAsNumbersBetweenStrings) {
    const char16_t text[] = {u'/', u'c', 0xDCE9, 0xDCFF, u'/', u'x', 0};
    EXPECT_EQ(toJson(text), json::parse(R"(["/c", 56553, 56575, "/x"])"));
}

TEST(JsonTextTest, EveryUnitComesBackAloneAndBetweenOthers) {
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const std::u16string alone(1, static_cast<char16_t>(unit));
        ASSERT_EQ(throughAFile(alone), alone) << unit;
        const std::u16string between = u"a" + alone + u"b";
        ASSERT_EQ(throughAFile(between), between) << unit;
    }
}

TEST(JsonTextTest, SurrogatesInEveryOrderComeBack) {
    const char16_t units[] = {0xD800, 0xDBFF, 0xDC00, 0xDC80, u'a'};
    for (const char16_t first : units) {
        for (const char16_t second : units) {
            for (const char16_t third : units) {
                const std::u16string text{first, second, third};
                EXPECT_EQ(throughAFile(text), text);
            }
        }
    }
}

TEST(JsonTextTest, NulIsAUnitLikeOthers) {
    const std::u16string text(u"a\0b", 3);
    EXPECT_EQ(throughAFile(text), text);
}

TEST(JsonTextTest, WhatIsNoTextGivesNothing) {
    for (const char* value : {"null", "1", "true", "{}", "[-1]", "[65536]", "[\"a\", 1.5]", "[[\"a\"]]"}) {
        EXPECT_EQ(fromJson(json::parse(value)), std::nullopt) << value;
    }
}

}  // namespace
}  // namespace korvex::runtime::configuration
