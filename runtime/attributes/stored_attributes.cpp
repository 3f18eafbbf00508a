// Reading and writing of the forms of stored attributes.
#include "runtime/attributes/stored_attributes.h"

#include <array>
#include <charconv>
#include <cstddef>

namespace korvex::runtime::attributes {

namespace {

/// Where a record has what, behind its versions.
struct RecordForm {
    std::size_t bitsAt;
    std::size_t shortest;
};

constexpr std::array<RecordForm, 6> recordForms{
    {{0, 0}, /* 1 */ {0, 40}, /* 2 */ {4, 52}, /* 3 */ {4, 44}, /* 4 */ {4, 24}, /* 5 */ {4, 16}}};

/// From this record on the fields begin with what of them holds.
constexpr unsigned firstWithValidFields = 3;
constexpr std::size_t validFieldsAt = 0;
constexpr std::uint32_t bitsAreValid = 0x01;

constexpr std::size_t aligned(std::size_t position, std::size_t boundary) noexcept {
    return (position + boundary - 1) / boundary * boundary;
}

std::uint32_t numberAt(std::string_view bytes, std::size_t position, std::size_t length) noexcept {
    std::uint32_t number = 0;
    for (std::size_t i = length; i-- > 0;)
        number = number << 8 | static_cast<unsigned char>(bytes[position + i]);
    return number;
}

void putNumber(std::string& bytes, std::size_t position, std::uint32_t number, std::size_t length) {
    if (bytes.size() < position + length) bytes.resize(position + length);
    for (std::size_t i = 0; i < length; ++i, number >>= 8)
        bytes[position + i] = static_cast<char>(number & 0xFF);
}

std::uint32_t bitsOfText(std::string_view text) noexcept {
    std::uint32_t bits = 0;
    if (text.size() < 3 || !text.starts_with("0x")) return 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data() + 2, end, bits, 16);
    return read.ec == std::errc() && read.ptr == end ? bits : 0;
}

std::string textOfBits(std::uint32_t bits) {
    std::array<char, 10> text{'0', 'x'};
    const std::to_chars_result end = std::to_chars(text.data() + 2, text.data() + text.size(), bits, 16);
    return std::string(text.data(), end.ptr);
}

}  // namespace

StoredAttributes::StoredAttributes(std::string_view value, bool isHiddenByName)
    : isHiddenByName_(isHiddenByName) {
    const std::string_view text = value.substr(0, value.find('\0'));
    const bool isRecord = value.size() > text.size() + 1;
    if (isRecord) {
        isKnown_ = readRecord(value, aligned(text.size() + 1, 2));
    } else if (value.empty()) {
        if (isHiddenByName) bits_ = hiddenBit;
    } else {
        bits_ = bitsOfText(text);
    }
}

bool StoredAttributes::readRecord(std::string_view value, std::size_t position) {
    if (value.size() < position + 4) return false;
    const std::uint32_t version = numberAt(value, position, 2);
    const bool isKnown =
        version > plain && version < recordForms.size() && numberAt(value, position + 2, 2) == version;
    const std::size_t fieldsAt = aligned(position + 4, 4);
    if (!isKnown || value.size() < fieldsAt + recordForms[version].shortest) return false;
    version_ = version;
    fields_ = value.substr(fieldsAt);
    bits_ = numberAt(fields_, recordForms[version].bitsAt, 4);
    return true;
}

std::string StoredAttributes::valueWith(std::uint32_t bits) const {
    const bool isNothingToKeep = bits == 0 && !isHiddenByName_;
    if (version_ == plain) return isNothingToKeep ? std::string() : textOfBits(bits);
    std::string fields = fields_;
    if (version_ >= firstWithValidFields)
        putNumber(fields, validFieldsAt, numberAt(fields, validFieldsAt, 4) | bitsAreValid, 4);
    putNumber(fields, recordForms[version_].bitsAt, bits, 4);

    std::string value = textOfBits(bits);
    const std::size_t versionAt = aligned(value.size() + 1, 2);
    putNumber(value, versionAt, version_, 2);
    putNumber(value, versionAt + 2, version_, 2);
    value.resize(aligned(value.size(), 4));
    return value + fields;
}

}  // namespace korvex::runtime::attributes
