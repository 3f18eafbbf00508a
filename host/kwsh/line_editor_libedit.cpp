// Line editing by libedit.
#include <histedit.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <filesystem>

#include "host/kwsh/line_editor.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/process/process.h"
#include "runtime/text/encoding.h"

namespace korvex::host {
namespace {

constexpr int keptLines = 1000;

/// The library turns typed bytes into characters by the C locale's rules, which must know UTF-8.
void useUtf8Locale() {
    if (std::setlocale(LC_CTYPE, "") == nullptr || MB_CUR_MAX == 1) std::setlocale(LC_CTYPE, "C.UTF-8");
}

/// One character from standard input, with the library's results: 1, 0 at the end, -1 to give up the line.
/// Used because the library itself goes on waiting after Ctrl-C.
int readCharacter(EditLine*, wchar_t* character) {
    std::mbstate_t state{};
    for (;;) {
        if (!runtime::process::waitForInput()) return -1;
        const int byte = std::fgetc(stdin);
        if (byte == EOF) return 0;
        const char unit = static_cast<char>(byte);
        const std::size_t used = std::mbrtowc(character, &unit, 1, &state);
        if (used == static_cast<std::size_t>(-2)) continue;
        if (used == static_cast<std::size_t>(-1)) *character = L'?';
        return 1;
    }
}

struct EditorDeleter {
    void operator()(EditLine* editor) const noexcept { ::el_end(editor); }
};
struct HistoryDeleter {
    void operator()(History* history) const noexcept { ::history_end(history); }
};

class LibeditEditor : public LineEditor {
public:
    explicit LibeditEditor(const std::u16string& configurationFolder)
        : folder_(runtime::text::toBytes(configurationFolder).value_or("")), history_(::history_init()) {
        useUtf8Locale();
        // What stands in a buffer would not be seen by the one who waits for input.
        std::setvbuf(stdin, nullptr, _IONBF, 0);
        editor_.reset(::el_init("kwsh", stdin, stdout, stderr));
        ::el_set(editor_.get(), EL_CLIENTDATA, this);
        ::el_set(editor_.get(), EL_PROMPT, &LibeditEditor::promptOf);
        ::el_set(editor_.get(), EL_EDITOR, "emacs");
        ::el_set(editor_.get(), EL_GETCFN, readCharacter);
        ::el_set(editor_.get(), EL_HIST, ::history, history_.get());
        HistEvent event;
        ::history(history_.get(), &event, H_SETSIZE, keptLines);
        ::history(history_.get(), &event, H_SETUNIQUE, 1);
        if (!folder_.empty()) ::history(history_.get(), &event, H_LOAD, historyPath().c_str());
    }

    TypedLine read(const std::string& prompt) override {
        prompt_ = prompt;
        ::el_resize(editor_.get());
        // Before the prompt is shown, so that a key pressed right behind it has its meaning for the editor.
        ::el_set(editor_.get(), EL_PREP_TERM, 1);
        int count = 0;
        const char* line = ::el_gets(editor_.get(), &count);
        if (runtime::interpreter::takeInterrupt()) {
            ::el_reset(editor_.get());
            std::fputc('\n', stdout);
            return {InputEnd::interrupt, {}};
        }
        if (line == nullptr || count <= 0) return {InputEnd::endOfInput, {}};
        std::string text(line, static_cast<std::size_t>(count));
        while (text.ends_with('\n') || text.ends_with('\r'))
            text.pop_back();
        return {InputEnd::line, runtime::text::fromBytes(text)};
    }

    void remember(const std::u16string& line) override {
        HistEvent event;
        ::history(history_.get(), &event, H_ENTER, runtime::text::toDisplayBytes(line).c_str());
        if (folder_.empty()) return;
        std::error_code ignored;
        std::filesystem::create_directories(folder_, ignored);
        ::history(history_.get(), &event, H_SAVE, historyPath().c_str());
    }

private:
    static const char* promptOf(EditLine* editor) {
        LibeditEditor* self = nullptr;
        ::el_get(editor, EL_CLIENTDATA, &self);
        return self->prompt_.c_str();
    }
    std::string historyPath() const { return folder_ + "/history"; }

    std::string folder_;
    std::string prompt_;
    std::unique_ptr<History, HistoryDeleter> history_;
    std::unique_ptr<EditLine, EditorDeleter> editor_;
};

}  // namespace

std::unique_ptr<LineEditor> makeLineEditor(const std::u16string& configurationFolder) {
    return std::make_unique<LibeditEditor>(configurationFolder);
}

}  // namespace korvex::host
