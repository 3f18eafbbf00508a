// The options of `fileattrib`: which modes and modifiers are understood, and what they make of a file.
//
// The lines of an input are mode, users and modifier, as many as there are.
#include <array>
#include <vector>

#include "fuzz/support/fuzz_input.h"
#include "io/filesystem/filemanip/file_attributes.h"
#include "platform/foundation_filesystem.h"
#include "tests/support/scratch_folder.h"

namespace korvex::fuzz {

namespace core = korvex::io::filesystem::core;
using fl::filesystem::file_status;
using korvex::filemanip::FileAttributes;

namespace {

constexpr std::u16string_view letters = u"ahsw";
constexpr std::array<file_status::perms, 4> bits{file_status::archive_file, file_status::hidden_file,
                                                 file_status::system_file, file_status::owner_write};

/// Which attributes are set, by the place of their letter.
using Attributes = std::array<bool, letters.size()>;
constexpr Attributes atFirst{false, true, false, true};

/// The words of a mode; blanks separate, and nothing else does.
std::vector<std::u16string> wordsOf(std::u16string_view mode) {
    std::vector<std::u16string> words(1);
    for (const char16_t unit : mode) {
        if (unit == u' ') {
            words.emplace_back();
        } else {
            words.back() += unit;
        }
    }
    std::erase(words, u"");
    return words;
}

bool isUnderstood(const std::u16string& word) {
    return word.size() == 2 && (word[0] == u'+' || word[0] == u'-') &&
           letters.find(word[1]) != std::u16string_view::npos;
}

/// What the options must end with: the identifier of the failure, or none and the attributes.
struct Expectation {
    std::string identifier;
    Attributes attributes = atFirst;
};

Expectation expectationOf(const std::vector<std::u16string>& options) {
    Expectation expected;
    Attributes wanted = atFirst;
    for (const std::u16string& word : wordsOf(options[0])) {
        if (!isUnderstood(word)) return {"KORVEX:FILEATTRIB:ModeSyntaxError"};
        wanted[letters.find(word[1])] = word[0] == u'+';
    }
    const bool hasModifier = options.size() == 3;
    if (hasModifier && !options[2].starts_with(u's') && !options[2].starts_with(u'S')) {
        return {"KORVEX:FILEATTRIB:ModifierSyntaxError"};
    }
    expected.attributes = wanted;
    return expected;
}

/// A file whose attributes are as at first again for every input.
class File {
public:
    File() : path_(scratch_.writeFile("file").u16string()) {}

    const std::u16string& path() const noexcept { return path_; }

    void reset() const {
        for (std::size_t i = 0; i < bits.size(); ++i) {
            const auto operation = atFirst[i] ? file_status::perms_add : file_status::perms_remove;
            fl::filesystem::permissions(path_, operation | bits[i]);
        }
    }

    Attributes attributes() const {
        const file_status::perms present = fl::filesystem::status(path_).permissions();
        Attributes attributes{};
        for (std::size_t i = 0; i < bits.size(); ++i)
            attributes[i] = (present & bits[i]) != 0;
        return attributes;
    }

private:
    korvex::tests::ScratchFolder scratch_;
    std::u16string path_;
};

}  // namespace

void examine(std::string_view input) {
    static const File file;
    const std::u16string text = textOf(input);
    std::u16string_view rest = text;
    std::vector<std::u16string> options{std::u16string(takeLine(rest))};
    while (!rest.empty() && options.size() < 3)
        options.emplace_back(takeLine(rest));

    file.reset();
    const core::Status status = FileAttributes().Process({file.path()}, options);
    const Expectation expected = expectationOf(options);
    require(core::detail::GetID(status.exception) == expected.identifier, "the outcome is as defined", text);
    require((status.code == core::Status::success) == expected.identifier.empty(), "as is its code", text);
    require(file.attributes() == expected.attributes, "the attributes are as the mode says", text);
}

}  // namespace korvex::fuzz
