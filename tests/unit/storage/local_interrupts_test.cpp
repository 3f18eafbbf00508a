// An interrupt ends what takes its time on a disk.
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <string>
#include <thread>

#include "platform/path_management.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/providers/local/local_provider.h"
#include "runtime/storage/providers/local/posix/clock_step.h"
#include "runtime/storage/providers/local/posix/file_descriptor.h"
#include "runtime/storage/transfer_progress.h"
#include "tests/support/scratch_folder.h"

namespace korvex::runtime::storage {
namespace {

namespace vfs = foundation::storage::vfs;

class LocalInterruptsTest : public testing::Test {
protected:
    ~LocalInterruptsTest() override { interpreter::takeInterrupt(); }

    tests::ScratchFolder scratch_;
};

/// Raises an interrupt as soon as somebody has begun to read a folder.
class InterruptOnReading {
public:
    explicit InterruptOnReading(const std::filesystem::path& folder) : watch_(::inotify_init1(IN_CLOEXEC)) {
        EXPECT_GE(::inotify_add_watch(watch_.get(), folder.c_str(), IN_ACCESS | IN_ONESHOT), 0);
        thread_ = std::jthread([this] {
            std::array<char, 4096> event{};
            EXPECT_GT(::read(watch_.get(), event.data(), event.size()), 0);
            interpreter::raiseInterrupt();
        });
    }

private:
    const posix::FileDescriptor watch_;
    std::jthread thread_;
};

TEST_F(LocalInterruptsTest, AListingUnderWayEndsWithAnInterrupt) {
    constexpr int files = 10000;
    for (int number = 0; number < files; ++number)
        scratch_.writeFile("folder/" + std::to_string(number));
    const AbsoluteIRI folder =
        Velquist::PathManagement::GetIRIFromString((scratch_.path() / "folder").u16string());
    LocalProvider local;
    // The listing may be faster than who interrupts it, but not every time.
    constexpr int mostAttempts = 200;
    std::u16string context;
    for (int attempt = 0; attempt < mostAttempts && context.empty(); ++attempt) {
        interpreter::takeInterrupt();
        const InterruptOnReading user(scratch_.path() / "folder");
        try {
            local.list(folder, {});
        } catch (const vfs::Exception& error) {
            context = error.getExceptionContextsString();
        }
    }
    EXPECT_EQ(context, interruptedContext);
}

TEST_F(LocalInterruptsTest, TheWaitingForTheNextSecondEndsWithAnInterrupt) {
    interpreter::raiseInterrupt();
    // Without the interrupt it would end in another second. With it, it may do so by chance, but not each
    // time.
    bool hasEndedAtOnce = false;
    constexpr int mostAttempts = 5;
    for (int attempt = 0; attempt < mostAttempts && !hasEndedAtOnce; ++attempt) {
        const time_t second = ::time(nullptr);
        EXPECT_TRUE(posix::awaitClockStep({second, 0}));
        hasEndedAtOnce = ::time(nullptr) == second;
    }
    EXPECT_TRUE(hasEndedAtOnce);
}

}  // namespace
}  // namespace korvex::runtime::storage
