// Attributes of the files of a list: order, links, links that somebody swaps in, and trees without end.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/filesystem_core.h"
#include "platform/storage_vfs.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/process/posix/file_descriptor.h"
#include "runtime/text/encoding.h"
#include "tests/support/posix/few_open_files.h"
#include "tests/support/posix/ordinary_user.h"
#include "tests/support/posix/swapping.h"
#include "tests/unit/attributes/posix/attribute_fixture.h"

namespace korvex::tests {
namespace {

namespace core = korvex::io::filesystem::core;
namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
using fl::filesystem::ListedFiles;
using runtime::process::FileDescriptor;

constexpr file_status::perms addWrite = file_status::perms_add | file_status::owner_write;
constexpr file_status::perms removeWrite = file_status::perms_remove | file_status::owner_write;

class ListedFilesTest : public AttributesTest {
protected:
    ListedFilesTest() {
        for (const char* file :
             {"tree/a/file", "tree/a/b/file", "tree/c/file", "guarded/file", "guarded/b/file"})
            scratch_.writeFile(file);
        setMode("guarded/file", 0444);
        setMode("guarded/b/file", 0444);
        setMode("guarded/b", 0555);
        setMode("guarded", 0555);
    }
    ~ListedFilesTest() override { setMode("guarded", 0755); }

