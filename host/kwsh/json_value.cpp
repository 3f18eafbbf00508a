// JSON of values.
#include "host/kwsh/json_value.h"

#include <array>
#include <cmath>

#include "host/kwsh/values.h"

namespace korvex::host {
namespace {

constexpr int deepestValue = 100;

// -------------------------------------------------------------------------------------------- texts

/// The code point at `at`, which goes behind it; an unpaired surrogate is itself.
std::uint32_t takeCodePoint(std::u16string_view text, std::size_t& at) {
    const std::uint32_t first = text[at++];
    if (first < 0xD800 || first > 0xDBFF || at == text.size()) return first;
    const std::uint32_t second = text[at];
    if (second < 0xDC00 || second > 0xDFFF) return first;
    ++at;
    return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
}

void appendBytes(std::string& bytes, std::uint32_t codePoint) {
    const auto append = [&](std::uint32_t value) {
        bytes += static_cast<char>(static_cast<unsigned char>(value));
    };
    if (codePoint < 0x80) {
        append(codePoint);
        return;
    }
    if (codePoint < 0x800) {
        append(0xC0 | codePoint >> 6);
    } else {
        if (codePoint < 0x10000) {
            append(0xE0 | codePoint >> 12);
        } else {
            append(0xF0 | codePoint >> 18);
            append(0x80 | (codePoint >> 12 & 0x3F));
        }
        append(0x80 | (codePoint >> 6 & 0x3F));
    }
    append(0x80 | (codePoint & 0x3F));
}

/// Writes a text that `jsonText` made. Of its bytes only a surrogate's begin with 0xED and a byte from 0xA0.
void writeText(std::string& line, std::string_view bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto writeEscape = [&](std::uint32_t unit) {
        line += "\\u";
        for (int shift = 12; shift >= 0; shift -= 4)
            line += digits[unit >> shift & 0xF];
    };
    line += '"';
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        const auto byte = [&](std::size_t ahead) {
            return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[at + ahead]));
        };
        if (bytes[at] == '"' || bytes[at] == '\\') {
            line += '\\';
            line += bytes[at];
        } else if (bytes[at] == '\n') {
            line += "\\n";
        } else if (byte(0) < 0x20 || byte(0) == 0x7F) {
            writeEscape(byte(0));
        } else if (byte(0) == 0xED && at + 2 < bytes.size() && byte(1) >= 0xA0) {
            writeEscape(0xD000 | (byte(1) & 0x3F) << 6 | (byte(2) & 0x3F));
            at += 2;
        } else {
            line += bytes[at];
        }
    }
    line += '"';
}

void writeJson(std::string& line, const Json& json) {
    if (json.is_string()) {
        writeText(line, json.get_ref<const std::string&>());
    } else if (json.is_array()) {
        line += '[';
        for (std::size_t at = 0; at < json.size(); ++at) {
            if (at != 0) line += ", ";
            writeJson(line, json[at]);
        }
        line += ']';
    } else if (json.is_object()) {
        line += '{';
        for (auto entry = json.begin(); entry != json.end(); ++entry) {
            if (entry != json.begin()) line += ", ";
            writeText(line, entry.key());
            line += ": ";
            writeJson(line, entry.value());
        }
        line += '}';
    } else {
        line += json.dump();
    }
}

// ------------------------------------------------------------------------------------------- values

Json numberJson(double number) {
    constexpr double largestExactWhole = 9007199254740992.0;
    const bool isNegativeZero = number == 0 && std::signbit(number);
    if (!std::isfinite(number)) return numberText(number);
    if (number == std::trunc(number) && std::abs(number) <= largestExactWhole && !isNegativeZero) {
        return static_cast<std::int64_t>(number);
    }
    return number;
}

Json valueJson(const kxArray* value, int depth);

Json structureElement(const kxArray* structure, std::size_t index, int depth) {
    Json element = Json::object();
    for (int field = 0; field < kxGetNumberOfFields(structure); ++field) {
        element[kxGetFieldNameByNumber(structure, field)] =
            valueJson(shared(kxGetFieldByNumber(structure, index, field)).get(), depth + 1);
    }
    return element;
}

Json elementJson(const kxArray* array, std::size_t index, int depth) {
    switch (kxGetClassID(array)) {
        case kxDOUBLE_CLASS: return numberJson(kxGetDoubles(array)[index]);
        case kxLOGICAL_CLASS: return kxGetLogicals(array)[index];
        case kxSTRING_CLASS: {
            const std::optional<std::u16string>& text = kxGetStringElement(array, index);
            return text ? jsonText(*text) : Json(nullptr);
        }
        case kxCELL_CLASS: return valueJson(shared(kxGetCell(array, index)).get(), depth + 1);
        case kxSTRUCT_CLASS: return structureElement(array, index, depth);
        default: return nullptr;
    }
}

Json dataJson(const kxArray* value, int depth) {
    const kxClassID classID = kxGetClassID(value);
    if (classID == kxCHAR_CLASS) {
        const std::span<const char16_t> units = kxGetChars(value);
        return jsonText({units.data(), units.size()});
    }
    if (depth >= deepestValue && (classID == kxCELL_CLASS || classID == kxSTRUCT_CLASS)) return nullptr;
    Json data = Json::array();
    for (std::size_t index = 0; index < kxGetNumberOfElements(value); ++index) {
        data.push_back(elementJson(value, index, depth));
    }
    return data;
}

Json valueJson(const kxArray* value, int depth) {
    Json json = Json::object();
    json["class"] = kxGetClassName(value);
    json["size"] = Json::array();
    for (const std::size_t dimension : kxGetDimensions(value))
        json["size"].push_back(dimension);
    json["data"] = dataJson(value, depth);
    if (kxGetClassID(value) == kxSTRUCT_CLASS) {
        json["fields"] = Json::array();
        for (int field = 0; field < kxGetNumberOfFields(value); ++field) {
            json["fields"].push_back(kxGetFieldNameByNumber(value, field));
        }
    }
    return json;
}

}  // namespace

Json jsonText(std::u16string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t at = 0; at < text.size();)
        appendBytes(bytes, takeCodePoint(text, at));
    return bytes;
}

Json jsonValue(const kxArray* value) { return valueJson(value, 0); }

Json jsonMessage(std::string_view identifier, std::u16string_view text) {
    Json message = Json::object();
    message["id"] = identifier;
    message["text"] = jsonText(text);
    return message;
}

std::string jsonLine(const Json& json) {
    std::string line;
    writeJson(line, json);
    return line;
}

}  // namespace korvex::host
