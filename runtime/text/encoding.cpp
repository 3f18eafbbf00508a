// Names are mostly ASCII and come by the million, so both directions run over ASCII eight at a time and look
// at single bytes or units only where something else turns up.
#include "runtime/text/encoding.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace korvex::runtime::text {

namespace {

constexpr std::size_t blockLength = 8;
constexpr char32_t byteEscape = 0xDC00;
constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";

enum class StrayUnit { refuse, replace };

bool isAsciiBlock(const char* bytes) noexcept {
    std::uint64_t block = 0;
    std::memcpy(&block, bytes, sizeof block);
    return (block & 0x8080808080808080U) == 0;
}

bool isAsciiBlock(const char16_t* units) noexcept {
    std::array<std::uint64_t, 2> block{};
    std::memcpy(block.data(), units, sizeof block);
    return ((block[0] | block[1]) & 0xFF80FF80FF80FF80U) == 0;
}

bool isAscii(char byte) noexcept { return static_cast<unsigned char>(byte) < 0x80; }
bool isAscii(char16_t unit) noexcept { return unit < 0x80; }

/// Copies as much of the source as is ASCII and gives its length.
template <class From, class To>
std::size_t copyAsciiRun(const From* source, std::size_t length, To* destination) noexcept {
    std::size_t done = 0;
    while (length - done >= blockLength && isAsciiBlock(source + done)) {
        for (std::size_t i = 0; i < blockLength; ++i)
            destination[done + i] = static_cast<To>(source[done + i]);
        done += blockLength;
    }
    while (done < length && isAscii(source[done])) {
        destination[done] = static_cast<To>(source[done]);
        ++done;
    }
    return done;
}

/// A code point and how many bytes it took; no bytes where none begins.
struct Decoded {
    char32_t codePoint = 0;
    std::size_t length = 0;
};

/// What a lead byte asks for. The range of the second byte shuts out overlong forms, encoded surrogates and
/// what lies behind U+10FFFF.
struct LeadByte {
    unsigned char first, last;
    std::size_t length;
    unsigned char secondFirst, secondLast;
    unsigned char payload;
};
constexpr std::array<LeadByte, 8> leadBytes{{
    {0xC2, 0xDF, 2, 0x80, 0xBF, 0x1F},
    {0xE0, 0xE0, 3, 0xA0, 0xBF, 0x0F},
    {0xE1, 0xEC, 3, 0x80, 0xBF, 0x0F},
    {0xED, 0xED, 3, 0x80, 0x9F, 0x0F},
    {0xEE, 0xEF, 3, 0x80, 0xBF, 0x0F},
    {0xF0, 0xF0, 4, 0x90, 0xBF, 0x07},
    {0xF1, 0xF3, 4, 0x80, 0xBF, 0x07},
    {0xF4, 0xF4, 4, 0x80, 0x8F, 0x07},
}};

Decoded decodeSequence(std::string_view bytes) noexcept {
    const auto byteAt = [bytes](std::size_t index) { return static_cast<unsigned char>(bytes[index]); };
    for (const LeadByte& lead : leadBytes) {
        if (byteAt(0) < lead.first || byteAt(0) > lead.last) continue;
        if (bytes.size() < lead.length) return {};
        if (byteAt(1) < lead.secondFirst || byteAt(1) > lead.secondLast) return {};
        char32_t codePoint = byteAt(0) & lead.payload;
        for (std::size_t i = 1; i < lead.length; ++i) {
            if ((byteAt(i) & 0xC0) != 0x80) return {};
            codePoint = (codePoint << 6) | (byteAt(i) & 0x3F);
        }
        return {codePoint, lead.length};
    }
    return {};
}

char16_t* appendUnits(char32_t codePoint, char16_t* end) noexcept {
    if (codePoint < 0x10000) {
        *end++ = static_cast<char16_t>(codePoint);
        return end;
    }
    *end++ = static_cast<char16_t>(0xD7C0 + (codePoint >> 10));
    *end++ = static_cast<char16_t>(0xDC00 | (codePoint & 0x3FF));
    return end;
}

char* appendSequence(char32_t codePoint, char* end) noexcept {
    const auto append = [&end](char32_t byte) {
        *end++ = static_cast<char>(static_cast<unsigned char>(byte));
    };
    const auto continuation = [&append, codePoint](int shift) {
        append(0x80 | ((codePoint >> shift) & 0x3F));
    };
    if (codePoint < 0x80) {
        append(codePoint);
    } else if (codePoint < 0x800) {
        append(0xC0 | (codePoint >> 6));
        continuation(0);
    } else if (codePoint < 0x10000) {
        append(0xE0 | (codePoint >> 12));
        continuation(6);
        continuation(0);
    } else {
        append(0xF0 | (codePoint >> 18));
        continuation(12);
        continuation(6);
        continuation(0);
    }
    return end;
}

bool isHighSurrogate(char16_t unit) noexcept { return (unit & 0xFC00) == 0xD800; }
bool isLowSurrogate(char16_t unit) noexcept { return (unit & 0xFC00) == 0xDC00; }
bool standsForByte(char16_t unit) noexcept { return unit >= 0xDC80 && unit <= 0xDCFF; }

/// Encodes the unit at `position`, or the pair there, and moves on. Null when it is an unpaired surrogate
/// that stands for no byte and these are refused.
char* encodeOne(std::u16string_view text, std::size_t& position, char* end, StrayUnit stray) noexcept {
    const char16_t unit = text[position++];
    if (isHighSurrogate(unit) && position < text.size() && isLowSurrogate(text[position])) {
        const char32_t low = text[position++];
        return appendSequence(0x10000 + ((unit & 0x3FFU) << 10) + (low & 0x3FFU), end);
    }
    if (standsForByte(unit)) {
        *end++ = static_cast<char>(static_cast<unsigned char>(unit - byteEscape));
        return end;
    }
    if (!isHighSurrogate(unit) && !isLowSurrogate(unit)) return appendSequence(unit, end);
    if (stray == StrayUnit::refuse) return nullptr;
    return end + replacementCharacter.copy(end, replacementCharacter.size());
}

bool encode(std::u16string_view text, std::string& bytes, StrayUnit stray) {
    constexpr std::size_t mostBytesOfAUnit = 3;
    bytes.resize(text.size());
    std::size_t position = copyAsciiRun(text.data(), text.size(), bytes.data());
    if (position == text.size()) return true;

    bytes.resize(position + (text.size() - position) * mostBytesOfAUnit);
    char* end = bytes.data() + position;
    while (position < text.size()) {
        end = encodeOne(text, position, end, stray);
        if (end == nullptr) return false;
        const std::size_t run = copyAsciiRun(text.data() + position, text.size() - position, end);
        position += run;
        end += run;
    }
    bytes.resize(static_cast<std::size_t>(end - bytes.data()));
    return true;
}

}  // namespace

