// A folder on a disk with links in it, as the current folder; only a disk has links.
#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>

#include "runtime/dispatcher/current_folder.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/filemanip/copy_move/copy_move_fixture.h"

namespace korvex::filemanip::tests {

/// In the current folder: "file" and "toFile", which leads there; "folder" with "inner" and "toFolder", which
/// leads there; "broken"; and the empty folder "d".
class LinksTest : public testing::Test {
protected:
    LinksTest() {
        scratch_.writeFile("file", "F");
        scratch_.writeFile("folder/inner", "I");
        scratch_.makeFolder("d");
        link("file", "toFile");
        link("folder", "toFolder");
        link("nowhere", "broken");
        runtime::dispatcher::setCurrentFolderPath(scratch_.text());
    }
    ~LinksTest() override { runtime::dispatcher::setCurrentFolderPath(u"/"); }

    void link(const std::filesystem::path& target, const std::filesystem::path& name) const {
        std::filesystem::create_symlink(target, scratch_.path() / name);
    }
    std::u16string at(const std::u16string& path) const { return scratch_.text() + u'/' + path; }

    static Failure copy(const std::u16string& source, const std::u16string& destination,
                        const std::u16string& links, const Texts& more = {}) {
        Texts arguments{source, destination, u"copylinkbehavior", links};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return failureOf(copyCommand, arguments);
    }
    static Failure move(const std::u16string& source, const std::u16string& destination) {
        return failureOf(moveCommand, Texts{source, destination});
    }
    static Failure moveResolved(const std::u16string& source, const std::u16string& destination) {
        return failureOf(moveCommand, Texts{source, destination, u"movelinkbehavior", u"resolve"});
    }

    /// "link to X", "folder", what a file holds, or "nothing".
    std::string whatIs(const std::filesystem::path& name) const {
        const std::filesystem::path path = scratch_.path() / name;
        if (std::filesystem::is_symlink(path))
            return "link to " + std::filesystem::read_symlink(path).string();
        if (std::filesystem::is_directory(path)) return "folder";
        if (!std::filesystem::exists(path)) return "nothing";
        std::ostringstream content;
        content << std::ifstream(path, std::ios::binary).rdbuf();
        return content.str();
    }

    korvex::tests::ScratchFolder scratch_;
    EnvironmentObserver environment_;
};

}  // namespace korvex::filemanip::tests
