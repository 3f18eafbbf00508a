// What completion finds in the environment.
#include "host/kwsh/environment_names.h"

#include <gmock/gmock.h>

#include "platform/path_management.h"
#include "platform/storage_vfs.h"
#include "runtime/dispatcher/current_folder.h"
#include "tests/support/scratch_folder.h"

namespace korvex::host {
namespace {

namespace vfs = foundation::storage::vfs;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::ScratchFolder;

/// "name" and, for a folder, "name/".
std::vector<std::u16string> shown(const std::vector<FolderEntry>& entries) {
    std::vector<std::u16string> names;
    for (const FolderEntry& entry : entries)
        names.push_back(entry.isFolder ? entry.name + u"/" : entry.name);
    return names;
}

class EnvironmentNamesTest : public testing::Test {
protected:
    ~EnvironmentNamesTest() override { runtime::dispatcher::setCurrentFolderPath(before_); }

    ScratchFolder scratch;
    Workspace workspace;
    const EnvironmentNames names{workspace};

private:
    const std::u16string before_ = runtime::dispatcher::currentFolderPath();
};

TEST_F(EnvironmentNamesTest, FoldersAreTakenAgainstTheCurrentFolderOfTheEnvironment) {
    scratch.writeFile("data/notes.txt");
    scratch.writeFile("data/raw/a\xFF");
    runtime::dispatcher::setCurrentFolderPath(scratch.text() + u"/data");
    EXPECT_THAT(shown(names.entries(u"")), ElementsAre(u"notes.txt", u"raw/"));
    EXPECT_THAT(shown(names.entries(u"raw/")), ElementsAre(std::u16string{u'a', 0xDCFF}));
    EXPECT_THAT(shown(names.entries(u"../")), ElementsAre(u"data/"));
    EXPECT_THAT(shown(names.entries(scratch.text() + u"/data/raw/")), testing::SizeIs(1));
}

TEST_F(EnvironmentNamesTest, ALinkToAFolderIsAFolder) {
    scratch.makeFolder("folder");
    std::filesystem::create_directory_symlink(scratch.path() / "folder", scratch.path() / "link");
    std::filesystem::create_symlink(scratch.path() / "nothing", scratch.path() / "lost");
    EXPECT_THAT(shown(names.entries(scratch.text() + u"/")), ElementsAre(u"folder/", u"link/", u"lost"));
}

TEST_F(EnvironmentNamesTest, NamesInALocationAreWrittenAsTheLocationHasThem) {
    const vfs::Folder folder(vfs::AbsoluteIRI(u"memory://names/two%20words/100%25"),
                             Velquist::KorvexStorageSystem::GetStorageSystemReference());
    folder.createFolderRecursive();
    EXPECT_THAT(shown(names.entries(u"memory://names/")), ElementsAre(u"two%20words/"));
    const std::vector<FolderEntry> inside = names.entries(u"memory://names/two%20words/");
    ASSERT_EQ(inside.size(), 1U);
    EXPECT_EQ(vfs::AbsoluteIRI(u"memory://names/two%20words/" + inside[0].name), folder.getLocation());
}

TEST_F(EnvironmentNamesTest, WhatCannotBeListedHoldsNothing) {
    scratch.writeFile("file");
    for (const std::u16string& folder :
         {scratch.text() + u"/nothing/", scratch.text() + u"/file/", std::u16string(u"memory://"),
          std::u16string(u"nosuchscheme://box/"), std::u16string(u"http://127.0.0.1:1/"),
          std::u16string(u"a\0b/", 4)}) {
        EXPECT_THAT(shown(names.entries(folder)), IsEmpty());
    }
}

TEST_F(EnvironmentNamesTest, VariablesAreThoseOfTheWorkspace) {
    EXPECT_THAT(names.variables(), IsEmpty());
    workspace.variables["x"] = makeDouble(1);
    workspace.variables["answers"] = makeDouble(2);
    EXPECT_THAT(names.variables(), ElementsAre(u"answers", u"x"));
}

}  // namespace
}  // namespace korvex::host
