// A line from the terminal, with editing, completion and a history where the platform has them.
#pragma once

#include <memory>
#include <string>

#include "host/kwsh/completion.h"

namespace korvex::host {

enum class InputEnd { line, endOfInput, interrupt };

struct TypedLine {
    InputEnd end = InputEnd::line;
    std::u16string text;
};

class LineEditor {
public:
    virtual ~LineEditor() = default;
    /// Waits for a line; `complete` is called when Tab is pressed. `interrupt` when Ctrl-C dropped what was
    /// typed; the pending interrupt is taken then.
    virtual TypedLine read(const std::string& prompt, const CompleteLine& complete) = 0;
    /// Puts a line into the history and writes that to its file. A file that cannot be written is no error.
    virtual void remember(const std::u16string& line) = 0;
};

/// The history is the file "history" in the configuration folder, which is made when the first line is kept.
std::unique_ptr<LineEditor> makeLineEditor(const std::u16string& configurationFolder, bool isPromptColoured);

}  // namespace korvex::host
