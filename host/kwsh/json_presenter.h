// For programs: one JSON object a statement, on one line.
#pragma once

#include <ostream>

#include "host/kwsh/json_value.h"
#include "host/kwsh/presenter.h"

namespace korvex::host {

class JsonPresenter : public Presenter {
public:
    explicit JsonPresenter(std::ostream& output) : output_(output) {}

    void statementBegins(const SourceStatement& statement) override;
    void printed(std::u16string_view text) override;
    void warned(const runtime::interpreter::Warning& warning) override;
    void result(const std::string& name, const kxArray* value, bool isShown) override;
    void failed(const Failure& failure) override;
    void told(const runtime::dispatcher::EnvironmentEvent& event) override;
    void statementEnds() override;

private:
    std::ostream& output_;
    Json object_;
    std::u16string printed_;
};

}  // namespace korvex::host
