// From one storage to another: every step of the way fails once, with every code. Whatever happens, the
// source or its copy is whole.
#include <array>
#include <cstddef>
#include <sstream>

#include "runtime/dispatcher/current_folder.h"
#include "tests/unit/filemanip/copy_move/failure_handlers.h"

namespace korvex::filemanip::tests {
namespace {

using storage::FaultInjectingProvider;
using storage::MemoryProvider;
using storage::Operation;

constexpr std::string_view content = "the whole content";

/// "/s/a" on one storage, "memory://box/d/" on another.
class TwoStorages {
public:
    TwoStorages() : scope_(system()) {
        from->putFile(source, std::string(content));
        from->putFile(at(u"/s/in/b"), std::string(content));
        from->putFolder(at(u"/here"));
        to->putFolder(at(u"memory://box/d"));
        runtime::dispatcher::setCurrentFolderPath(u"/here");
    }
    ~TwoStorages() { runtime::dispatcher::setCurrentFolderPath(u"/"); }
    TwoStorages(const TwoStorages&) = delete;
    TwoStorages& operator=(const TwoStorages&) = delete;

    static vfs::AbsoluteIRI at(const std::u16string& text) {
        return Velquist::PathManagement::GetIRIFromString(text);
    }
    static bool isWhole(MemoryProvider& memory, const std::u16string& text) {
        if (memory.existence(at(text)) != provider::AsFile) return false;
        std::array<std::byte, 64> bytes{};
        const std::size_t count = memory.read(at(text))->read(bytes);
        return std::string_view(reinterpret_cast<const char*>(bytes.data()), count) == content;
    }

    const vfs::AbsoluteIRI source = at(u"/s/a");
    std::shared_ptr<MemoryProvider> from = std::make_shared<MemoryProvider>();
    std::shared_ptr<MemoryProvider> to = std::make_shared<MemoryProvider>();
    std::shared_ptr<FaultInjectingProvider> watchedFrom = std::make_shared<FaultInjectingProvider>(from);
    std::shared_ptr<FaultInjectingProvider> watchedTo = std::make_shared<FaultInjectingProvider>(to);

private:
    std::shared_ptr<const vfs::StorageSystem> system() const {
        auto system = std::make_shared<vfs::StorageSystem>();
        system->add(u"file", watchedFrom);
        system->add(u"memory", watchedTo);
        return system;
    }

