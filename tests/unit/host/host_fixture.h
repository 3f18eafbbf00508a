// A session over commands of the test's own, and a presenter that keeps what it is told.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "host/kwsh/display.h"
#include "host/kwsh/script_lines.h"
#include "host/kwsh/session.h"
#include "host/kwsh/values.h"

namespace korvex::tests {

/// Every event as one text, in order: "begin x = 1", "printed ...", "warned ID", "x shown", "x set", "failed
/// ID", "told", "end", "plain % comment".
class RecordingPresenter : public host::Presenter {
public:
    void plainLine(std::u16string_view line) override { record("plain ", line); }
    void statementBegins(const host::SourceStatement& statement) override {
        record("begin ", statement.text);
    }
    void printed(std::u16string_view text) override { record("printed ", text); }
    void warned(const runtime::interpreter::Warning& warning) override {
        events.push_back("warned " + warning.identifier);
    }
    void result(const std::string& name, const kxArray* value, bool isShown) override {
        events.push_back(name + (isShown ? " shown" : " set"));
        results.push_back(host::shared(value));
    }
    void failed(const host::Failure& failure) override {
        events.push_back("failed " + failure.identifier);
        failures.push_back(failure);
    }
    void told(const runtime::dispatcher::EnvironmentEvent& event) override {
        environmentEvents.push_back(event);
        events.emplace_back("told");
    }
    void statementEnds() override { events.emplace_back("end"); }

    std::vector<std::string> events;
    std::vector<host::Value> results;
    std::vector<host::Failure> failures;
    std::vector<runtime::dispatcher::EnvironmentEvent> environmentEvents;

private:
    void record(std::string what, std::u16string_view text) {
        for (const char16_t unit : text)
            what += static_cast<char>(unit);
        events.push_back(std::move(what));
    }
};

/// Runs script texts. Commands are those of `commands`; no module is loaded.
class HostSession {
public:
    HostSession() : HostSession(nullptr) {}
    /// Tells another presenter.
    explicit HostSession(host::Presenter& other) : HostSession(&other) {}

    host::RunResult run(std::string text, bool stopsAtFailure = false) {
        host::TextLines lines(std::move(text));
        host::StatementReader reader(lines, [this](std::string_view name) {
            return commands.contains(name) || host::isCommandName(name);
        });
        return session.runAll(reader, stopsAtFailure);
    }

    /// The display of what the last statement of the text gave, without its name; the identifier of its error
    /// when it failed.
    std::string show(std::string text) {
        presenter.results.clear();
        presenter.failures.clear();
        run(std::move(text));
        if (!presenter.failures.empty()) return presenter.failures.back().identifier;
        if (presenter.results.empty()) return "nothing";
        const std::u16string shown = host::displayText("", presenter.results.back().get(), 80);
        return std::string(shown.begin() + 3, shown.end() - 1);
    }

    std::map<std::string, host::CommandEntry, std::less<>> commands;
    RecordingPresenter presenter;
    host::Session session;

private:
    explicit HostSession(host::Presenter* other)
        : session(other != nullptr ? *other : presenter, [this](std::string_view name) -> host::CommandEntry {
              const auto found = commands.find(name);
              return found == commands.end() ? nullptr : found->second;
          }) {}
};

}  // namespace korvex::tests
