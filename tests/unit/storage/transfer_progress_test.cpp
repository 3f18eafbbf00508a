// Counting of what a transfer has done, and stopping it.
#include "runtime/storage/transfer_progress.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>
#include <vector>

#include "runtime/interpreter/interrupts.h"

namespace korvex::runtime::storage {
namespace {

namespace vfs = foundation::storage::vfs;

class Recorder : public ProgressObserver {
public:
    Recorder() { earlier_ = setProgressObserver(this); }
    ~Recorder() override { setProgressObserver(earlier_); }
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    void progressed(const Progress& progress) override { reports.push_back(progress); }

    std::vector<Progress> reports;

private:
    ProgressObserver* earlier_ = nullptr;
};

const vfs::AbsoluteIRI somewhere(u"memory://box/file");

TEST(TransferProgress, IsReportedWithWhatIsDoneAndKnown) {
    Recorder recorder;
    ProgressCounter counter;
    counter.found(2, 30);
    counter.finished(1, 10, [] { return somewhere; });
    counter.found(1, 0);
    counter.finished(1, 20, [] { return somewhere.getParent(); });
    ASSERT_EQ(recorder.reports.size(), 2U);
    EXPECT_EQ(recorder.reports[0].itemsDone, 1U);
    EXPECT_EQ(recorder.reports[0].itemsKnown, 2U);
    EXPECT_EQ(recorder.reports[0].bytesDone, 10U);
    EXPECT_EQ(recorder.reports[0].bytesKnown, 30U);
    EXPECT_EQ(recorder.reports[0].location, somewhere);
    EXPECT_EQ(recorder.reports[1].itemsDone, 2U);
    EXPECT_EQ(recorder.reports[1].itemsKnown, 3U);
    EXPECT_EQ(recorder.reports[1].bytesDone, 30U);
    EXPECT_EQ(recorder.reports[1].location, somewhere.getParent());
}

TEST(TransferProgress, AsksForNoLocationWhenNobodyLooks) {
    bool wasAsked = false;
    ProgressCounter counter;
    counter.found(1, 1);
    counter.finished(1, 1, [&] {
        wasAsked = true;
        return somewhere;
    });
    EXPECT_FALSE(wasAsked);
}

TEST(TransferProgress, AnObserverIsReplacedAndHandedBack) {
    ASSERT_EQ(progressObserver(), nullptr);
    Recorder outer;
    {
        Recorder inner;
        EXPECT_EQ(progressObserver(), &inner);
    }
    EXPECT_EQ(progressObserver(), &outer);
    EXPECT_EQ(setProgressObserver(nullptr), &outer);
    EXPECT_EQ(setProgressObserver(&outer), nullptr);
}

TEST(TransferProgress, ThreadsCountTogetherAndReportOneAfterTheOther) {
    constexpr std::uint64_t items = 1000;
    Recorder recorder;
    ProgressCounter counter;
    const auto work = [&] {
        for (std::uint64_t item = 0; item < items; ++item) {
            counter.found(1, 2);
            counter.finished(1, 2, [] { return somewhere; });
        }
    };
    std::array<std::thread, 4> threads;
    for (std::thread& thread : threads)
        thread = std::thread(work);
    for (std::thread& thread : threads)
        thread.join();
    ASSERT_EQ(recorder.reports.size(), threads.size() * items);
    for (std::size_t report = 0; report < recorder.reports.size(); ++report) {
        EXPECT_EQ(recorder.reports[report].itemsDone, report + 1);
        EXPECT_GE(recorder.reports[report].itemsKnown, report + 1);
    }
    EXPECT_EQ(recorder.reports.back().bytesDone, 2 * threads.size() * items);
}

TEST(TransferProgress, AnInterruptStopsAndStaysPending) {
    EXPECT_NO_THROW(stopIfInterrupted(somewhere));
    interpreter::raiseInterrupt();
    try {
        stopIfInterrupted(somewhere);
        ADD_FAILURE() << "no exception";
    } catch (const vfs::Exception& failure) {
        EXPECT_EQ(failure.getErrorCode(), vfs::unknownError);
        EXPECT_EQ(failure.getLocation(), somewhere);
        EXPECT_EQ(failure.getExceptionContextsString(), interruptedContext);
    }
    EXPECT_TRUE(interpreter::takeInterrupt());
    EXPECT_NO_THROW(stopIfInterrupted(somewhere));
}

}  // namespace
}  // namespace korvex::runtime::storage