std::u16string fromBytes(std::string_view bytes) {
    std::u16string text(bytes.size(), u'\0');  // no sequence has more units than bytes
    char16_t* end = text.data();
    std::size_t position = 0;
    while (true) {
        const std::size_t run = copyAsciiRun(bytes.data() + position, bytes.size() - position, end);
        position += run;
        end += run;
        if (position == bytes.size()) break;
        const Decoded decoded = decodeSequence(bytes.substr(position));
        if (decoded.length == 0) {
            *end++ = static_cast<char16_t>(byteEscape + static_cast<unsigned char>(bytes[position++]));
        } else {
            end = appendUnits(decoded.codePoint, end);
            position += decoded.length;
        }
    }
    text.resize(static_cast<std::size_t>(end - text.data()));
    return text;
}

std::optional<std::string> toBytes(std::u16string_view text) {
    std::string bytes;
    if (!encode(text, bytes, StrayUnit::refuse)) return std::nullopt;
    return bytes;
}

bool toBytes(std::u16string_view text, std::string& bytes) { return encode(text, bytes, StrayUnit::refuse); }

std::string toDisplayBytes(std::u16string_view text) {
    std::string bytes;
    encode(text, bytes, StrayUnit::replace);
    return bytes;
}

}  // namespace korvex::runtime::text
