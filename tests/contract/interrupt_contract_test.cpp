// An interrupt in the middle of an operation on many items: it stops, and nothing is there in part.
#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/transfer_progress.h"
#include "tests/contract/writing_contract.h"

namespace korvex::tests {
namespace {

using runtime::storage::Progress;
using runtime::storage::ProgressObserver;

/// The user who has seen enough after so many items.
class ImpatientUser : public ProgressObserver {
public:
    explicit ImpatientUser(std::uint64_t items) : items_(items) {
        earlier_ = runtime::storage::setProgressObserver(this);
    }
    ~ImpatientUser() override {
        runtime::storage::setProgressObserver(earlier_);
        runtime::interpreter::takeInterrupt();
    }
    ImpatientUser(const ImpatientUser&) = delete;
    ImpatientUser& operator=(const ImpatientUser&) = delete;

    void progressed(const Progress& progress) override {
        if (progress.itemsDone >= items_) runtime::interpreter::raiseInterrupt();
    }

private:
    const std::uint64_t items_;
    ProgressObserver* earlier_ = nullptr;
};

class Interrupted : public WritingContract {
protected:
    static constexpr std::size_t files = 400;

    void SetUp() override {
        for (std::size_t number = 0; number < files; ++number) {
            const std::u16string folder(1 + number % 20, u'd');
            provider_->makeFile(u"source/" + folder + u"/" + std::u16string(1 + number / 20, u'f'),
                                "content");
        }
    }

    template <class Work>
    static void expectInterrupted(const Work& work) {
        const auto failure = failureOf(work);
        ASSERT_TRUE(failure.has_value());
        EXPECT_EQ(failure->getErrorCode(), vfs::unknownError);
        EXPECT_EQ(failure->getExceptionContextsString(), runtime::storage::interruptedContext);
        EXPECT_TRUE(runtime::interpreter::isInterruptPending());
    }

    std::size_t wholeFilesIn(const std::u16string& path) const {
        std::size_t found = 0;
        for (const std::string& line : tree(path)) {
            const bool isFile = !line.ends_with("/");
            found += isFile;
            if (isFile) {
                EXPECT_TRUE(line.ends_with("f=content")) << line;
            }
        }
        return found;
    }
};

INSTANTIATE_TEST_SUITE_P(Contract, Interrupted, testing::ValuesIn(providersWith(&Abilities::canWrite)),
                         nameOfProvider);

TEST_P(Interrupted, ACopyStopsAndLeavesWholeFilesOnly) {
    {
        const ImpatientUser user(20);
        expectInterrupted([&] { copyFolder(u"source", u"copy", ReplaceWritable); });
    }
    EXPECT_LT(wholeFilesIn(u"copy"), files);
    EXPECT_EQ(wholeFilesIn(u"source"), files);
}

TEST_P(Interrupted, AMergingMoveLosesNothing) {
    for (std::size_t number = 0; number < 20; ++number)
        provider_->makeFolder(u"target/" + std::u16string(1 + number, u'd'));
    {
        const ImpatientUser user(20);
        expectInterrupted([&] { moveFolder(u"source", u"target", MergeFolder); });
    }
    EXPECT_GE(wholeFilesIn(u"source") + wholeFilesIn(u"target"), files);
    moveFolder(u"source", u"target", MergeFolder);
    EXPECT_EQ(wholeFilesIn(u"target"), files);
}

TEST_P(Interrupted, APendingInterruptKeepsEverythingFromBeginning) {
    runtime::interpreter::raiseInterrupt();
    expectInterrupted([&] { copyFile(u"source/d/f", u"copy", ReplaceWritable); });
    expectInterrupted([&] { moveFile(u"source/d/f", u"moved", ReplaceWritable); });
    expectInterrupted([&] { copyFolder(u"source", u"copy", ReplaceWritable); });
    expectInterrupted([&] { moveFolder(u"source", u"moved", ReplaceWritable); });
    expectInterrupted([&] { folderHandle(u"source").removeFolder(vfs::RemoveWithContents); });
    expectInterrupted([&] { fileHandle(u"source/d/f").removeFile(); });
    expectInterrupted([&] { folderHandle(u"source").listAll(u""); });
    runtime::interpreter::takeInterrupt();
    expectNothing(u"copy");
    expectNothing(u"moved");
    EXPECT_EQ(wholeFilesIn(u"source"), files);
}

TEST_P(Interrupted, AnEmptyFolderCanBeTakenBackAllTheSame) {
    provider_->makeFolder(u"made");
    runtime::interpreter::raiseInterrupt();
    folderHandle(u"made").removeFolder(vfs::RemoveEmptyFolder);
    expectError(vfs::folderNotEmpty, u"source",
                [&] { folderHandle(u"source").removeFolder(vfs::RemoveEmptyFolder); });
    EXPECT_TRUE(runtime::interpreter::takeInterrupt());
    expectNothing(u"made");
}

TEST_P(Interrupted, ARemovalStopsAndCanBeFinished) {
    {
        const ImpatientUser user(20);
        expectInterrupted([&] { folderHandle(u"source").removeFolder(vfs::RemoveWithContents); });
    }
    EXPECT_EQ(existence(u"source"), provider::AsFolder);
    EXPECT_GT(wholeFilesIn(u"source"), 0U);
    folderHandle(u"source").removeFolder(vfs::RemoveWithContents);
    expectNothing(u"source");
}

}  // namespace
}  // namespace korvex::tests
