// The forms of the extended attribute: what Samba and Wine wrote is read, what is written they read.
#include "runtime/attributes/stored_attributes.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <initializer_list>
#include <string>
#include <vector>

namespace korvex::runtime::attributes {
namespace {

using namespace std::string_literals;

/// A time as it stands in a record: 100 nanoseconds since 1601, the lower byte first.
const std::string created = "\x99\x9c\x19\xae\x54\xaa\xdc\x01"s;
const std::string noTime(8, '\0');
const std::string fourZeros(4, '\0');

std::string bitsAs(unsigned char bits) { return std::string(1, static_cast<char>(bits)) + "\0\0\0"s; }

const std::string record1 =
    "0x22\0\0\x01\0\x01\0\0\0"s + bitsAs(0x22) + fourZeros + noTime + noTime + created + noTime;
const std::string record2 = "0x6\0\x02\0\x02\0"s + fourZeros + bitsAs(0x06) + fourZeros + noTime + noTime +
                            created + noTime + noTime + "name\0"s;
const std::string record3 =
    "0x20\0\0\x03\0\x03\0\0\0\x11\0\0\0"s + bitsAs(0x20) + fourZeros + noTime + noTime + created + noTime;
const std::string record4 = "\0\0\x04\0\x04\0\0\0\x51\0\0\0"s + bitsAs(0x27) + "itime\0\0\0"s + created;
/// Of a file with the archive bit, byte for byte as a server wrote it.
const std::string writtenByServer =
    "\0\0\x04\0\x04\0\0\0\x51\0\0\0\x20\0\0\0\x20\x3d\xb9\x68\x71\x2c\xd8\x6d\x66\x7f\xb8\x68\x71\x2c\xd8\x01"s;
const std::string record5 = "\0\0\x05\0\x05\0\0\0\x11\0\0\0"s + bitsAs(0x10) + created;

std::uint32_t bitsOf(const std::string& value) { return StoredAttributes(value).bits(); }

std::string changed(const std::string& value, std::uint32_t bits) {
    return StoredAttributes(value).valueWith(bits);
}

/// The whole value must be a number in C's notation, up to a NUL.
std::uint32_t asWineReadsIt(const std::string& value) {
    constexpr std::size_t mostItTakes = 64;
    if (value.size() <= 2 || value.size() > mostItTakes || !value.starts_with("0x")) return 0;
    char* end = nullptr;
    const long bits = std::strtol(value.c_str(), &end, 16);
    return *end == '\0' ? static_cast<std::uint32_t>(bits) : 0;
}

TEST(StoredAttributesTest, EveryFormIsRead) {
    EXPECT_EQ(bitsOf("0x22"), hiddenBit | archiveBit);
    EXPECT_EQ(bitsOf("0x6\0"s), hiddenBit | systemBit);
    EXPECT_EQ(bitsOf(record1), hiddenBit | archiveBit);
    EXPECT_EQ(bitsOf(record2), hiddenBit | systemBit);
    EXPECT_EQ(bitsOf(record3), archiveBit);
    EXPECT_EQ(bitsOf(record4), 0x27U);
    EXPECT_EQ(bitsOf(record5), 0x10U);
    EXPECT_EQ(bitsOf(writtenByServer), archiveBit);
}

TEST(StoredAttributesTest, WithoutAValueThePlainFormIsWritten) {
    EXPECT_EQ(bitsOf(""), 0U);
    EXPECT_EQ(changed("", hiddenBit), "0x2");
    EXPECT_EQ(changed("", archiveBit | hiddenBit | systemBit), "0x26");
    EXPECT_EQ(changed("0x2", hiddenBit | archiveBit), "0x22");
}

TEST(StoredAttributesTest, APlainValueWithoutBitsIsNotKept) {
    EXPECT_EQ(changed("0x2", 0), "");
    EXPECT_EQ(changed("", 0), "");
}

TEST(StoredAttributesTest, WithoutAValueANameThatBeginsWithADotIsHidden) {
    EXPECT_EQ(StoredAttributes("", true).bits(), hiddenBit);
    EXPECT_EQ(StoredAttributes("0x0", true).bits(), 0U);
    EXPECT_EQ(StoredAttributes("0x4", true).bits(), systemBit);
    EXPECT_EQ(StoredAttributes(record5, true).bits(), 0x10U);
}

TEST(StoredAttributesTest, OfANameThatBeginsWithADotAValueWithoutBitsIsKept) {
    EXPECT_EQ(StoredAttributes("", true).valueWith(0), "0x0");
    EXPECT_EQ(StoredAttributes("0x2", true).valueWith(0), "0x0");
}

TEST(StoredAttributesTest, ARecordWithTextKeepsAllOtherFields) {
    std::string expected = record3;
    expected.replace(0, 5, "0x26\0"s).replace(16, 4, bitsAs(0x26));
    EXPECT_EQ(changed(record3, 0x26), expected);
    expected = record1;
    expected.replace(0, 5, "0x20\0"s).replace(12, 4, bitsAs(0x20));
    EXPECT_EQ(changed(record1, archiveBit), expected);
    expected = record2;
    expected.replace(0, 4, "0x4\0"s).replace(12, 4, bitsAs(0x04));
    EXPECT_EQ(changed(record2, systemBit), expected);
}

TEST(StoredAttributesTest, TheFieldsOfARecordStayAlignedWhenItsTextChangesItsLength) {
    EXPECT_EQ(changed(record3, 0x2),
              "0x2\0\x03\0\x03\0\x11\0\0\0"s + bitsAs(0x02) + fourZeros + noTime + noTime + created + noTime);
    EXPECT_EQ(bitsOf(changed(record2, 0x26)), 0x26U);
    EXPECT_EQ(changed(changed(record2, 0x26), 0x06), record2);
}

TEST(StoredAttributesTest, ARecordWithoutTextGetsOneAndKeepsAllOtherFields) {
    EXPECT_EQ(changed(record4, 0x22),
              "0x22\0\0\x04\0\x04\0\0\0\x51\0\0\0"s + bitsAs(0x22) + "itime\0\0\0"s + created);
    EXPECT_EQ(changed(record5, 0x22), "0x22\0\0\x05\0\x05\0\0\0\x11\0\0\0"s + bitsAs(0x22) + created);
    EXPECT_EQ(changed(writtenByServer, 0x02),
              "0x2\0\x04\0\x04\0\x51\0\0\0\x02\0\0\0"s + writtenByServer.substr(writtenByServer.size() - 16));
    EXPECT_EQ(changed(changed(writtenByServer, 0x02), 0x20), changed(writtenByServer, 0x20));
}

TEST(StoredAttributesTest, ATimeThatDoesNotHoldIsNotMadeToHold) {
    std::string withoutTime = record5;
    withoutTime[8] = '\x01';
    EXPECT_EQ(changed(withoutTime, 0x2), "0x2\0\x05\0\x05\0\x01\0\0\0"s + bitsAs(0x02) + created);
}

TEST(StoredAttributesTest, ARecordWithoutBitsIsKeptForItsTime) {
    EXPECT_EQ(bitsOf(changed(record3, 0)), 0U);
    EXPECT_NE(changed(record3, 0).find(created), std::string::npos);
}

TEST(StoredAttributesTest, WhatIsWrittenWineReadsToo) {
    for (const std::string& value :
         {""s, "0x1"s, record1, record2, record3, record4, record5, writtenByServer}) {
        for (const std::uint32_t bits : {0x2U, 0x26U, 0x100026U, 0xFFFFFFFFU}) {
            const std::string written = changed(value, bits);
            EXPECT_EQ(bitsOf(written), bits);
            // Of record 2 the name may make the value longer than Wine takes.
            if (value != record2) {
                EXPECT_EQ(asWineReadsIt(written), bits);
            }
        }
    }
}

TEST(StoredAttributesTest, TextThatIsNoNumberHoldsNothingAndMayBeReplaced) {
    for (const std::string& value : {"0x"s, "22"s, "0x2g"s, "0x123456789"s, "\0"s, " 0x2"s}) {
        EXPECT_EQ(bitsOf(value), 0U) << value;
        EXPECT_TRUE(StoredAttributes(value).isKnown());
        EXPECT_EQ(changed(value, hiddenBit), "0x2");
    }
}

TEST(StoredAttributesTest, ARecordOfNoKnownFormHoldsNothingAndIsToldApart) {
    std::string twoVersions = record5;
    twoVersions[4] = '\x04';
    std::string unknownVersion = record5;
    unknownVersion[2] = unknownVersion[4] = '\x06';
    for (const std::string& value : {"0x2\0x"s, twoVersions, unknownVersion}) {
        EXPECT_EQ(bitsOf(value), 0U) << value;
        EXPECT_FALSE(StoredAttributes(value).isKnown());
    }
    for (const std::string& value : {""s, "0x2"s, record1, record2, record3, record4, record5})
        EXPECT_TRUE(StoredAttributes(value).isKnown());
}

TEST(StoredAttributesTest, ARecordThatWasCutOffHoldsNothingAndIsToldApart) {
    for (const std::string& record : {record1, record3, record4, record5}) {
        for (std::size_t length = 6; length < record.size(); ++length) {
            const StoredAttributes stored(record.substr(0, length));
            EXPECT_EQ(stored.bits(), 0U) << length;
            EXPECT_FALSE(stored.isKnown()) << length;
        }
    }
}

}  // namespace
}  // namespace korvex::runtime::attributes
