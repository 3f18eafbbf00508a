// A session as a text that can be read, and run again: the format of the session tests.
//
//   % comments and empty lines of the script stand as they are
//   >> x = {'a', ...
//   ..      1}
//   x =
//       {'a'}    {[1]}
//
// A statement stands behind ">> ", the lines that continue it behind ".. " (an empty one is ".."), everything
// else is what it gave. A block is such a statement of several lines, as at the prompt: what the statements
// in it gave comes behind its end. An output line that looks like one of the script's, or begins with "\ ",
// gets "\ " in front, and an empty output line is "\" where nothing but empty lines follow in the output. So
// every line tells by itself, or by the lines behind it, where it comes from.
#pragma once

#include <ostream>

#include "host/kwsh/presenter.h"

namespace korvex::host {

inline constexpr std::string_view statementMark = ">> ";
inline constexpr std::string_view continuationMark = ".. ";
inline constexpr std::string_view outputMark = "\\ ";
inline constexpr std::string_view emptyOutputLine = "\\";

class TranscriptPresenter : public Presenter {
public:
    explicit TranscriptPresenter(std::ostream& output) : output_(output) {}

    void plainLine(std::u16string_view line) override;
    void blockBegins(const SourceStatement& block) override;
    void blockEnds() override;
    void statementBegins(const SourceStatement& statement) override;
    void printed(std::u16string_view text) override;
    void warned(const runtime::interpreter::Warning& warning) override;
    void result(const std::string& name, const kxArray* value, bool isShown) override;
    void failed(const Failure& failure) override;
    void statementEnds() override;

private:
    void showTyped(const SourceStatement& statement);
    /// Text that begins on a line of its own.
    void show(std::u16string_view text);
    void endLine();

    std::ostream& output_;
    bool isInsideBlock_ = false;
    std::u16string line_;
    std::size_t pendingEmptyLines_ = 0;
};

}  // namespace korvex::host
