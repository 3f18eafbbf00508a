// The documents of a run without a configuration folder: in memory, by their names.
#pragma once

#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>

namespace korvex::runtime::configuration {

struct UnkeptDocument {
    nlohmann::json document = nlohmann::json::object();
    /// Another one after every change; 0 while there was none.
    std::uint64_t revision = 0;
};

UnkeptDocument unkeptDocument(const std::string& name);
std::uint64_t revisionOfUnkeptDocument(const std::string& name);

/// Hands a copy to `change`, no other change running meanwhile, and keeps what it leaves. An exception of
/// `change` changes nothing.
UnkeptDocument changeUnkeptDocument(const std::string& name,
                                    const std::function<void(nlohmann::json&)>& change);

void forgetUnkeptDocuments();

}  // namespace korvex::runtime::configuration
