// Opens the bundles of the package that the build puts into the library; nothing is looked for on disk.
//
// Bundles are opened one by one and the way from a locale to English is walked here: ICU's own way would pass
// through the machine's default locale, and so answer German to who asks for English on a German machine.
#include "runtime/messages/bundles.h"

#include <unicode/localpointer.h>
#include <unicode/udata.h>
#include <unicode/uloc.h>
#include <unicode/ures.h>

#include <algorithm>
#include <array>
#include <map>
#include <mutex>
#include <string_view>

extern "C" const unsigned char korvex_kwmessages_dat[];

namespace korvex::runtime::messages {
namespace {

constexpr const char* packageName = "kwmessages";
constexpr const char* rootLocale = "root";

bool isComponent(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char letter) {
        return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') || letter == ':';
    });
}

std::string bundlePath(std::string component) {
    std::replace(component.begin(), component.end(), ':', '_');
    return std::string(packageName) + '-' + component;
}

/// All bundles opened so far; null where there is none. An open bundle may be read by any number of threads.
class OpenBundles {
public:
    OpenBundles() {
        UErrorCode status = U_ZERO_ERROR;
        udata_setAppData(packageName, korvex_kwmessages_dat, &status);
    }

    UResourceBundle* find(const std::string& component, const std::string& locale) {
        if (!isComponent(component)) return nullptr;
        const std::lock_guard lock(mutex_);
        const auto [place, isNew] = bundles_.try_emplace({component, locale});
        if (isNew) {
            UErrorCode status = U_ZERO_ERROR;
            place->second.adoptInstead(
                ures_openDirect(bundlePath(component).c_str(), locale.c_str(), &status));
        }
        return place->second.getAlias();
    }

private:
    std::mutex mutex_;
    std::map<std::pair<std::string, std::string>, icu::LocalUResourceBundlePointer> bundles_;
};

OpenBundles& openBundles() {
    static OpenBundles bundles;
    return bundles;
}

/// The locale in ICU's spelling, without keywords; empty when it is none.
std::string canonicalName(const std::string& locale) {
    std::array<char, ULOC_FULLNAME_CAPACITY> name{};
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = uloc_getBaseName(locale.c_str(), name.data(), ULOC_FULLNAME_CAPACITY, &status);
    if (U_FAILURE(status) || length >= ULOC_FULLNAME_CAPACITY) return {};
    return name.data();
}

std::string parentOf(const std::string& locale) {
    const std::size_t lastPart = locale.rfind('_');
    return lastPart == std::string::npos ? std::string() : locale.substr(0, lastPart);
}

std::optional<std::u16string> patternIn(const UResourceBundle* bundle, const std::string& key) {
    if (bundle == nullptr) return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    const UChar* text = ures_getStringByKey(bundle, key.c_str(), &length, &status);
    if (U_FAILURE(status)) return std::nullopt;
    return std::u16string(text, static_cast<std::size_t>(length));
}

}  // namespace

std::optional<std::u16string> entryPattern(const std::string& component, const std::string& key,
                                           const std::string& locale) {
    for (std::string name = canonicalName(locale); !name.empty(); name = parentOf(name)) {
        auto pattern = patternIn(openBundles().find(component, name), key);
        if (pattern) return pattern;
    }
    return patternIn(openBundles().find(component, rootLocale), key);
}

std::vector<std::string> entryKeys(const std::string& component, const std::string& language) {
    std::vector<std::string> keys;
    const UResourceBundle* bundle = openBundles().find(component, language);
    if (bundle == nullptr) return keys;
    for (int32_t index = 0; index < ures_getSize(bundle); ++index) {
        UErrorCode status = U_ZERO_ERROR;
        const icu::LocalUResourceBundlePointer entry(ures_getByIndex(bundle, index, nullptr, &status));
        if (U_SUCCESS(status)) keys.emplace_back(ures_getKey(entry.getAlias()));
    }
    std::sort(keys.begin(), keys.end());
    return keys;
}

}  // namespace korvex::runtime::messages