    storage::ScopedStorageSystem scope_;
};

/// A step of a transfer between storages, at either end.
struct End {
    Operation operation;
    bool isAtSource;
};

const std::vector<End>& stepsBetween() {
    static const std::vector<End> steps{{Operation::read, true},          {Operation::streamRead, true},
                                        {Operation::write, false},        {Operation::streamWrite, false},
                                        {Operation::streamCommit, false}, {Operation::makeDurable, false},
                                        {Operation::removeFile, true},    {Operation::list, true},
                                        {Operation::createFolder, false}, {Operation::removeFolder, true}};
    return steps;
}

class BetweenStoragesTest : public testing::TestWithParam<Command> {
protected:
    /// Calls `check` with the storages of a run in which the step fails, and with how the run went.
    template <class Check>
    static void forEachFailure(const std::u16string& source, const std::u16string& destination,
                               const Check& check) {
        for (const End& end : stepsBetween()) {
            for (int code = vfs::folderNotEmpty; code <= vfs::unknownError; ++code) {
                for (const bool isForced : {false, true}) {
                    std::ostringstream what;
                    what << nameOf(end.operation) << ", code " << code << (isForced ? ", forced" : "");
                    SCOPED_TRACE(what.str());
                    TwoStorages storages;
                    FaultInjectingProvider& failing =
                        end.isAtSource ? *storages.watchedFrom : *storages.watchedTo;
                    failing.failCall(end.operation, 1, {.code = static_cast<vfs::ErrorCode>(code)});
                    Texts arguments{source, destination};
                    if (isForced) arguments.emplace_back(u"f");
                    const Failure told = failureOf(GetParam(), arguments);
                    check(storages, told, failing.faultsRaised() > 0);
                }
            }
        }
    }
};

INSTANTIATE_TEST_SUITE_P(CopyMove, BetweenStoragesTest, testing::Values(copyCommand, moveCommand),
                         nameOfCommand);

TEST_P(BetweenStoragesTest, FileIsWholeAtOneOfTheTwoPlaces) {
    forEachFailure(u"/s/a", u"memory://box/d/a",
                   [](TwoStorages& storages, const Failure& told, bool hasFailed) {
                       const bool isLeft = TwoStorages::isWhole(*storages.from, u"/s/a");
                       const bool hasArrived = TwoStorages::isWhole(*storages.to, u"memory://box/d/a");
                       const bool isThere =
                           storages.to->existence(TwoStorages::at(u"memory://box/d/a")) == provider::AsFile;
                       EXPECT_EQ(told == noFailure(), !hasFailed);
                       EXPECT_EQ(isLeft, hasFailed || GetParam().isCopy);
                       EXPECT_TRUE(isLeft || hasArrived);
                       EXPECT_EQ(isThere, hasArrived) << "half of a file";
                   });
}

TEST_P(BetweenStoragesTest, FileThatIsReplacedIsTheOldOrTheNewOne) {
    for (const End& end : stepsBetween()) {
        SCOPED_TRACE(nameOf(end.operation));
        TwoStorages storages;
        storages.to->putFile(TwoStorages::at(u"memory://box/d/a"), "old");
        FaultInjectingProvider& failing = end.isAtSource ? *storages.watchedFrom : *storages.watchedTo;
        failing.failCall(end.operation, 1, {.code = vfs::noSpaceLeft});
        failureOf(GetParam(), Texts{u"/s/a", u"memory://box/d/a", u"f"});
        std::array<std::byte, 64> bytes{};
        const std::size_t count = storages.to->read(TwoStorages::at(u"memory://box/d/a"))->read(bytes);
        EXPECT_TRUE(count == 3 || count == content.size());
    }
}

TEST_P(BetweenStoragesTest, FolderIsWholeAtOneOfTheTwoPlaces) {
    const auto isWholeAt = [](MemoryProvider& memory, const std::u16string& folder) {
        return TwoStorages::isWhole(memory, folder + u"/a") &&
               TwoStorages::isWhole(memory, folder + u"/in/b");
    };
    forEachFailure(u"/s", u"memory://box/d/s",
                   [&](TwoStorages& storages, const Failure& told, bool hasFailed) {
                       const bool isLeft = isWholeAt(*storages.from, u"/s");
                       EXPECT_EQ(told == noFailure(), !hasFailed);
                       EXPECT_TRUE(isLeft || isWholeAt(*storages.to, u"memory://box/d/s"));
                       EXPECT_TRUE(isLeft || !GetParam().isCopy);
                   });
}

TEST_P(BetweenStoragesTest, FailuresAreToldInTheStoragesWords) {
    const Setting setting{GetParam(), u"memory://box"};
    for (int code = vfs::folderNotEmpty; code <= vfs::unknownError; ++code) {
        TwoStorages storages;
        storages.watchedTo->failCall(Operation::streamCommit, 1, {.code = static_cast<vfs::ErrorCode>(code)});
        const Failure expected = explained(Handler::transfer, static_cast<vfs::ErrorCode>(code),
                                           {.setting = setting,
                                            .isForced = false,
                                            .source = u"/s/a",
                                            .destination = u"memory://box/d/new",
                                            .item = u"/s/a",
                                            .target = u"memory://box/d/new",
                                            .failed = u"memory://box/d/new",
                                            .itemKind = provider::AsFile,
                                            .targetKind = provider::AsNeither});
        EXPECT_EQ(failureOf(GetParam(), Texts{u"/s/a", u"memory://box/d/new"}), expected);
    }
}

}  // namespace
}  // namespace korvex::filemanip::tests
