// The conversation at a terminal.
#pragma once

#include <functional>

#include "host/kwsh/line_editor.h"
#include "host/kwsh/session.h"

namespace korvex::host {

/// Reads and runs statements up to `exit` or the end of the input. Ctrl-C drops the statement that is being
/// typed, and Tab completes it. `beforeStatement` is called before each one.
void runPrompt(Session& session, LineEditor& editor, const std::function<void()>& beforeStatement);

}  // namespace korvex::host
