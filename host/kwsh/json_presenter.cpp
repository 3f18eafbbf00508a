// The fields of a statement's object, in their order.
#include "host/kwsh/json_presenter.h"

#include <algorithm>
#include <array>

namespace korvex::host {

namespace {

using runtime::dispatcher::EnvironmentEvent;
using Kind = EnvironmentEvent::Kind;

struct EventForm {
    Kind kind;
    std::string_view name;
    /// Under which key its texts stand; empty for an event without any.
    std::string_view key;
    bool hasList = false;
};

constexpr std::array eventForms = {
    EventForm{Kind::folderOutOfDate, "folderOutOfDate", "folder"},
    EventForm{Kind::pathRefreshRequested, "pathRefreshRequested", ""},
    EventForm{Kind::functionsCleared, "functionsCleared", "path"},
    EventForm{Kind::pathEntriesRemoved, "pathEntriesRemoved", "folders", true},
    EventForm{Kind::pathEntriesRestored, "pathEntriesRestored", ""},
    EventForm{Kind::searchPathRefreshed, "searchPathRefreshed", ""},
    EventForm{Kind::upstreamEntriesNotified, "upstreamEntriesNotified", "location"},
    EventForm{Kind::functionCalled, "functionCalled", "name"},
};

Json jsonEvent(const EnvironmentEvent& event) {
    const EventForm& form = *std::ranges::find(eventForms, event.kind, &EventForm::kind);
    Json json = Json::object();
    json["event"] = form.name;
    if (form.key.empty()) return json;
    Json texts = Json::array();
    for (const std::u16string& text : event.texts)
        texts.push_back(jsonText(text));
    json[std::string(form.key)] = form.hasList ? std::move(texts) : std::move(texts.at(0));
    return json;
}

}  // namespace

void JsonPresenter::statementBegins(const SourceStatement& statement) {
    printed_.clear();
    isHead_ = isBlockHead(statement);
    object_ = Json::object();
    object_["line"] = statement.line;
    object_["statement"] = jsonText(statement.text);
    object_["printed"] = nullptr;
    object_["warnings"] = Json::array();
    object_["outputs"] = Json::array();
    object_["error"] = nullptr;
    object_["events"] = Json::array();
}

void JsonPresenter::printed(std::u16string_view text) { printed_ += text; }

void JsonPresenter::warned(const runtime::interpreter::Warning& warning) {
    object_["warnings"].push_back(jsonMessage(warning.identifier, warning.text));
}

void JsonPresenter::result(const std::string& name, const kxArray* value, bool) {
    Json output = Json::object();
    output["name"] = name;
    output["value"] = jsonValue(value);
    object_["outputs"].push_back(std::move(output));
}

void JsonPresenter::failed(const Failure& failure) {
    object_["error"] = jsonMessage(failure.identifier, failure.text);
}

void JsonPresenter::caught(const Failure& failure) {
    failed(failure);
    object_["error"]["caught"] = true;
}

void JsonPresenter::told(const EnvironmentEvent& event) { object_["events"].push_back(jsonEvent(event)); }

bool JsonPresenter::hasSomethingToTell() const {
    return !printed_.empty() || !object_["warnings"].empty() || !object_["error"].is_null() ||
           !object_["events"].empty();
}

void JsonPresenter::statementEnds() {
    if (isHead_ && !hasSomethingToTell()) return;
    object_["printed"] = jsonText(printed_);
    output_ << jsonLine(object_) << '\n' << std::flush;
}

}  // namespace korvex::host
