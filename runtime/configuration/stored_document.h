// One JSON file in the configuration folder, safe against crashes and against other processes.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>

#include "runtime/configuration/whole_file.h"

namespace korvex::runtime::configuration {

/// A configuration file that cannot be read or written. The text (UTF-8, in the user's language) names it,
/// and is meant for the user.
class ConfigurationError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads and changes one file. A change is made under a lock that all processes keep to, on what stands in
/// the file then; it is written to a temporary file, made durable and renamed, so that a crash leaves the old
/// or the new document. A damaged file is set aside under another name (which the warning
/// "KORVEX:host:damagedConfiguration" gives) and read as an empty object; it is never overwritten. One that
/// is nested deeper than a person would write it counts as damaged. A file marked read-only is not replaced.
/// Where the file is a link, what it leads to is replaced.
///
/// While there is no configuration folder the document is kept in memory for this run.
///
/// Texts of the environment go into a document by runtime/configuration/json_text.h. May be used by several
/// threads.
class StoredDocument {
public:
    /// `name` as "path.json"; `isValid` judges whether an object that was read is one of ours. What it finds
    /// not to be is a damaged file, as is one of which it raises a `nlohmann::json::exception`.
    StoredDocument(std::string name, std::function<bool(const nlohmann::json&)> isValid);

    /// What stands in the file now; an empty object when there is none. Raises `ConfigurationError` when it
    /// is there and cannot be read, or is damaged and cannot be set aside.
    nlohmann::json read() const;

    /// Hands the document to `change`, an object, and writes what it leaves if that is another one; other
    /// processes wait meanwhile. An exception of `change` writes nothing and is passed on; `change` must not
    /// change a document itself. Raises `ConfigurationError`; the file is as it was then (only when the disk
    /// fails to confirm the very last step it may be the new one), and `std::logic_error` when `change` has
    /// left what is not valid. Gives back the document as it stands in the file.
    nlohmann::json update(const std::function<void(nlohmann::json&)>& change);

    /// Whether the file has changed on disk since the last `read` or `update` of this object, or there was
    /// none yet. Asks the system for the file's stamp and nothing more.
    bool isOutOfDate() const;

    /// Where the file stands, as a native path; empty while there is no configuration folder.
    std::u16string path() const;

private:
    /// What a document was taken from.
    struct Source {
        std::u16string path;
        std::optional<FileStamp> stamp;
        std::uint64_t revision = 0;

        bool operator==(const Source&) const = default;
    };
    struct Found;

    Found find(const std::u16string& path) const;
    void setDamagedAside(const std::u16string& path) const;
    nlohmann::json updateUnkept(const std::function<void(nlohmann::json&)>& change);
    void applyTo(nlohmann::json& document, const std::function<void(nlohmann::json&)>& change) const;
    bool isOurs(const nlohmann::json& document) const;
    void remember(Source source) const;

    std::string name_;
    std::function<bool(const nlohmann::json&)> isValid_;
    mutable std::mutex guard_;
    mutable std::optional<Source> seen_;
};

}  // namespace korvex::runtime::configuration
