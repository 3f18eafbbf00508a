// Line editing by libedit.
#include <histedit.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <optional>

#include "host/kwsh/colours.h"
#include "host/kwsh/history_file.h"
#include "host/kwsh/line_editor.h"
#include "host/kwsh/typed_characters.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/interpreter/output.h"
#include "runtime/process/process.h"
#include "runtime/text/encoding.h"

namespace korvex::host {
namespace {

/// The library writes characters by the C locale's rules, which must know UTF-8.
void useUtf8Locale() {
    if (std::setlocale(LC_CTYPE, "") == nullptr || MB_CUR_MAX == 1) std::setlocale(LC_CTYPE, "C.UTF-8");
}

static_assert(sizeof(wchar_t) == sizeof(char32_t), "the editor's characters are code points");

std::wstring wideText(std::u16string_view text) {
    const std::u32string characters = charactersOf(text);
    return {characters.begin(), characters.end()};
}

std::u16string textBetween(const wchar_t* begin, const wchar_t* end) {
    return textOf(std::u32string(begin, end));
}

/// What the library takes for a part of the prompt that has no width stands between two of these.
constexpr wchar_t controlMark = L'\1';

/// The control sequence that ends the colour must have a character behind it, or the library loses it.
std::wstring promptText(const std::string& prompt, bool isColoured) {
    std::wstring text(prompt.begin(), prompt.end());
    if (!isColoured) return text;
    const auto sequence = [](std::u16string_view control) {
        return controlMark + wideText(control) + controlMark;
    };
    text.insert(text.size() - 1, sequence(accentEnd));
    return sequence(beginOf(Accent::prompt)) + text;
}

struct EditorDeleter {
    void operator()(EditLine* editor) const noexcept { ::el_end(editor); }
};
struct HistoryDeleter {
    void operator()(HistoryW* history) const noexcept { ::history_wend(history); }
};

class LibeditEditor : public LineEditor {
public:
    LibeditEditor(const std::u16string& configurationFolder, bool isPromptColoured)
        : isPromptColoured_(isPromptColoured), file_(configurationFolder), history_(::history_winit()) {
        useUtf8Locale();
        // What stands in a buffer would not be seen by the one who waits for input.
        std::setvbuf(stdin, nullptr, _IONBF, 0);
        editor_.reset(::el_init("kwsh", stdin, stdout, stderr));
        EditLine* const editor = editor_.get();
        ::el_wset(editor, EL_CLIENTDATA, this);
        ::el_wset(editor, EL_PROMPT_ESC, &LibeditEditor::promptOf, controlMark);
        ::el_wset(editor, EL_EDITOR, L"emacs");
        ::el_wset(editor, EL_GETCFN, &LibeditEditor::readCharacter);
        ::el_wset(editor, EL_ADDFN, L"complete-statement", L"Complete what is typed",
                  &LibeditEditor::completeTyped);
        ::el_wset(editor, EL_BIND, L"^I", L"complete-statement", nullptr);
        ::el_wset(editor, EL_HIST, ::history_w, history_.get());
        HistEventW event;
        ::history_w(history_.get(), &event, H_SETSIZE, static_cast<int>(HistoryFile::mostLines));
        ::history_w(history_.get(), &event, H_SETUNIQUE, 1);
        for (const std::u16string& line : file_.lines())
            enter(line);
    }

    TypedLine read(const std::string& prompt, const CompleteLine& complete) override {
        prompt_ = promptText(prompt, isPromptColoured_);
        complete_ = &complete;
        listedFor_.reset();
        ::el_resize(editor_.get());
        // Before the prompt is shown, so that a key pressed right behind it has its meaning for the editor.
        ::el_wset(editor_.get(), EL_PREP_TERM, 1);
        int count = 0;
        const wchar_t* line = ::el_wgets(editor_.get(), &count);
        if (runtime::interpreter::takeInterrupt()) {
            ::el_reset(editor_.get());
            endLine();
            return {InputEnd::interrupt, {}};
        }
        if (line == nullptr || count <= 0) {
            endLine();
            return {InputEnd::endOfInput, {}};
        }
        std::u16string text = textBetween(line, line + count);
        while (text.ends_with(u'\n') || text.ends_with(u'\r'))
            text.pop_back();
        return {InputEnd::line, std::move(text)};
    }

