// The members of the registry's document.
#include "runtime/packages/registry_document.h"

#include <algorithm>

#include "runtime/configuration/json_text.h"

namespace korvex::runtime::packages {

using nlohmann::json;

namespace {

constexpr const char* enabledKey = "enabled";
constexpr const char* packagesKey = "packages";
constexpr const char* identifierKey = "identifier";
constexpr const char* nameKey = "name";
constexpr const char* rootKey = "root";
constexpr const char* editableKey = "editable";

bool isText(const json& value) { return configuration::fromJson(value).has_value(); }

std::u16string textOf(const json& value) { return configuration::fromJson(value).value(); }

bool isLocation(const json& value) {
    if (!isText(value)) return false;
    try {
        foundation::storage::vfs::AbsoluteIRI(textOf(value));
        return true;
    } catch (const foundation::storage::vfs::InvalidIRIException&) {
        return false;
    }
}

bool isFlagOrMissing(const json& object, const char* key) {
    const auto member = object.find(key);
    return member == object.end() || member->is_boolean();
}

bool isPackage(const json& value) {
    return value.is_object() && isText(value.at(identifierKey)) && isText(value.at(nameKey)) &&
           isLocation(value.at(rootKey)) && isFlagOrMissing(value, editableKey);
}

std::size_t removePackagesWith(json& document, const char* key, const std::u16string& text) {
    const auto packages = document.find(packagesKey);
    if (packages == document.end()) return 0;
    const auto end = std::remove_if(packages->begin(), packages->end(),
                                    [&](const json& package) { return textOf(package.at(key)) == text; });
    const auto count = static_cast<std::size_t>(packages->end() - end);
    packages->erase(end, packages->end());
    return count;
}

}  // namespace

bool isRegistryDocument(const json& document) {
    if (!isFlagOrMissing(document, enabledKey)) return false;
    const auto packages = document.find(packagesKey);
    return packages == document.end() ||
           (packages->is_array() && std::all_of(packages->begin(), packages->end(), isPackage));
}

bool isEnabledIn(const json& document) { return document.value(enabledKey, true); }

void setEnabledIn(json& document, bool isEnabled) { document[enabledKey] = isEnabled; }

std::vector<RegisteredPackage> packagesIn(const json& document) {
    std::vector<RegisteredPackage> packages;
    const auto values = document.find(packagesKey);
    if (values == document.end()) return packages;
    for (const json& value : *values) {
        packages.push_back({textOf(value.at(identifierKey)), textOf(value.at(nameKey)),
                            textOf(value.at(rootKey)), value.value(editableKey, false)});
    }
    return packages;
}

void appendPackageTo(json& document, const RegisteredPackage& package) {
    json value = json::object();
    value[identifierKey] = configuration::toJson(package.identifier);
    value[nameKey] = configuration::toJson(package.name);
    value[rootKey] = configuration::toJson(package.root);
    value[editableKey] = package.isEditable;
    document[packagesKey].push_back(std::move(value));
}

std::size_t removePackagesNamed(json& document, const std::u16string& name) {
    return removePackagesWith(document, nameKey, name);
}

std::size_t removePackagesRootedAt(json& document, const std::u16string& root) {
    return removePackagesWith(document, rootKey, root);
}

}  // namespace korvex::runtime::packages
