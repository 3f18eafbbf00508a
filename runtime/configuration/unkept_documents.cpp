// Documents in memory.
#include "runtime/configuration/unkept_documents.h"

#include <map>
#include <mutex>
#include <utility>

namespace korvex::runtime::configuration {

namespace {

struct UnkeptDocuments {
    std::mutex changing;  // held for a whole change, so that none is lost
    std::mutex guard;
    std::map<std::string, UnkeptDocument> byName;
    // Goes on when all is forgotten: a revision never comes back for another document.
    std::uint64_t lastRevision = 0;
};

UnkeptDocuments& documents() {
    static UnkeptDocuments unkeptDocuments;
    return unkeptDocuments;
}

}  // namespace

UnkeptDocument unkeptDocument(const std::string& name) {
    const std::lock_guard lock(documents().guard);
    const auto found = documents().byName.find(name);
    return found == documents().byName.end() ? UnkeptDocument{} : found->second;
}

std::uint64_t revisionOfUnkeptDocument(const std::string& name) {
    const std::lock_guard lock(documents().guard);
    const auto found = documents().byName.find(name);
    return found == documents().byName.end() ? 0 : found->second.revision;
}

UnkeptDocument changeUnkeptDocument(const std::string& name,
                                    const std::function<void(nlohmann::json&)>& change) {
    const std::lock_guard changing(documents().changing);
    UnkeptDocument changed = unkeptDocument(name);
    change(changed.document);
    const std::lock_guard lock(documents().guard);
    changed.revision = ++documents().lastRevision;
    return documents().byName[name] = std::move(changed);
}

void forgetUnkeptDocuments() {
    const std::lock_guard lock(documents().guard);
    documents().byName.clear();
}

}  // namespace korvex::runtime::configuration
