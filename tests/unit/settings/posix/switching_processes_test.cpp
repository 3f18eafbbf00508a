// Two processes switch the setting without end, a third one kills them: whoever asks gets a value that
// somebody has set, the file is whole, and a change that returned is there.
#include <signal.h>

#include <array>
#include <atomic>
#include <random>
#include <set>
#include <thread>

#include "tests/unit/configuration/posix/child_process.h"
#include "tests/unit/settings/settings_fixture.h"

namespace korvex::runtime::settings_tree {
namespace {

using korvex::tests::ChildProcess;
using korvex::tests::Shared;
using testing::ElementsAre;
using testing::IsEmpty;

class SwitchingProcessesTest : public SettingsTest {
protected:
    using Count = std::atomic<int>;

    static std::unique_ptr<ChildProcess> switching(Count& changes) {
        return std::make_unique<ChildProcess>([&changes] {
            for (bool next = false;; next = !next) {
                set(next);
                ++changes;
            }
        });
    }

    /// Returns when somebody has changed it so many times more, or has ended by itself.
    static void letChange(const ChildProcess& process, const Count& changes, int more) {
        const int enough = changes + more;
        while (changes < enough && !process.hasEnded())
            std::this_thread::yield();
    }

    std::set<std::string> namesInFolder() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder()))
            names.insert(entry.path().filename().string());
        return names;
    }
};

TEST_F(SwitchingProcessesTest, AreKilledAtAnyMomentAndLeaveAWholeFile) {
    constexpr int kills = 40;
    std::mt19937 random(7);
    std::array<Shared<Count>, 2> changes;
    std::array<std::unique_ptr<ChildProcess>, 2> processes{switching(*changes[0]), switching(*changes[1])};
    for (int kill = 0; kill < kills; ++kill) {
        const std::size_t victim = random() % processes.size();
        letChange(*processes[victim], *changes[victim], 1 + static_cast<int>(random() % 3));
        for (auto questions = random() % 200; questions > 0; --questions)
            ASSERT_NO_THROW(value(u"user"));
        ASSERT_EQ(processes[victim]->kill(), -SIGKILL) << "it failed by itself";
        ASSERT_NO_THROW(value(u"user"));
        processes[victim] = switching(*changes[victim]);
    }
    for (const auto& process : processes)
        ASSERT_EQ(process->kill(), -SIGKILL);
    EXPECT_THAT(warnings_, IsEmpty()) << "the file was damaged at a time";

    set(true);
    set(false);
    EXPECT_FALSE(value());
    EXPECT_THAT(namesInFolder(), ElementsAre("settings.json", "settings.json.lock"))
        << "what the killed ones left is gone";
}

TEST_F(SwitchingProcessesTest, ChangeThatReturnedIsThereAfterTheKill) {
    for (const bool last : {false, true, false}) {
        Shared<std::atomic<bool>> hasReturned;
        ChildProcess process([&] {
            set(last);
            *hasReturned = true;
            for (;;)
                std::this_thread::yield();
        });
        while (!*hasReturned && !process.hasEnded())
            std::this_thread::yield();
        ASSERT_EQ(process.kill(), -SIGKILL);
        EXPECT_EQ(value(u"user"), last);
    }
}

TEST_F(SwitchingProcessesTest, OtherSettingsOutliveIt) {
    write(R"({"other": {"kept": "by somebody else"}})");
    Shared<Count> changes;
    const auto process = switching(*changes);
    letChange(*process, *changes, 5);
    ASSERT_EQ(process->kill(), -SIGKILL);
    EXPECT_THAT(contentOf(file()), testing::HasSubstr("by somebody else"));
}

}  // namespace
}  // namespace korvex::runtime::settings_tree