    void remember(const std::u16string& line) override {
        enter(line);
        file_.add(line);
    }

private:
    static LibeditEditor& selfOf(EditLine* editor) {
        LibeditEditor* self = nullptr;
        ::el_wget(editor, EL_CLIENTDATA, &self);
        return *self;
    }

    /// What comes next is not shown behind the prompt.
    static void endLine() {
        std::fputc('\n', stdout);
        std::fflush(stdout);
    }

    static wchar_t* promptOf(EditLine* editor) { return selfOf(editor).prompt_.data(); }

    /// One character from standard input, with the library's results: 1, 0 at the end, -1 to give up the
    /// line. Used because the library itself goes on waiting after Ctrl-C, and takes nothing but text.
    static int readCharacter(EditLine* editor, wchar_t* character) {
        TypedCharacters& typed = selfOf(editor).typed_;
        for (;;) {
            if (const std::optional<char32_t> complete = typed.take()) {
                *character = static_cast<wchar_t>(*complete);
                return 1;
            }
            if (!runtime::process::waitForInput()) {
                typed = TypedCharacters();
                return -1;
            }
            const int byte = std::fgetc(stdin);
            if (byte == EOF) return 0;
            typed.add(static_cast<char>(byte));
        }
    }

    /// The key Tab. No exception may pass through the library.
    static unsigned char completeTyped(EditLine* editor, wint_t) {
        try {
            return selfOf(editor).completeLine();
        } catch (...) {
            return CC_ERROR;
        }
    }

    unsigned char completeLine() {
        const LineInfoW* const info = ::el_wline(editor_.get());
        const std::u16string line = textBetween(info->buffer, info->lastchar);
        const std::size_t cursor = textBetween(info->buffer, info->cursor).size();
        const Completion completion = (*complete_)(line, cursor);
        if (completion.isEmpty()) return CC_ERROR;

        const auto replaced =
            std::u16string_view(line).substr(completion.begin, completion.end - completion.begin);
        if (replaced != completion.text) {
            replace(line, cursor, completion);
            return CC_REFRESH;
        }
        if (completion.candidates.size() == 1) return CC_NORM;
        // The second time at the same place.
        if (listedFor_ != line.substr(0, cursor)) {
            listedFor_ = line.substr(0, cursor);
            return CC_ERROR;
        }
        showList(completion.candidates);
        return CC_REDISPLAY;
    }

    void replace(std::u16string_view line, std::size_t cursor, const Completion& completion) {
        const auto characters = [line](std::size_t begin, std::size_t end) {
            return static_cast<int>(charactersOf(line.substr(begin, end - begin)).size());
        };
        ::el_cursor(editor_.get(), characters(cursor, completion.end));
        ::el_deletestr(editor_.get(), characters(completion.begin, completion.end));
        ::el_winsertstr(editor_.get(), wideText(completion.text).c_str());
    }

    static void showList(const std::vector<std::u16string>& candidates) {
        const std::u16string list = candidateList(candidates, runtime::interpreter::windowColumns());
        std::fputs(runtime::text::toDisplayBytes(u"\n" + list).c_str(), stdout);
        std::fflush(stdout);
    }

    void enter(const std::u16string& line) {
        HistEventW event;
        ::history_w(history_.get(), &event, H_ENTER, wideText(line).c_str());
    }

    const bool isPromptColoured_;
    const HistoryFile file_;
    std::wstring prompt_;
    const CompleteLine* complete_ = nullptr;
    /// What stood in front of the cursor when Tab changed nothing.
    std::optional<std::u16string> listedFor_;
    TypedCharacters typed_;
    std::unique_ptr<HistoryW, HistoryDeleter> history_;
    std::unique_ptr<EditLine, EditorDeleter> editor_;
};

}  // namespace

std::unique_ptr<LineEditor> makeLineEditor(const std::u16string& configurationFolder, bool isPromptColoured) {
    return std::make_unique<LibeditEditor>(configurationFolder, isPromptColoured);
}

}  // namespace korvex::host
