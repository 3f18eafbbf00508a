// "packages.json": what of it means what.
//
//     {"enabled": true, "packages": [{"identifier": "...", "name": "...", "root": "file:///...",
//                                     "editable": false}, ...]}
//
// "enabled" (true) and "editable" (false) may be missing. Members that this version does not know stay.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "runtime/packages/package_registry.h"

namespace korvex::runtime::packages {

bool isRegistryDocument(const nlohmann::json& document);

// Of a document that is one.
bool isEnabledIn(const nlohmann::json& document);
void setEnabledIn(nlohmann::json& document, bool isEnabled);
std::vector<RegisteredPackage> packagesIn(const nlohmann::json& document);
void appendPackageTo(nlohmann::json& document, const RegisteredPackage& package);
/// How many packages were taken out, by name or by root.
std::size_t removePackagesNamed(nlohmann::json& document, const std::u16string& name);
std::size_t removePackagesRootedAt(nlohmann::json& document, const std::u16string& root);

}  // namespace korvex::runtime::packages
