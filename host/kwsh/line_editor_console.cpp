// Lines from a console that has editing and a history of its own.
#include <cstdio>
#include <iostream>

#include "host/kwsh/line_editor.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/text/encoding.h"

namespace korvex::host {
namespace {

class ConsoleEditor : public LineEditor {
public:
    TypedLine read(const std::string& prompt, const CompleteLine&) override {
        std::cout << prompt << std::flush;
        std::string line;
        const bool hasLine = static_cast<bool>(std::getline(std::cin, line));
        if (runtime::interpreter::takeInterrupt()) {
            std::cin.clear();
            std::cout << '\n';
            return {InputEnd::interrupt, {}};
        }
        if (!hasLine) return {InputEnd::endOfInput, {}};
        if (line.ends_with('\r')) line.pop_back();
        return {InputEnd::line, runtime::text::fromBytes(line)};
    }

    void remember(const std::u16string&) override {}
};

}  // namespace

std::unique_ptr<LineEditor> makeLineEditor(const std::u16string&, bool) {
    return std::make_unique<ConsoleEditor>();
}

}  // namespace korvex::host
