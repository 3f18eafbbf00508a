// Locations: how a text becomes components, how components become a text, and the relations between them.
#include "runtime/storage/location.h"

#include <algorithm>

#include "platform/storage_utility.h"
#include "runtime/paths/path_style.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::storage {

namespace {

constexpr bool isLetter(char16_t unit) noexcept {
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
}

constexpr bool isSchemeUnit(char16_t unit) noexcept {
    return isLetter(unit) || (unit >= u'0' && unit <= u'9') || unit == u'+' || unit == u'-' || unit == u'.';
}

constexpr bool isUndecodableByte(char16_t unit) noexcept { return unit >= 0xDC80 && unit <= 0xDCFF; }

constexpr bool isHighSurrogate(char16_t unit) noexcept { return unit >= 0xD800 && unit <= 0xDBFF; }

constexpr bool isBlankOrControl(char16_t unit) noexcept { return unit <= u' ' || unit == 0x7F; }

constexpr bool needsEncoding(char16_t unit) noexcept {
    return isBlankOrControl(unit) || unit == u'%' || unit == u'?' || unit == u'#';
}

void appendEncodedByte(std::u16string& text, unsigned byte) {
    constexpr std::u16string_view digits = u"0123456789ABCDEF";
    text += u'%';
    text += digits[(byte >> 4) & 0xF];
    text += digits[byte & 0xF];
}

constexpr int hexadecimalDigit(char16_t unit) noexcept {
    if (unit >= u'0' && unit <= u'9') return unit - u'0';
    if (unit >= u'a' && unit <= u'f') return unit - u'a' + 10;
    if (unit >= u'A' && unit <= u'F') return unit - u'A' + 10;
    return -1;
}

/// The byte that an escape at `position` stands for, or -1.
int escapedByte(std::u16string_view text, std::size_t position) noexcept {
    if (position + 2 >= text.size() || text[position] != u'%') return -1;
    const int high = hexadecimalDigit(text[position + 1]);
    const int low = hexadecimalDigit(text[position + 2]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

/// Length of the scheme in front of "://", or 0.
std::size_t schemeLength(std::u16string_view text) noexcept {
    if (text.empty() || !isLetter(text[0])) return 0;
    const auto end = std::find_if_not(text.begin(), text.end(), isSchemeUnit);
    const auto length = static_cast<std::size_t>(end - text.begin());
    return length >= 2 && text.substr(length).starts_with(u":/") ? length : 0;
}

std::u16string inSmallLetters(std::u16string_view text) {
    std::u16string small(text);
    for (char16_t& unit : small) {
        if (unit >= u'A' && unit <= u'Z') unit = static_cast<char16_t>(unit + (u'a' - u'A'));
    }
    return small;
}

/// What a web location cannot carry as it was typed; escapes, query and fragment stay.
std::u16string encodeWebPath(std::u16string_view typed) {
    std::u16string path;
    for (const char16_t unit : typed) {
        if (isBlankOrControl(unit)) {
            appendEncodedByte(path, unit);
        } else {
            path += unit;
        }
    }
    return path;
}

std::u16string_view withoutQuery(std::u16string_view webPath) noexcept {
    return webPath.substr(0, webPath.find_first_of(u"?#"));
}

}  // namespace

bool isWebScheme(std::u16string_view scheme) noexcept { return scheme == u"http" || scheme == u"https"; }

AbsoluteIRI makeLocation(std::u16string scheme, std::u16string host, std::u16string path) {
    return AbsoluteIRI(
        std::make_shared<const AbsoluteIRI::Parts>(std::move(scheme), std::move(host), std::move(path)));
}

AbsoluteIRI foundLocation(const AbsoluteIRI& folder, const std::u16string& name,
                          std::shared_ptr<const FoundPlace> found) {
    const AbsoluteIRI::Parts& above = folder.parts();
    std::u16string path;
    path.reserve(above.path.size() + 1 + name.size());
    path = above.path;
    if (path.back() != u'/') path += u'/';
    path += name;
    return AbsoluteIRI(std::make_shared<const AbsoluteIRI::Parts>(above.scheme, above.host, std::move(path),
                                                                  std::move(found)));
}

std::u16string encodePath(std::u16string_view path) {
    std::u16string text;
    text.reserve(path.size());
    char16_t before = 0;
    for (const char16_t unit : path) {
        const bool standsForByte = isUndecodableByte(unit) && !isHighSurrogate(before);
        if (standsForByte || needsEncoding(unit)) {
            appendEncodedByte(text, unit & 0xFFU);
        } else {
            text += unit;
        }
        before = unit;
    }
    return text;
}

std::u16string decodePath(std::u16string_view text) {
    std::u16string path;
    path.reserve(text.size());
    std::string bytes;
    for (std::size_t position = 0; position < text.size();) {
        bytes.clear();
        // Neighbouring escapes decode together: a character beyond ASCII has several bytes.
        for (int byte = escapedByte(text, position); byte >= 0; byte = escapedByte(text, position)) {
            bytes += static_cast<char>(byte);
            position += 3;
        }
        path += text::fromBytes(bytes);
        if (position < text.size()) path += text[position++];
    }
    return path;
}

}  // namespace korvex::runtime::storage

namespace foundation::storage::utility {

bool hasValidNumberOfSlashes(const std::u16string& text) {
    const std::size_t scheme = korvex::runtime::storage::schemeLength(text);
    if (scheme == 0) return false;
    const std::u16string_view behindColon = std::u16string_view(text).substr(scheme + 1);
    const std::size_t slashes = std::min(behindColon.find_first_not_of(u'/'), behindColon.size());
    const bool isLocal = korvex::runtime::storage::inSmallLetters(text.substr(0, scheme)) ==
                         korvex::runtime::storage::localScheme;
    if (isLocal) return slashes == 3 || (slashes == 2 && behindColon.size() > 2);
    return slashes == 2;
}

void decodeURL(std::u16string& text) { text = korvex::runtime::storage::decodePath(text); }

}  // namespace foundation::storage::utility

namespace foundation::storage::vfs {

namespace internal = korvex::runtime::storage;
namespace paths = korvex::runtime::paths;

namespace {

AbsoluteIRI parsed(const std::u16string& text) {
    if (!utility::hasValidNumberOfSlashes(text)) throw InvalidIRIException(text);
    const std::size_t schemeEnd = internal::schemeLength(text);
    const std::size_t hostBegin = schemeEnd + 3;
    // A query or fragment may follow a path only, so either ends the host, and with it the attempt.
    const std::size_t hostEnd = text.find_first_of(u"/?#", hostBegin);
    if (hostEnd == std::u16string::npos || text[hostEnd] != u'/') throw InvalidIRIException(text);

    std::u16string scheme = internal::inSmallLetters(text.substr(0, schemeEnd));
    std::u16string host = text.substr(hostBegin, hostEnd - hostBegin);
    const bool hostIsMissing = host.empty() && scheme != internal::localScheme;
    if (hostIsMissing || std::any_of(host.begin(), host.end(), internal::isBlankOrControl)) {
        throw InvalidIRIException(text);
    }
    if (scheme == internal::localScheme && internal::inSmallLetters(host) == u"localhost") host.clear();
    const std::u16string_view typedPath = std::u16string_view(text).substr(hostEnd);
    std::u16string path = internal::isWebScheme(scheme)
                              ? internal::encodeWebPath(typedPath)
                              : paths::foldSeparators(internal::decodePath(typedPath));
    return internal::makeLocation(std::move(scheme), std::move(host), std::move(path));
}

/// Where the last component of a path begins.
std::size_t lastComponent(std::u16string_view path) noexcept { return path.rfind(u'/') + 1; }

/// A web path may end in slashes; its name and its parent are those of the path without them.
std::u16string_view withoutTrailingSlashes(std::u16string_view path) noexcept {
    while (path.size() > 1 && path.back() == u'/')
        path.remove_suffix(1);
    return path;
}

std::u16string nameOf(const AbsoluteIRI::Parts& parts) {
    std::u16string_view path = parts.path;
    const bool isWeb = internal::isWebScheme(parts.scheme);
    if (isWeb) path = withoutTrailingSlashes(internal::withoutQuery(path));
    const std::u16string_view name = path.substr(lastComponent(path));
    if (name.empty()) return u"/";
    return isWeb ? internal::decodePath(name) : std::u16string(name);
}

std::u16string textOf(const AbsoluteIRI::Parts& parts) {
    const bool isEncoded = internal::isWebScheme(parts.scheme);
    return parts.scheme + u"://" + parts.host + (isEncoded ? parts.path : internal::encodePath(parts.path));
}

}  // namespace

AbsoluteIRI::Parts::Parts(std::u16string schemeText, std::u16string hostText, std::u16string pathText,
                          std::shared_ptr<const FoundPlace> foundPlace)
    : scheme(std::move(schemeText)),
      host(std::move(hostText)),
      path(std::move(pathText)),
      found(std::move(foundPlace)) {}

const std::u16string& AbsoluteIRI::Parts::text() const {
    return text_.get([this] { return textOf(*this); });
}

const std::u16string& AbsoluteIRI::Parts::name() const {
    return name_.get([this] { return nameOf(*this); });
}

AbsoluteIRI::AbsoluteIRI(const std::u16string& text) : AbsoluteIRI(parsed(text)) {}

AbsoluteIRI::AbsoluteIRI(const AbsoluteIRI& parent, const std::u16string& name) {
    const Parts& above = parent.parts();
    const bool isWeb = internal::isWebScheme(above.scheme);
    std::u16string path(isWeb ? internal::withoutQuery(above.path) : above.path);
    if (path.back() != u'/') path += u'/';
    if (isWeb) {
        path += internal::encodePath(name);
    } else if (above.scheme == internal::localScheme) {
        std::u16string native = paths::nativeForm(name, true, paths::nativeStyle);
        std::replace(native.begin(), native.end(), paths::preferredSeparator(paths::nativeStyle), u'/');
        path += native;
    } else {
        path += name;
    }
    if (!isWeb) path = paths::foldSeparators(path);
    parts_ = std::make_shared<const Parts>(above.scheme, above.host, std::move(path));
}

std::u16string AbsoluteIRI::getScheme() const { return parts_->scheme; }

const std::u16string& AbsoluteIRI::getName() const { return parts_->name(); }

const std::u16string& AbsoluteIRI::toString() const { return parts_->text(); }

bool AbsoluteIRI::hasParent() const {
    std::u16string_view path = parts_->path;
    if (internal::isWebScheme(parts_->scheme)) path = withoutTrailingSlashes(internal::withoutQuery(path));
    const bool isDrive =
        parts_->scheme == internal::localScheme && parts_->path.size() == 3 &&
        paths::startsWithDrive(std::u16string_view(parts_->path).substr(1), paths::nativeStyle);
    return path != u"/" && !isDrive;
}

AbsoluteIRI AbsoluteIRI::getParent() const {
    if (!hasParent()) throw Exception(invalidLocation, *this, u"parent of a root");
    std::u16string_view path = parts_->path;
    if (internal::isWebScheme(parts_->scheme)) path = withoutTrailingSlashes(internal::withoutQuery(path));
    const std::size_t end = std::max<std::size_t>(lastComponent(path) - 1, 1);
    return internal::makeLocation(parts_->scheme, parts_->host, std::u16string(path.substr(0, end)));
}

bool AbsoluteIRI::isAncestorOf(const AbsoluteIRI& other) const {
    const Parts& below = other.parts();
    if (parts_->scheme != below.scheme || parts_->host != below.host) return false;
    std::u16string_view path = parts_->path;
    if (path.back() == u'/') path.remove_suffix(1);
    return below.path.size() > path.size() + 1 && below.path.starts_with(path) &&
           below.path[path.size()] == u'/';
}

bool AbsoluteIRI::operator==(const AbsoluteIRI& other) const {
    if (parts_ == other.parts_) return true;
    return parts_->scheme == other.parts_->scheme && parts_->host == other.parts_->host &&
           parts_->path == other.parts_->path;
}

bool operator==(const std::u16string& text, const AbsoluteIRI& location) {
    return text == location.toString();
}

bool hasIRIPrefix(const std::u16string& text) { return internal::schemeLength(text) != 0; }

}  // namespace foundation::storage::vfs
