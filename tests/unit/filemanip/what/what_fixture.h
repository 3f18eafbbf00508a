// `what` as the interpreter calls it: in a scratch folder, with an empty search path, in a window of 80
// columns.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/path_management.h"
#include "runtime/configuration/configuration_folder.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/dispatcher/folder_views.h"
#include "runtime/dispatcher/search_path.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/filemanip/dir_listing/listing_outcome.h"

namespace korvex::filemanip::tests {

using Names = std::vector<std::string>;

inline constexpr const char* groupFields[] = {"k",   "klapp", "kapp", "klx", "kat",     "kex",
                                              "kdl", "zlx",   "zfx",  "p",   "classes", "packages"};

inline ListingOutcome what(int nlhs, const std::vector<const kxArray*>& arguments) {
    const PrintedText printed;
    ListingOutcome outcome{call(bnFullWhatFcn, nlhs, arguments), {}};
    outcome.printed = printed.text();
    return outcome;
}

inline ListingOutcome whatOf(int nlhs, const std::vector<std::u16string>& words) {
    std::vector<Array> arrays;
    std::vector<const kxArray*> arguments;
    for (const std::u16string& word : words) {
        arrays.push_back(text(word));
        arguments.push_back(arrays.back().get());
    }
    return what(nlhs, arguments);
}

/// `what(...)` without an output: what is printed.
inline std::string printedBy(const std::vector<std::u16string>& words) {
    const ListingOutcome outcome = whatOf(0, words);
    EXPECT_EQ(outcome.errorIdentifier, "");
    return outcome.printed;
}

/// `s = what(...)`, which prints nothing.
inline Array resultOf(const std::vector<std::u16string>& words) {
    ListingOutcome outcome = whatOf(1, words);
    EXPECT_EQ(outcome.errorIdentifier, "");
    EXPECT_EQ(outcome.printed, "");
    return std::move(outcome.outputs[0]);
}

/// The folders of a result, in its order.
inline Names foldersOf(const Array& result) { return column(result, "path"); }
inline Names foldersFor(const std::vector<std::u16string>& words) { return foldersOf(resultOf(words)); }

/// The names of one group of an element.
inline Names groupOf(const Array& result, std::size_t element, const char* group) {
    const kxArray* const cell = field(result, element, group);
    EXPECT_EQ(kxGetClassID(cell), kxCELL_CLASS);
    EXPECT_EQ(kxGetN(cell), 1U);
    Names names;
    for (std::size_t i = 0; i < kxGetNumberOfElements(cell); ++i)
        names.push_back(textOf(kxGetCell(cell, i)));
    return names;
}

inline std::string notFoundLine(const std::string& name) {
    return "The folder \"" + name + "\" was not found. Check the spelling and the search path.\n";
}

class WhatTest : public testing::Test {
protected:
    WhatTest() {
        runtime::configuration::setConfigurationFolder(configuration_.text());
        runtime::dispatcher::forgetFolderViews();
        moveTo("");
    }
    ~WhatTest() override {
        runtime::dispatcher::setCurrentFolderPath(u"/");
        runtime::configuration::setConfigurationFolder(u"");
        runtime::dispatcher::forgetFolderViews();
    }

    void moveTo(const std::filesystem::path& folder) const {
        runtime::dispatcher::setCurrentFolderPath((scratch_.path() / folder).u16string());
    }
    std::string here(const std::string& name = {}) const {
        return (name.empty() ? scratch_.path() : scratch_.path() / name).string();
    }
    std::u16string path(const std::string& name) const { return (scratch_.path() / name).u16string(); }
    void makeFiles(const Names& names) const {
        for (const std::string& name : names)
            scratch_.writeFile(name);
    }
    void makeFolders(const Names& names) const {
        for (const std::string& name : names)
            scratch_.makeFolder(name);
    }
    void link(const std::string& name, const std::string& target) const {
        std::filesystem::create_directory_symlink(target, scratch_.path() / name);
    }
    void putOnPath(const Names& folders) const {
        std::vector<std::u16string> paths;
        for (const std::string& folder : folders)
            paths.push_back(scratch_.makeFolder(folder).u16string());
        ASSERT_TRUE(runtime::dispatcher::addToSearchPath(paths).empty());
    }
    /// The lines of a folder in which there is one code file of that name.
    static std::string block(const std::string& folder, const std::string& name, bool isCurrent = false) {
        return "\nKORVEX Code files in " + std::string(isCurrent ? "the current folder " : "folder ") +
               folder + "\n" + name + "  \n\n\n";
    }

    korvex::tests::ScratchFolder scratch_;
    korvex::tests::ScratchFolder configuration_;
    WindowOfColumns window_{80};
};

}  // namespace korvex::filemanip::tests
