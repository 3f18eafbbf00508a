// "path.json": the folders of the search path, from one run to the next.
#pragma once

#include <functional>

#include "runtime/configuration/stored_document.h"
#include "runtime/dispatcher/search_path.h"

namespace korvex::runtime::dispatcher {

class SearchPathFile {
public:
    SearchPathFile();

    /// Raises `ConfigurationError`.
    PathFolders read() const;
    /// Hands the folders that stand in the file now to `change` and writes what it leaves. Raises
    /// `ConfigurationError`; the file is as it was then.
    void update(const std::function<void(PathFolders&)>& change);
    /// Whether it has changed since the last `read` or `update`.
    bool isOutOfDate() const { return document_.isOutOfDate(); }
    /// Native path; empty while nothing is kept from run to run.
    std::u16string path() const { return document_.path(); }

private:
    configuration::StoredDocument document_;
};

}  // namespace korvex::runtime::dispatcher
