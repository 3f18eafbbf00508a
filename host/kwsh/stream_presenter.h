// For people: prints and display on one stream, errors and warnings on another, in the order in which they
// come.
#pragma once

#include <ostream>

#include "host/kwsh/presenter.h"

namespace korvex::host {

class StreamPresenter : public Presenter {
public:
    StreamPresenter(std::ostream& output, std::ostream& errors, bool areErrorsColoured = false)
        : output_(output), errors_(errors), areErrorsColoured_(areErrorsColoured) {}

    void statementBegins(const SourceStatement&) override {}
    void printed(std::u16string_view text) override;
    void warned(const runtime::interpreter::Warning& warning) override;
    void result(const std::string& name, const kxArray* value, bool isShown) override;
    void failed(const Failure& failure) override;
    void statementEnds() override;

private:
    /// What the host itself shows begins on a line of its own.
    void endPrintedLine();
    void show(std::ostream& stream, std::u16string_view text);

    std::ostream& output_;
    std::ostream& errors_;
    const bool areErrorsColoured_;
    bool isInsideLine_ = false;
};

}  // namespace korvex::host
