// A wildcard that many files match: they go as few do, however many are worked on at once.
#include <memory>
#include <stdexcept>

#include "tests/unit/filemanip/copy_move/copy_move_fixture.h"

namespace korvex::filemanip::tests {
namespace {

using storage::Operation;

/// "/s" with a folder between many files in the order of names, and the empty folder "/d", at the settings'
/// prefix.
class ManyMatchesTest : public TransferTest {
protected:
    ManyMatchesTest() {
        put(u"/d/");
        for (int number = 10; number < 90; ++number)
            putMatch("file" + std::to_string(number));
        put(u"/s/file50folder/inner", "I");
        matches_["file50folder/"] = "";
        matches_["file50folder/inner"] = "I";
    }

    void putMatch(const std::string& name) {
        put(u"/s/" + std::u16string(name.begin(), name.end()), name);
        matches_[name] = name;
    }
    Tree treeOf(const std::u16string& folder) const { return storage_.treeOf(path(folder)); }

    Tree matches_;
};

INSTANTIATE_TEST_SUITE_P(CopyMove, ManyMatchesTest, testing::ValuesIn(allSettings()), nameOfSetting);

TEST_P(ManyMatchesTest, AllOfThemGo) {
    EXPECT_EQ(run(u"/s/file*", u"/d"), noFailure());
    EXPECT_EQ(treeOf(u"/d"), matches_);
    EXPECT_EQ(treeOf(u"/s"), command().isCopy ? matches_ : Tree());
}

TEST_P(ManyMatchesTest, FailureInTheMiddleKeepsThoseBeforeItAndNoneBehindIt) {
    const Operation operation = command().isCopy ? Operation::copyFile : Operation::moveFile;
    storage_.provider->failCall(operation, 35, {.code = vfs::noSpaceLeft});
    EXPECT_EQ(run(u"/s/file*", u"/d"), generalFailure("noSpaceLeft", u"/s/file44"));
    const Tree arrived = treeOf(u"/d");
    EXPECT_EQ(arrived.size(), 34U);
    EXPECT_EQ(arrived.rbegin()->first, "file43");
}

/// A storage that cannot say whether a file is protected, and fails in a way of its own.
class SpeechlessMemory : public storage::MemoryProvider {
public:
    bool isWritable(const storage::AbsoluteIRI&) override { throw std::runtime_error("nobody knows"); }
};

TEST(ForcedMoveTest, GoesOnWhereNobodyKnowsWhetherTheSourceIsProtected) {
    const auto memory = std::make_shared<SpeechlessMemory>();
    auto system = std::make_shared<vfs::StorageSystem>();
    system->add(u"memory", memory);
    const storage::ScopedStorageSystem scope(system);
    memory->putFile(vfs::AbsoluteIRI(u"memory://box/a"), "A");
    EXPECT_EQ(failureOf(moveCommand, {u"memory://box/a", u"memory://box/b", u"f"}), noFailure());
    EXPECT_EQ(memory->existence(vfs::AbsoluteIRI(u"memory://box/a")), provider::AsNeither);
    EXPECT_EQ(memory->existence(vfs::AbsoluteIRI(u"memory://box/b")), provider::AsFile);
}

}  // namespace
}  // namespace korvex::filemanip::tests
