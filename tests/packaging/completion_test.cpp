// The completion of kwsh in bash, as bash calls it.
#include <gmock/gmock.h>

#include "runtime/process/process.h"
#include "runtime/text/encoding.h"
#include "tests/packaging/listed_options.h"
#include "tests/packaging/text_files.h"
#include "tests/support/scratch_folder.h"

namespace korvex::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class Completion : public testing::Test {
protected:
    /// What is offered for the last of the words that stand on the line, as bash takes it apart; in the
    /// scratch folder.
    std::vector<std::string> offered(const std::string& words) {
        const std::string script = projectPath("share/bash-completion/kwsh").string();
        const std::string command = "bash --norc --noprofile -c '. \"" + script + "\"; COMP_WORDS=(kwsh " +
                                    words + "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _kwsh; " +
                                    "[[ ${#COMPREPLY[@]} -eq 0 ]] || printf \"%s\\n\" \"${COMPREPLY[@]}\"'";
        std::string output;
        const int status =
            runtime::process::runShellCommand(runtime::text::fromBytes(command), scratch.text(),
                                              [&output](std::string_view bytes) { output += bytes; });
        EXPECT_EQ(status, 0) << output;
        return linesOf(output);
    }

    ScratchFolder scratch;
};

TEST_F(Completion, OffersTheOptionsThatHelpListsAndNoOthers) {
    std::set<std::string> options;
    for (const std::string& option : offered("-"))
        options.insert(option.substr(0, option.find('=')));
    EXPECT_THAT(options, testing::ContainerEq(listedOptions()));
}

TEST_F(Completion, OffersOptionsByTheirBeginning) {
    EXPECT_THAT(offered("--stop"), ElementsAre("--stop-on-error"));
    EXPECT_THAT(offered("--json --trace-"), ElementsAre("--trace-file"));
}

TEST_F(Completion, OffersFoldersForFolders) {
    scratch.makeFolder("two words");
    scratch.writeFile("two.k");
    EXPECT_THAT(offered("--cd tw"), ElementsAre("two words"));
    EXPECT_THAT(offered("--config = tw"), ElementsAre("two words"));
}

TEST_F(Completion, OffersScriptsAndTheFoldersOnTheWayToThem) {
    scratch.makeFolder("data");
    scratch.writeFile("do it.k");
    scratch.writeFile("document.txt");
    EXPECT_THAT(offered("d"), UnorderedElementsAre("data", "do it.k"));
    EXPECT_THAT(offered("--trace d"), UnorderedElementsAre("data", "do it.k"));
    EXPECT_THAT(offered("--trace-file doc"), ElementsAre("document.txt"));
}

TEST_F(Completion, OffersTheWordsOfAnOption) {
    EXPECT_THAT(offered("--color ="), ElementsAre("auto", "always", "never"));
    EXPECT_THAT(offered("--color = n"), ElementsAre("never"));
}

TEST_F(Completion, OffersNothingForTextsAndNumbers) {
    scratch.writeFile("1.k");
    for (const char* words : {"-e 1", "--columns 1", "--trace = 1"})
        EXPECT_THAT(offered(words), IsEmpty()) << words;
}

}  // namespace
}  // namespace korvex::tests
