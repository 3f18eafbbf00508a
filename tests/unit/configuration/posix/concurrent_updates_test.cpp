// Several processes and threads change one document: nothing is lost, and each waits for the other.
#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <sstream>
#include <string_view>
#include <thread>

#include "runtime/interpreter/interrupts.h"
#include "tests/unit/configuration/configuration_folder.h"
#include "tests/unit/configuration/posix/child_process.h"

namespace korvex::runtime::configuration {
namespace {

using korvex::tests::ChildProcess;
using korvex::tests::Shared;
using nlohmann::json;

class ConcurrentUpdatesTest : public ConfigurationTest {
protected:
    static constexpr int updatesOfEach = 100;
    static constexpr int wasInterrupted = 7;

    void countUp(const char* counter) const {
        StoredDocument stored = document();
        for (int update = 0; update < updatesOfEach; ++update) {
            stored.update([&](json& changed) {
                changed[counter] = changed.value(counter, 0) + 1;
                changed["all"] = changed.value("all", 0) + 1;
            });
        }
    }

    /// Appends to the list "order".
    static auto appending(const char* word) {
        return [=](json& changed) { changed["order"].push_back(word); };
    }
};

TEST_F(ConcurrentUpdatesTest, TwoProcessesLoseNothing) {
    ChildProcess one([this] { countUp("one"); });
    ChildProcess two([this] { countUp("two"); });
    EXPECT_EQ(one.end(), 0);
    EXPECT_EQ(two.end(), 0);
    EXPECT_EQ(document().read(),
              json({{"one", updatesOfEach}, {"two", updatesOfEach}, {"all", 2 * updatesOfEach}}));
}

TEST_F(ConcurrentUpdatesTest, TwoThreadsLoseNothing) {
    std::thread one([this] { countUp("one"); });
    std::thread two([this] { countUp("two"); });
    one.join();
    two.join();
    EXPECT_EQ(document().read(),
              json({{"one", updatesOfEach}, {"two", updatesOfEach}, {"all", 2 * updatesOfEach}}));
}

TEST_F(ConcurrentUpdatesTest, TwoThreadsLoseNothingWithoutAFolder) {
    setConfigurationFolder(u"");
    std::thread one([this] { countUp("one"); });
    std::thread two([this] { countUp("two"); });
    one.join();
    two.join();
    EXPECT_EQ(document().read().at("all"), 2 * updatesOfEach);
}

TEST_F(ConcurrentUpdatesTest, AReaderSeesWholeDocumentsAndNeverAnOlderOneAgain) {
    Shared<std::atomic<bool>> isDone;
    ChildProcess writer([&] {
        countUp("one");
        *isDone = true;
    });
    StoredDocument reader = document();
    int last = 0;
    while (!*isDone) {
        const json seen = reader.read();
        ASSERT_GE(seen.value("all", 0), last);
        ASSERT_EQ(seen.value("all", 0), seen.value("one", 0));
        last = seen.value("all", 0);
    }
    EXPECT_EQ(writer.end(), 0);
    EXPECT_TRUE(warnings_.empty());
}

/// Whether the system has a process wait for a lock of a file.
bool waitsForALock(const ChildProcess& process) {
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        std::istringstream words(line);
        std::string number, arrow, kind, strength, access;
        ::pid_t owner = 0;
        words >> number >> arrow >> kind >> strength >> access >> owner;
        if (arrow == "->" && owner == process.id()) return true;
    }
    return false;
}

/// Returns when that is so, or when the process has ended and so never will.
void letWaitForALock(const ChildProcess& process) {
    while (!waitsForALock(process) && !process.hasEnded())
        std::this_thread::yield();
}

TEST_F(ConcurrentUpdatesTest, SignalsWhileWaitingForTheLockDoNotEndTheWait) {
    Shared<std::atomic<int>> signals;
    static std::atomic<int>* counter = nullptr;
    counter = &*signals;
    std::unique_ptr<ChildProcess> waiting;
    const auto interruptTheWait = [&](json& changed) {
        waiting = std::make_unique<ChildProcess>([this] {
            struct ::sigaction action {};
            action.sa_handler = [](int) { ++*counter; };  // without SA_RESTART
            ::sigaction(SIGUSR1, &action, nullptr);
            document().update(appending("second"));
        });
        for (int sent = 1; sent <= 3; ++sent) {
            letWaitForALock(*waiting);
            ::kill(waiting->id(), SIGUSR1);
            while (*signals < sent && !waiting->hasEnded())
                std::this_thread::yield();
        }
        letWaitForALock(*waiting);
        appending("first")(changed);
    };
    document().update(interruptTheWait);
    EXPECT_EQ(waiting->end(), 0);
    EXPECT_EQ(document().read(), json::parse(R"({"order": ["first", "second"]})"));
}

TEST_F(ConcurrentUpdatesTest, AnInterruptEndsTheWaitingForTheLockAndChangesNothing) {
    const auto interruptTheWait = [&](json& changed) {
        ChildProcess waiting([this] {
            struct ::sigaction action {};
            action.sa_handler = [](int) { interpreter::raiseInterrupt(); };
            action.sa_flags = SA_RESTART;
            ::sigaction(SIGUSR1, &action, nullptr);
            try {
                document().update(appending("second"));
            } catch (const ConfigurationError& error) {
                if (std::string_view(error.what()).find(interruptedWaiting) == std::string_view::npos) throw;
                ::_exit(interpreter::isInterruptPending() ? wasInterrupted : 1);
            }
        });
        letWaitForALock(waiting);
        ::kill(waiting.id(), SIGUSR1);
        EXPECT_EQ(waiting.end(), wasInterrupted);
        appending("first")(changed);
    };
    document().update(interruptTheWait);
    EXPECT_EQ(document().read(), json::parse(R"({"order": ["first"]})"));
}

TEST_F(ConcurrentUpdatesTest, ALockFileThatIsRemovedMeanwhileIsMadeAgainBeforeTheNextChange) {
    std::unique_ptr<ChildProcess> waiting;
    const auto removeTheLock = [&](json& changed) {
        waiting = std::make_unique<ChildProcess>([this] {
            document().update([this](json& seen) {
                seen["isLocked"] = std::filesystem::exists(folder() / "path.json.lock");
            });
        });
        letWaitForALock(*waiting);
        std::filesystem::remove(folder() / "path.json.lock");
        appending("first")(changed);
    };
    document().update(removeTheLock);
    EXPECT_EQ(waiting->end(), 0);
    EXPECT_EQ(document().read(), json::parse(R"({"order": ["first"], "isLocked": true})"));
}

TEST_F(ConcurrentUpdatesTest, ProcessesThatFindADamagedFileSetItAsideOnce) {
    scratch_.writeFile("config/path.json", "damaged");
    std::array<std::unique_ptr<ChildProcess>, 4> readers;
    for (auto& reader : readers) {
        reader = std::make_unique<ChildProcess>([this] { document().read(); });
    }
    for (auto& reader : readers) {
        EXPECT_EQ(reader->end(), 0);
    }
    EXPECT_EQ(contentOf(folder() / "path.json.damaged-1"), "damaged");
    EXPECT_FALSE(std::filesystem::exists(folder() / "path.json.damaged-2"));
}

TEST_F(ConcurrentUpdatesTest, ADamagedFileThatWasRepairedMeanwhileIsNotSetAside) {
    scratch_.writeFile("config/path.json", "damaged");
    auto repairer = std::make_unique<LockedFile>(file().u16string());
    ChildProcess reader([this] {
        if (document().read() != json({{"a", 1}})) throw std::runtime_error("read something else");
    });
    letWaitForALock(reader);
    repairer->replaceWith("{\"a\": 1}");
    repairer.reset();
    EXPECT_EQ(reader.end(), 0);
    EXPECT_EQ(contentOf(file()), "{\"a\": 1}");
    EXPECT_FALSE(std::filesystem::exists(folder() / "path.json.damaged-1"));
}

}  // namespace
}  // namespace korvex::runtime::configuration
