// A process is killed at any moment of its changes: the document is whole, and holds every change that had
// returned.
#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <random>
#include <thread>

#include "tests/unit/configuration/configuration_folder.h"
#include "tests/unit/configuration/posix/child_process.h"

namespace korvex::runtime::configuration {
namespace {

using korvex::tests::ChildProcess;
using korvex::tests::Shared;
using nlohmann::json;
using testing::ElementsAre;

class KilledWriterTest : public ConfigurationTest {
protected:
    static void count(StoredDocument& stored, const std::string& counter, int value) {
        stored.update([&](json& changed) {
            changed[counter] = value;
            // Long enough that a write which stops half way leaves half a document.
            changed["filling"] = std::string(20000, static_cast<char>('a' + value % 26));
            changed["filledBy"] = value;
        });
    }

    /// Whether a document is one that `count` has left, from its first member to its last.
    static bool isWhole(const json& read) {
        const auto filling = read.find("filling");
        if (filling == read.end()) return read.empty();
        return *filling == std::string(20000, static_cast<char>('a' + read.value("filledBy", 0) % 26));
    }
};

TEST_F(KilledWriterTest, LosesNoChangeThatReturnedAndLeavesAWholeDocument) {
    constexpr int kills = 30;
    std::mt19937 random(4);
    StoredDocument stored = document();
    int own = 0;
    for (int kill = 0; kill < kills; ++kill) {
        const std::string counter = "child" + std::to_string(kill);
        Shared<std::atomic<int>> returned;
        ChildProcess writer([&] {
            StoredDocument itsOwn = document();
            for (int value = 1;; ++value) {
                count(itsOwn, counter, value);
                *returned = value;
            }
        });
        // How far the writer comes meanwhile is what is random here.
        for (int reads = std::uniform_int_distribution(1, 300)(random); reads > 0; --reads) {
            ASSERT_TRUE(isWhole(stored.read()));
            if (reads % 50 == 0) count(stored, "own", ++own);
        }
        ASSERT_EQ(writer.kill(), -SIGKILL) << "the writer failed by itself";

        const json left = stored.read();
        ASSERT_TRUE(isWhole(left));
        ASSERT_GE(left.value(counter, 0), returned->load());
        ASSERT_LE(left.value(counter, 0), returned->load() + 1);
        ASSERT_EQ(left.value("own", 0), own);
    }
    EXPECT_TRUE(warnings_.empty());
    count(stored, "own", ++own);
    EXPECT_THAT(entries(), ElementsAre("path.json", "path.json.lock")) << "what the killed ones left is gone";
}

TEST_F(KilledWriterTest, TheNextWriterRemovesWhatItLeftAndNothingElse) {
    for (const char* name : {"path.json.writing-123-1", "path.json.writing-9-22"}) {
        scratch_.writeFile(std::string("config/") + name, "half");
    }
    for (const char* name : {"path.json.writing-notes", "other.json.writing-1-1", "path.json.writing-"}) {
        scratch_.writeFile(std::string("config/") + name, "somebody's");
    }
    document().update(setting("a", 1));
    EXPECT_THAT(entries(), ElementsAre("other.json.writing-1-1", "path.json", "path.json.lock",
                                       "path.json.writing-", "path.json.writing-notes"));
}

TEST_F(KilledWriterTest, ItsLockIsFree) {
    Shared<std::atomic<bool>> isInside;
    ChildProcess writer([&] {
        document().update([&](json&) {
            *isInside = true;
            while (true)
                ::pause();
        });
    });
    while (!*isInside)
        std::this_thread::yield();
    EXPECT_EQ(writer.kill(), -SIGKILL);
    EXPECT_EQ(document().update(setting("a", 1)), json({{"a", 1}}));
}

}  // namespace
}  // namespace korvex::runtime::configuration
