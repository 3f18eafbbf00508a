// For programs: one JSON object a statement, on one line.
//
// Of a block each statement in it that is run has its object, every time it is run; of its heads, as `if x`,
// those in which something was printed, warned of, told or wrong. A failure that a `try` catches has
// `"caught": true` beside its text.
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
    void caught(const Failure& failure) override;
    void told(const runtime::dispatcher::EnvironmentEvent& event) override;
    void statementEnds() override;

private:
    bool hasSomethingToTell() const;

    std::ostream& output_;
    bool isHead_ = false;
    Json object_;
    std::u16string printed_;
};

}  // namespace korvex::host
