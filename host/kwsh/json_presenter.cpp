// The fields of a statement's object, in their order.
#include "host/kwsh/json_presenter.h"

namespace korvex::host {

void JsonPresenter::statementBegins(const SourceStatement& statement) {
    printed_.clear();
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

void JsonPresenter::statementEnds() {
    object_["printed"] = jsonText(printed_);
    output_ << jsonLine(object_) << '\n' << std::flush;
}

}  // namespace korvex::host
