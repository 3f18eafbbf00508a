// docs/embedding.md against the code: what it shows is what is compiled, and it leaves no header out.
#include <gmock/gmock.h>

#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "tests/packaging/text_files.h"

namespace korvex::tests {
namespace {

using testing::ContainerEq;
using testing::HasSubstr;

struct CodeBlock {
    /// The file that the remark above it names; empty without one.
    std::string file;
    std::string language;
    std::string text;
};

std::vector<CodeBlock> codeBlocks(const std::string& document) {
    constexpr std::string_view fence = "```";
    const std::regex remark("<!-- from (\\S+) -->");
    std::vector<CodeBlock> blocks;
    std::string lineBefore;
    bool isInside = false;
    for (const std::string& line : linesOf(document)) {
        if (isInside && line == fence) {
            isInside = false;
        } else if (isInside) {
            blocks.back().text += line + '\n';
        } else if (line.starts_with(fence)) {
            std::smatch source;
            const bool hasSource = std::regex_match(lineBefore, source, remark);
            blocks.push_back({hasSource ? source[1].str() : "", line.substr(fence.size()), ""});
            isInside = true;
        }
        lineBefore = line;
    }
    return blocks;
}

/// All names of headers in the first column of the table under this heading.
std::set<std::string> headersInTable(const std::string& document, std::string_view heading) {
    const std::regex name("`([a-z_/]+\\.h)`");
    std::set<std::string> headers;
    bool isInside = false;
    for (const std::string& line : linesOf(document)) {
        isInside = line.starts_with(heading) || (isInside && line.starts_with('|'));
        if (!isInside) continue;
        const std::string cell = line.substr(0, line.find('|', 1));
        for (std::sregex_iterator found(cell.begin(), cell.end(), name), end; found != end; ++found)
            headers.insert((*found)[1].str());
    }
    return headers;
}

std::set<std::string> matchesIn(const std::string& text, const char* expression) {
    const std::regex pattern(expression);
    std::set<std::string> matches;
    for (std::sregex_iterator found(text.begin(), text.end(), pattern), end; found != end; ++found)
        matches.insert((*found)[1].str());
    return matches;
}

TEST(EmbeddingGuide, ItsCodeStandsInTheExamples) {
    std::set<std::string> files;
    for (const CodeBlock& block : codeBlocks(projectText("docs/embedding.md"))) {
        if (block.language == "sh") continue;
        ASSERT_NE(block.file, "") << "from nowhere:\n" << block.text;
        EXPECT_THAT(projectText(block.file), HasSubstr(block.text)) << block.file;
        files.insert(block.file);
    }
    EXPECT_GE(files.size(), 5U);
}

TEST(EmbeddingGuide, TellsWhatEveryHeaderOfThePlatformObligesTo) {
    std::set<std::string> headers;
    for (const auto& entry : std::filesystem::directory_iterator(projectPath("platform"))) {
        if (entry.path().extension() == ".h") headers.insert(entry.path().filename().string());
    }
    EXPECT_THAT(headersInTable(projectText("docs/embedding.md"), "| header (`platform/`)"),
                ContainerEq(headers));
}

TEST(EmbeddingGuide, TellsOfEveryHeaderOfTheRuntimeThatIsInstalled) {
    std::set<std::string> names;
    std::istringstream headers(KORVEX_RUNTIME_HEADERS);
    for (std::string header; headers >> header;)
        names.insert(std::filesystem::path(header).filename().string());
    std::set<std::string> told;
    for (const std::string& header :
         headersInTable(projectText("docs/embedding.md"), "| header (`runtime/`)"))
        told.insert(std::filesystem::path(header).filename().string());
    EXPECT_THAT(told, ContainerEq(names));
}

TEST(EmbeddingGuide, NamesTheEntryOfEveryCommand) {
    const std::string header = projectText("io/filesystem/filemanip/module_entries.h");
    const std::string guide = projectText("docs/embedding.md");
    for (const std::string& entry : matchesIn(header, "\nvoid (\\w+)\\("))
        EXPECT_THAT(guide, HasSubstr('`' + entry + '`'));
}

TEST(ModuleEntries, TheirHeaderDeclaresWhatTheModuleExports) {
    const std::string header = projectText("io/filesystem/filemanip/module_entries.h");
    const std::string exported = projectText("io/filesystem/filemanip/exports.map");
    EXPECT_THAT(matchesIn(header, "\nvoid (\\w+)\\("), ContainerEq(matchesIn(exported, "\n        (\\w+);")));
}

}  // namespace
}  // namespace korvex::tests
