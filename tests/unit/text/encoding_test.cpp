// The way from bytes to 16-bit text and back: nothing may get lost, whatever a disk calls its files.
#include "runtime/text/encoding.h"

#include <gtest/gtest.h>

#include <random>

namespace korvex::runtime::text {
namespace {

std::string hexadecimal(const std::string& bytes) {
    std::string digits;
    for (const char byte : bytes) {
        digits += "0123456789ABCDEF"[static_cast<unsigned char>(byte) >> 4];
        digits += "0123456789ABCDEF"[static_cast<unsigned char>(byte) & 15];
        digits += ' ';
    }
    return digits;
}

void expectRoundTrip(const std::string& bytes) {
    const std::optional<std::string> back = toBytes(fromBytes(bytes));
    ASSERT_TRUE(back.has_value()) << hexadecimal(bytes);
    ASSERT_EQ(*back, bytes) << hexadecimal(bytes);
}

std::string byteString(std::initializer_list<unsigned> values) {
    std::string bytes;
    for (const unsigned value : values)
        bytes += static_cast<char>(static_cast<unsigned char>(value));
    return bytes;
}

TEST(Encoding, AsciiOfAnyLengthKeepsItsUnits) {
    for (std::size_t length = 0; length < 40; ++length) {
        const std::string bytes(length, 'x');
        EXPECT_EQ(fromBytes(bytes), std::u16string(length, u'x'));
        EXPECT_EQ(toBytes(std::u16string(length, u'x')), bytes);
    }
}

TEST(Encoding, ValidSequencesBecomeTheirCharacters) {
    EXPECT_EQ(fromBytes("gr\xC3\xBC\xC3\x9F\x65"), u"gr\u00FC\u00DFe");
    EXPECT_EQ(fromBytes("\xE2\x82\xAC"), u"\u20AC");
    EXPECT_EQ(fromBytes("\xF0\x9F\x98\x80 ok"), u"\U0001F600 ok");
    EXPECT_EQ(fromBytes("\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"), u"\u0080\u07FF\u0800\uFFFF");
    EXPECT_EQ(fromBytes("\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"), u"\U00010000\U0010FFFF");
    EXPECT_EQ(fromBytes("\xED\x9F\xBF\xEE\x80\x80"), u"\uD7FF\uE000");
}

TEST(Encoding, CharactersBecomeValidSequences) {
    EXPECT_EQ(toBytes(u"\u0080\u07FF\u0800\uFFFF"), "\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF");
    EXPECT_EQ(toBytes(u"\U00010000\U0010FFFF"), "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
    EXPECT_EQ(toBytes(u"plain text, then \u00E4 and plain text again"),
              "plain text, then \xC3\xA4 and plain text again");
}

TEST(Encoding, EveryCodePointButSurrogatesSurvivesBothWays) {
    for (char32_t codePoint = 1; codePoint <= 0x10FFFF; ++codePoint) {
        if (codePoint >= 0xD800 && codePoint <= 0xDFFF) continue;
        std::u16string text;
        if (codePoint < 0x10000) {
            text = static_cast<char16_t>(codePoint);
        } else {
            text = {static_cast<char16_t>(0xD7C0 + (codePoint >> 10)),
                    static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF))};
        }
        const std::optional<std::string> bytes = toBytes(text);
        ASSERT_TRUE(bytes.has_value()) << static_cast<unsigned long>(codePoint);
        ASSERT_EQ(fromBytes(*bytes), text) << static_cast<unsigned long>(codePoint);
    }
}

TEST(Encoding, OverlongFormsEncodedSurrogatesAndTooLargeOnesAreTakenByteByByte) {
    EXPECT_EQ(fromBytes("\xC0\x80"), u"\xDCC0\xDC80");
    EXPECT_EQ(fromBytes("\xC1\xBF"), u"\xDCC1\xDCBF");
    EXPECT_EQ(fromBytes("\xE0\x9F\xBF"), u"\xDCE0\xDC9F\xDCBF");
    EXPECT_EQ(fromBytes("\xF0\x8F\xBF\xBF"), u"\xDCF0\xDC8F\xDCBF\xDCBF");
    EXPECT_EQ(fromBytes("\xED\xA0\x80"), u"\xDCED\xDCA0\xDC80");
    EXPECT_EQ(fromBytes("\xED\xBF\xBF"), u"\xDCED\xDCBF\xDCBF");
    EXPECT_EQ(fromBytes("\xF4\x90\x80\x80"), u"\xDCF4\xDC90\xDC80\xDC80");
    EXPECT_EQ(fromBytes("\xF5\x80\x80\x80"), u"\xDCF5\xDC80\xDC80\xDC80");
    EXPECT_EQ(fromBytes("\xFF\xFE"), u"\xDCFF\xDCFE");
}

TEST(Encoding, ASequenceThatBreaksOffEscapesOnlyItsOwnBytes) {
    EXPECT_EQ(fromBytes("\xE2\x82 next"), u"\xDCE2\xDC82 next");
    EXPECT_EQ(fromBytes("\xC3\xC3\xBC"), u"\xDCC3\u00FC");
    EXPECT_EQ(fromBytes("end\xF0\x9F\x98"), u"end\xDCF0\xDC9F\xDC98");
    EXPECT_EQ(fromBytes("\x80stray"), u"\xDC80stray");
}

TEST(Encoding, ByteStringsOfOneAndTwoBytesComeBack) {
    for (unsigned first = 0; first < 256; ++first) {
        expectRoundTrip(byteString({first}));
        for (unsigned second = 0; second < 256; ++second)
            expectRoundTrip(byteString({first, second}));
    }
}

TEST(Encoding, ByteStringsOfThreeBytesComeBack) {
    constexpr unsigned edges[] = {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xC1, 0xC2,
                                  0xDF, 0xE0, 0xE1, 0xEC, 0xED, 0xEE, 0xEF, 0xF0, 0xF1, 0xF4, 0xF5, 0xFF};
    for (const unsigned first : edges) {
        for (const unsigned second : edges) {
            for (const unsigned third : edges)
                expectRoundTrip(byteString({first, second, third}));
        }
    }
}

TEST(Encoding, RandomByteStringsComeBack) {
    std::mt19937 random(20240305);
    // Lead and continuation bytes are as likely as ASCII, so that whole, broken and mixed sequences turn up.
    std::uniform_int_distribution<unsigned> kind(0, 2), length(0, 40), ascii(0, 0x7F), other(0x80, 0xFF);
    for (int round = 0; round < 20000; ++round) {
        std::string bytes(length(random), '\0');
        for (char& byte : bytes) {
            const unsigned value = kind(random) == 0 ? ascii(random) : other(random);
            byte = static_cast<char>(static_cast<unsigned char>(value));
        }
        expectRoundTrip(bytes);
    }
}

TEST(Encoding, AHighSurrogateMakesAPairWithAnyLowSurrogate) {
    EXPECT_EQ(toBytes(u"\xD83D\xDC80"), "\xF0\x9F\x92\x80");
    EXPECT_EQ(toBytes(u"\xD83D\xDCFF"), "\xF0\x9F\x93\xBF");
    EXPECT_EQ(toBytes(u"\xD800\xDFFF"), "\xF0\x90\x8F\xBF");
}

TEST(Encoding, AnEscapedByteBehindAPairIsAByteOfItsOwn) {
    const std::string bytes = "\xF0\x9F\x92\x80\x80";
    EXPECT_EQ(fromBytes(bytes), u"\xD83D\xDC80\xDC80");
    EXPECT_EQ(toBytes(u"\xD83D\xDC80\xDC80"), bytes);
}

TEST(Encoding, AnUnpairedSurrogateThatStandsForNoByteHasNoBytes) {
    for (const char16_t unit : {u'\xD800', u'\xDBFF', u'\xDC00', u'\xDC7F', u'\xDD00', u'\xDFFF'}) {
        EXPECT_EQ(toBytes(std::u16string(1, unit)), std::nullopt) << static_cast<unsigned>(unit);
        EXPECT_EQ(toBytes(u"before" + std::u16string(1, unit) + u"behind"), std::nullopt);
    }
    EXPECT_EQ(toBytes(u"\xDC80\xD83D"), std::nullopt);
}

TEST(Encoding, TheBufferFormReplacesWhatTheBufferHeld) {
    std::string bytes = "something longer than what comes";
    EXPECT_TRUE(toBytes(u"a\u00E4\xDCFF", bytes));
    EXPECT_EQ(bytes, "a\xC3\xA4\xFF");
    EXPECT_TRUE(toBytes(u"", bytes));
    EXPECT_EQ(bytes, "");
    EXPECT_FALSE(toBytes(u"\xD800", bytes));
}

TEST(Encoding, NulIsAnOrdinaryUnit) {
    using namespace std::string_literals;
    EXPECT_EQ(fromBytes("a\0b"s), u"a\0b"s);
    EXPECT_EQ(toBytes(u"a\0b"s), "a\0b"s);
}

TEST(Encoding, DisplayReplacesWhatStandsForNoByte) {
    EXPECT_EQ(toDisplayBytes(u"a\xD800z"), "a\xEF\xBF\xBDz");
    EXPECT_EQ(toDisplayBytes(u"\xDFFF"), "\xEF\xBF\xBD");
    EXPECT_EQ(toDisplayBytes(u"caf\u00E9 \xDCFF"), "caf\xC3\xA9 \xFF");
    EXPECT_EQ(toDisplayBytes(u"plain"), "plain");
}

}  // namespace
}  // namespace korvex::runtime::text
