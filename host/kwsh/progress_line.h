// The one line that tells how far a long transfer or removal is.
#pragma once

#include <cstddef>
#include <functional>
#include <mutex>
#include <ostream>

#include "host/kwsh/presenter.h"
#include "host/kwsh/progress_pace.h"
#include "runtime/storage/transfer_progress.h"

namespace korvex::host {

/// Where and when a progress line is drawn.
struct ProgressSurroundings {
    std::ostream& terminal;
    std::function<std::size_t()> columns;
    std::function<ProgressTime()> clock;
};

/// Passes everything on to another presenter, and draws the line while a statement runs: behind half a
/// second, and away again before anything is shown and when the statement ends. It observes the storage layer
/// for as long as it lives.
class ProgressLine : public Presenter, private runtime::storage::ProgressObserver {
public:
    ProgressLine(Presenter& presenter, ProgressSurroundings surroundings);
    ~ProgressLine() override;
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void plainLine(std::u16string_view line) override;
    void blockBegins(const SourceStatement& statement) override;
    void blockEnds() override;
    void statementBegins(const SourceStatement& statement) override;
    void printed(std::u16string_view text) override;
    void warned(const runtime::interpreter::Warning& warning) override;
    void result(const std::string& name, const kxArray* value, bool isShown) override;
    void failed(const Failure& failure) override;
    void caught(const Failure& failure) override;
    void told(const runtime::dispatcher::EnvironmentEvent& event) override;
    void statementEnds() override;

private:
    /// From the threads that do the work.
    void progressed(const runtime::storage::Progress& progress) override;
    /// With the mutex held.
    void draw(const std::u16string& name, ProgressTime now);
    void erase();

    const ProgressSurroundings surroundings_;
    /// For all that follows, and the streams.
    std::mutex mutex_;
    Presenter& presenter_;
    ProgressPace pace_;
    bool isRunning_ = false;
    /// The cursor stands behind printed text: a line drawn there would overwrite it.
    bool isInsideLine_ = false;
    std::size_t drawnWidth_ = 0;
    runtime::storage::ProgressObserver* earlierObserver_ = nullptr;
};

}  // namespace korvex::host
