// What a walk does when it runs out of something: open files, memory.
#include <fcntl.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>
#include <string>

#include "runtime/storage/providers/local/posix/tree_walk.h"
#include "tests/support/posix/few_open_files.h"
#include "tests/support/scratch_folder.h"

namespace {

/// Whether there is no memory left for a folder of a tree.
std::atomic<bool> isMemoryScarce{false};

bool isForATreeFolder(std::size_t size) noexcept {
    using korvex::runtime::storage::posix::TreeFolder;
    return size >= sizeof(TreeFolder) && size <= sizeof(TreeFolder) + 4 * sizeof(void*);
}

}  // namespace

void* operator new(std::size_t size) {
    if (isMemoryScarce.load() && isForATreeFolder(size)) throw std::bad_alloc();
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace korvex::runtime::storage::posix {
namespace {

constexpr unsigned manyWorkers = 64;

/// Opens both sides of every folder, and while it is with an entry, as many files as the copy of one needs.
class Demanding : public TreeVisitor {
public:
    bool hasDestination() const override { return true; }
    bool enter(TreeFolder& folder) override {
        if (!folder.parent()) {
            isMemoryScarce = endsMemory;
            return true;
        }
        for (const Side side : {sourceSide, destinationSide}) {
            if (const int systemError = tree->open(folder, side))
                throw WalkFailure{systemError, side, folder.relativePath()};
        }
        return true;
    }
    void visit(TreeFolder& folder, const FolderTree::Handle (&handles)[2],
               const WalkedEntry& entry) override {
        for (const Side side : {sourceSide, destinationSide}) {
            const FileDescriptor first(
                ::openat(handles[side]->get(), entry.name.c_str(), O_RDONLY | O_CLOEXEC));
            const FileDescriptor second(::openat(handles[side]->get(), ".", O_RDONLY | O_CLOEXEC));
            if (!first || !second) throw WalkFailure{errno, side, folder.relativePath()};
        }
        ++visited;
    }
    bool leave(TreeFolder&) override { return true; }

    FolderTree* tree = nullptr;
    bool endsMemory = false;
    std::atomic<std::size_t> visited{0};
};

class TreeWalkLimits : public testing::Test {
protected:
    static constexpr int wide = 100;
    static constexpr int deep = 100;

    TreeWalkLimits() {
        std::string path = "top";
        for (int number = 0; number < wide; ++number)
            scratch_.writeFile("top/folder" + std::to_string(number) + "/below/file");
        for (int level = 0; level < deep; ++level)
            scratch_.writeFile((path += "/d") + "/file");
    }

    std::size_t walk(unsigned workers, bool endsMemory = false) const {
        Demanding demanding;
        demanding.endsMemory = endsMemory;
        TreeWalk walk(demanding, workers);
        demanding.tree = &walk.tree();
        const auto top = std::make_shared<TreeFolder>(walk.tree(), nullptr, std::string());
        for (const Side side : {sourceSide, destinationSide})
            EXPECT_EQ(walk.tree().adopt(*top, side, openTop()), 0);
        walk.run(top);
        return demanding.visited;
    }

private:
    FileDescriptor openTop() const {
        const std::string path = (scratch_.path() / "top").string();
        return FileDescriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }

    tests::ScratchFolder scratch_;
};

TEST_F(TreeWalkLimits, ItGetsAlongWithAsManyOpenFilesAsTheProcessMayHave) {
    const korvex::tests::FewOpenFiles few(96);
    for (const unsigned workers : {1U, manyWorkers})
        EXPECT_EQ(walk(workers), std::size_t{wide} + deep);
}

TEST_F(TreeWalkLimits, AThreadThatGetsNoMemoryStopsTheWalk) {
    EXPECT_THROW(walk(manyWorkers, true), std::bad_alloc);
    isMemoryScarce = false;
}

}  // namespace
}  // namespace korvex::runtime::storage::posix
