// Drawing and erasing with nothing but carriage returns and blanks, which every terminal knows.
#include "host/kwsh/progress_line.h"

#include <string>
#include <utility>

#include "host/kwsh/progress_text.h"
#include "host/kwsh/text_layout.h"
#include "runtime/text/encoding.h"

namespace korvex::host {

namespace storage = runtime::storage;

ProgressLine::ProgressLine(Presenter& presenter, ProgressSurroundings surroundings)
    : surroundings_(std::move(surroundings)), presenter_(presenter) {
    earlierObserver_ = storage::setProgressObserver(this);
}

ProgressLine::~ProgressLine() {
    storage::setProgressObserver(earlierObserver_);
    erase();
}

// --------------------------------------------------------------------------------------------- presenter

void ProgressLine::plainLine(std::u16string_view line) { presenter_.plainLine(line); }

void ProgressLine::blockBegins(const SourceStatement& statement) { presenter_.blockBegins(statement); }

void ProgressLine::blockEnds() { presenter_.blockEnds(); }

void ProgressLine::statementBegins(const SourceStatement& statement) {
    const std::lock_guard lock(mutex_);
    pace_.begin(surroundings_.clock());
    isRunning_ = true;
    presenter_.statementBegins(statement);
}

void ProgressLine::printed(std::u16string_view text) {
    const std::lock_guard lock(mutex_);
    erase();
    presenter_.printed(text);
    if (!text.empty()) isInsideLine_ = !text.ends_with(u'\n');
}

void ProgressLine::warned(const runtime::interpreter::Warning& warning) {
    const std::lock_guard lock(mutex_);
    erase();
    presenter_.warned(warning);
    isInsideLine_ = false;
}

void ProgressLine::result(const std::string& name, const kxArray* value, bool isShown) {
    const std::lock_guard lock(mutex_);
    erase();
    presenter_.result(name, value, isShown);
    isInsideLine_ = isInsideLine_ && !isShown;
}

void ProgressLine::failed(const Failure& failure) {
    const std::lock_guard lock(mutex_);
    erase();
    presenter_.failed(failure);
    isInsideLine_ = false;
}

void ProgressLine::caught(const Failure& failure) {
    const std::lock_guard lock(mutex_);
    erase();
    presenter_.caught(failure);
}

void ProgressLine::told(const runtime::dispatcher::EnvironmentEvent& event) {
    const std::lock_guard lock(mutex_);
    presenter_.told(event);
}

void ProgressLine::statementEnds() {
    const std::lock_guard lock(mutex_);
    isRunning_ = false;
    erase();
    presenter_.statementEnds();
    isInsideLine_ = false;
}

// ------------------------------------------------------------------------------------------------ line

void ProgressLine::progressed(const storage::Progress& progress) {
    const std::lock_guard lock(mutex_);
    if (!isRunning_) return;
    const ProgressTime now = surroundings_.clock();
    pace_.record({progress.itemsDone, progress.itemsKnown, progress.bytesDone, progress.bytesKnown}, now);
    if (!isInsideLine_ && pace_.isDue(now)) draw(progress.location.getName(), now);
}

void ProgressLine::draw(const std::u16string& name, ProgressTime now) {
    // A character in the last column would take some terminals to the next line.
    const std::size_t columns = surroundings_.columns();
    ProgressView view = pace_.view(now);
    view.name = name;
    const std::u16string text = progressText(view, columns > 1 ? columns - 1 : 1);
    const std::size_t width = widthOf(text);
    const std::string padding(drawnWidth_ > width ? drawnWidth_ - width : 0, ' ');
    surroundings_.terminal << '\r' + runtime::text::toDisplayBytes(text) + padding << std::flush;
    drawnWidth_ = width;
    pace_.shown(now);
}

void ProgressLine::erase() {
    if (drawnWidth_ == 0) return;
    surroundings_.terminal << '\r' + std::string(drawnWidth_, ' ') + '\r' << std::flush;
    drawnWidth_ = 0;
}

}  // namespace korvex::host
