// Documents: what is read and written when, what is damaged, and what the user is told. How a file is kept
// whole stands in whole_file.h.
#include "runtime/configuration/stored_document.h"

#include <utility>

#include "platform/kx.h"
#include "platform/user_exceptions.h"
#include "runtime/configuration/configuration_folder.h"
#include "runtime/configuration/unkept_documents.h"
#include "runtime/messages/environment_messages.h"
#include "runtime/paths/path_style.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::configuration {

using nlohmann::json;

namespace {

namespace host = KORVEX::host;
namespace except = foundation::core::except;

constexpr int indentation = 4;

/// Nobody writes deeper ones; what is done with a document takes a step down for each level.
constexpr int deepestNesting = 100;

/// Discarded when it is no JSON, or nested too deeply.
json parsed(const std::string& content) {
    bool isTooDeep = false;
    const auto isKept = [&](int depth, json::parse_event_t, json&) {
        isTooDeep = isTooDeep || depth > deepestNesting;
        return !isTooDeep;
    };
    json document = json::parse(content, isKept, false);
    if (isTooDeep) document = json(json::value_t::discarded);
    return document;
}

/// Runs an operation on a file; a failure becomes a `ConfigurationError` with the text of `Message`.
template <class Message, class Operation>
auto reportedAs(const std::u16string& path, const Operation& operation) {
    try {
        return operation();
    } catch (const std::runtime_error& error) {
        const Message message(path, text::fromBytes(error.what()));
        throw ConfigurationError(except::detail::toUtf8(except::detail::catalogText(message)));
    }
}

}  // namespace

/// What stands at a path.
struct StoredDocument::Found {
    json document = json::object();
    Source source;
    bool isDamaged = false;
};

StoredDocument::StoredDocument(std::string name, std::function<bool(const json&)> isValid)
    : name_(std::move(name)), isValid_(std::move(isValid)) {}

json StoredDocument::read() const {
    const std::u16string file = path();
    if (file.empty()) {
        UnkeptDocument unkept = unkeptDocument(name_);
        remember({file, std::nullopt, unkept.revision});
        return std::move(unkept.document);
    }
    for (;;) {
        Found found = find(file);
        if (!found.isDamaged) {
            remember(std::move(found.source));
            return std::move(found.document);
        }
        setDamagedAside(file);
    }
}

json StoredDocument::update(const std::function<void(json&)>& change) {
    const std::u16string file = path();
    if (file.empty()) return updateUnkept(change);
    for (;;) {
        {
            const auto locked = reportedAs<host::configurationNotWritten>(
                file, [&] { return std::make_unique<LockedFile>(file); });
            Found found = find(file);
            if (!found.isDamaged) {
                json changed = found.document;
                applyTo(changed, change);
                if (changed != found.document) {
                    const std::string content = changed.dump(indentation) + '\n';
                    found.source.stamp = reportedAs<host::configurationNotWritten>(
                        file, [&] { return locked->replaceWith(content); });
                }
                remember(std::move(found.source));
                return changed;
            }
        }
        setDamagedAside(file);  // takes the lock itself: nobody waits for it while the user is warned
    }
}

bool StoredDocument::isOutOfDate() const {
    Source now{path(), std::nullopt, 0};
    try {
        if (now.path.empty()) {
            now.revision = revisionOfUnkeptDocument(name_);
        } else {
            now.stamp = stampOfFile(now.path);
        }
    } catch (const std::runtime_error&) {
        return true;  // reading it tells what is wrong
    }
    const std::lock_guard lock(guard_);
    return seen_ != now;
}

std::u16string StoredDocument::path() const {
    const std::u16string folder = configurationFolder();
    return folder.empty() ? folder : paths::joined(folder, text::fromBytes(name_), paths::nativeStyle);
}

StoredDocument::Found StoredDocument::find(const std::u16string& file) const {
    Found found;
    found.source.path = file;
    std::optional<WholeFile> whole =
        reportedAs<host::configurationNotRead>(file, [&] { return readWholeFile(file); });
    if (!whole) return found;
    found.source.stamp = whole->stamp;
    found.document = parsed(whole->content);
    found.isDamaged = !isOurs(found.document);
    return found;
}

void StoredDocument::setDamagedAside(const std::u16string& file) const {
    std::u16string newPath;
    {
        const auto locked = reportedAs<host::configurationNotSetAside>(
            file, [&] { return std::make_unique<LockedFile>(file); });
        if (!find(file).isDamaged) return;  // somebody else was faster
        newPath = reportedAs<host::configurationNotSetAside>(file, [&] { return locked->setAside(); });
    }
    kxWarningMsgId(host::damagedConfiguration(file, newPath));
}

json StoredDocument::updateUnkept(const std::function<void(json&)>& change) {
    UnkeptDocument unkept = changeUnkeptDocument(name_, [&](json& document) { applyTo(document, change); });
    remember({{}, std::nullopt, unkept.revision});
    return std::move(unkept.document);
}

void StoredDocument::applyTo(json& document, const std::function<void(json&)>& change) const {
    change(document);
    if (!isOurs(document)) throw std::logic_error("a change has made \"" + name_ + "\" invalid");
}

bool StoredDocument::isOurs(const json& document) const {
    try {
        return document.is_object() && isValid_(document);
    } catch (const json::exception&) {
        return false;
    }
}

void StoredDocument::remember(Source source) const {
    const std::lock_guard lock(guard_);
    seen_ = std::move(source);
}

}  // namespace korvex::runtime::configuration