    static std::vector<std::u16string> listOf(const std::u16string& name) {
        core::FileListCreator creator;
        creator.AddFiles(name, boost::none, false, true, false);
        return creator.GetFiles();
    }
    static void changeAll(const std::vector<std::u16string>& list, const std::u16string& named,
                          file_status::perms mask) {
        ListedFiles files(named);
        for (const std::u16string& path : list)
            files.permissions(path, mask);
    }
    bool isGuarded() const {
        return modeOf("guarded") == 0555 && modeOf("guarded/file") == 0444 && modeOf("guarded/b") == 0555 &&
               modeOf("guarded/b/file") == 0444;
    }
    bool isWritable(const std::string& name) const { return (modeOf(name) & 0200) != 0; }
};

TEST_F(ListedFilesTest, EveryFileOfATreeIsChanged) {
    changeAll(listOf(at("tree")), at("tree"), removeWrite);
    for (const char* name :
         {"tree", "tree/a", "tree/a/file", "tree/a/b", "tree/a/b/file", "tree/c", "tree/c/file"})
        EXPECT_FALSE(isWritable(name)) << name;
    changeAll(listOf(at("tree")), at("tree"), addWrite);
    for (const char* name :
         {"tree", "tree/a", "tree/a/file", "tree/a/b", "tree/a/b/file", "tree/c", "tree/c/file"})
        EXPECT_TRUE(isWritable(name)) << name;
}

TEST_F(ListedFilesTest, DeepTreeOfManyFilesNeedsFewOpenFiles) {
    constexpr int levels = 60;
    constexpr int files = 700;
    std::string folder = "deep";
    for (int level = 0; level < levels; ++level)
        folder += "/d";
    for (int file = 0; file < files; ++file)
        scratch_.writeFile(folder + '/' + std::to_string(file));
    const std::vector<std::u16string> list = listOf(at("deep"));
    for (const bool isListKnown : {false, true}) {
        const FewOpenFiles few(100);
        ListedFiles changes(at("deep"), isListKnown ? &list : nullptr);
        for (const std::u16string& path : list)
            ASSERT_NO_THROW(changes.permissions(path, isListKnown ? addWrite : removeWrite));
    }
    EXPECT_TRUE(isWritable(folder + "/0"));
    EXPECT_TRUE(isWritable(folder + "/699"));
}

TEST_F(ListedFilesTest, AnyOrderIsRight) {
    changeAll({at("tree/c/file"), at("tree/a/b/file"), at("tree/a/file"), at("guarded/b/file"), at("tree")},
              u"", removeWrite);
    EXPECT_FALSE(isWritable("tree/c/file"));
    EXPECT_FALSE(isWritable("tree/a/b/file"));
    EXPECT_FALSE(isWritable("tree/a/file"));
    EXPECT_FALSE(isWritable("tree"));
    EXPECT_TRUE(isWritable("tree/a"));
}

TEST_F(ListedFilesTest, LinksInATreeAreLeftAlone) {
    fs::create_directory_symlink("../guarded", scratch_.path() / "tree/folder");
    fs::create_symlink("../guarded/file", scratch_.path() / "tree/file");
    fs::create_symlink("nothing", scratch_.path() / "tree/nowhere");
    changeAll(listOf(at("tree")), at("tree"), addWrite | file_status::hidden_file);
    EXPECT_TRUE(isGuarded());
    EXPECT_EQ(storedOf("guarded/file"), "none");
    EXPECT_EQ(storedOf("tree/c/file"), "0x2");
}

TEST_F(ListedFilesTest, OfMatchesALinkIsLeftAloneAndTheFolderInFrontMayBeALink) {
    fs::create_directory_symlink("tree/a", scratch_.path() / "link");
    fs::create_symlink("../../guarded/file", scratch_.path() / "tree/a/fine");
    changeAll(listOf(at("link/fi*")), at("link/fi*"), addWrite | file_status::hidden_file);
    EXPECT_EQ(storedOf("tree/a/file"), "0x2");
    EXPECT_TRUE(isGuarded());
}

TEST_F(ListedFilesTest, TheNamedPathMayBeALink) {
    fs::create_symlink("tree/c/file", scratch_.path() / "link");
    changeAll({at("link")}, at("link"), removeWrite);
    EXPECT_FALSE(isWritable("tree/c/file"));
}

TEST_F(ListedFilesTest, AFolderThatBecameALinkSinceItWasListedIsNotEntered) {
    const std::vector<std::u16string> list = listOf(at("tree"));
    fs::rename(scratch_.path() / "tree/a", scratch_.path() / "aside");
    fs::create_directory_symlink("../guarded", scratch_.path() / "tree/a");
    EXPECT_THROW(changeAll(list, at("tree"), addWrite), vfs::Exception);
    EXPECT_TRUE(isGuarded());
}

TEST_F(ListedFilesTest, ANamedFolderThatBecameALinkSinceItWasListedIsNotEntered) {
    const std::vector<std::u16string> list = {at("tree/b"), at("tree/b/file"), at("tree/file")};
    fs::rename(scratch_.path() / "tree", scratch_.path() / "aside");
    fs::create_directory_symlink("guarded", scratch_.path() / "tree");
    EXPECT_THROW(changeAll(list, at("tree"), addWrite), vfs::Exception);
    EXPECT_TRUE(isGuarded());
}

TEST_F(ListedFilesTest, AFolderThatIsSwappedForALinkMeanwhileLeadsNowhere) {
    fs::create_directory_symlink("../guarded", scratch_.path() / "swapped");
    const Swapping swapping(scratch_.path() / "tree/a", scratch_.path() / "swapped");
    const std::vector<std::u16string> list = {at("tree/a/b"), at("tree/a/b/file"), at("tree/a/file")};
    constexpr int rounds = 2000;
    for (int round = 0; round < rounds; ++round) {
        try {
            changeAll(list, at("tree"), round % 2 == 0 ? removeWrite : addWrite);
        } catch (const vfs::Exception&) {
            continue;  // it was a link at that moment
        }
    }
    EXPECT_TRUE(isGuarded());
}

TEST_F(ListedFilesTest, AFileThatIsSwappedForALinkMeanwhileLeadsNowhere) {
    fs::create_symlink("../../guarded/file", scratch_.path() / "swapped");
    const Swapping swapping(scratch_.path() / "tree/c/file", scratch_.path() / "swapped");
    ListedFiles files(at("tree"));
    constexpr int rounds = 20'000;
    constexpr file_status::perms removal = removeWrite | file_status::hidden_file;
    constexpr file_status::perms addition = addWrite | file_status::hidden_file;
    for (int round = 0; round < rounds && isGuarded(); ++round) {
        try {
            files.permissions(at("tree/c/file"), round % 2 == 0 ? removal : addition);
        } catch (const vfs::Exception&) {
            continue;  // it was a link at that moment
        }
    }
    EXPECT_TRUE(isGuarded());
    EXPECT_EQ(storedOf("guarded/file"), "none");
}

TEST_F(ListedFilesTest, TwoFilesThatAreSwappedMeanwhileKeepTheirOwnBits) {
    setMode("", 0777);
    setMode("tree", 0777);
    // The superuser may write what is write-protected, and so would never go that way.
    const OrdinaryUser user;
    for (const auto& [file, mode] : {std::pair{"tree/first", 0755U}, std::pair{"tree/second", 0640U}}) {
        scratch_.writeFile(file);
        setMode(file, mode);
    }
    constexpr file_status::perms hidden = file_status::hidden_file;
    constexpr file_status::perms masks[] = {file_status::perms_add | hidden, addWrite | hidden,
                                            file_status::perms_remove | hidden, removeWrite | hidden};
    {
        const Swapping swapping(scratch_.path() / "tree/first", scratch_.path() / "tree/second");
        ListedFiles files(at("tree"));
        constexpr int rounds = 5000;
        for (int round = 0; round < rounds; ++round)
            for (const file_status::perms mask : masks)
                files.permissions(at("tree/first"), mask);
    }
    const std::set<mode_t> bits = {modeOf("tree/first") & ~0200U, modeOf("tree/second") & ~0200U};
    EXPECT_EQ(bits, (std::set<mode_t>{0555, 0440}));
}

TEST_F(ListedFilesTest, ATreeDeeperThanAnyPathIsChangedToItsEnd) {
    constexpr int depth = 300;
    const std::string name = "folder-on-the-way";
    FileDescriptor folder(::open((scratch_.path() / "tree/c").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    std::u16string deepest = at("tree/c");
    for (int level = 0; level < depth; ++level) {
        ASSERT_EQ(::mkdirat(folder.get(), name.c_str(), 0755), 0);
        folder = FileDescriptor(::openat(folder.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        deepest += u"/folder-on-the-way";
    }
    ASSERT_EQ(::mknodat(folder.get(), "last", S_IFREG | 0644, 0), 0);
    deepest += u"/last";

    const std::vector<std::u16string> list = listOf(at("tree"));
    ASSERT_EQ(list.size(), 8U + depth);
    changeAll(list, at("tree"), removeWrite | file_status::archive_file);
    EXPECT_EQ(fl::filesystem::status(deepest).permissions(), file_status::no_perms);
    fl::filesystem::permissions(deepest, file_status::perms_add | file_status::archive_file);
    EXPECT_EQ(fl::filesystem::status(deepest).permissions(), file_status::archive_file);
    changeAll(list, at("tree"), addWrite);
    EXPECT_EQ(fl::filesystem::status(deepest).permissions(),
              file_status::archive_file | file_status::owner_write);
}

TEST_F(ListedFilesTest, APendingInterruptStops) {
    ListedFiles files(at("tree"));
    files.permissions(at("tree/c"), removeWrite);
    runtime::interpreter::raiseInterrupt();
    EXPECT_THROW(files.permissions(at("tree/c/file"), removeWrite), vfs::Exception);
    runtime::interpreter::takeInterrupt();
    EXPECT_TRUE(isWritable("tree/c/file"));
}

}  // namespace
}  // namespace korvex::tests
