// Transfers between two providers when something fails on the way, and how much they hold in memory.
#include "runtime/storage/transfers.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>

#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/transfer_progress.h"
#include "tests/unit/storage/memory_boxes.h"

namespace korvex::runtime::storage {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

/// A file of that many bytes that nobody has to store, and a place that swallows what is written. Remembers
/// how large the pieces were.
class EndlessTape : public MemoryProvider {
public:
    explicit EndlessTape(std::uint64_t length) : length_(length) {}

    std::unique_ptr<InputStream> read(const AbsoluteIRI&) override {
        return std::make_unique<Reader>(length_);
    }
    std::unique_ptr<OutputStream> write(const AbsoluteIRI&, ReplacementPolicy) override {
        return std::make_unique<Writer>(*this);
    }

    std::uint64_t written = 0;
    std::size_t largestPiece = 0;
    bool isCommitted = false;

private:
    class Reader : public InputStream {
    public:
        explicit Reader(std::uint64_t length) : left_(length) {}
        std::size_t read(std::span<std::byte> buffer) override {
            const std::size_t count = static_cast<std::size_t>(std::min<std::uint64_t>(left_, buffer.size()));
            left_ -= count;
            return count;
        }

    private:
        std::uint64_t left_;
    };

    class Writer : public OutputStream {
    public:
        explicit Writer(EndlessTape& tape) : tape_(tape) {}
        void write(std::span<const std::byte> bytes) override {
            tape_.written += bytes.size();
            tape_.largestPiece = std::max(tape_.largestPiece, bytes.size());
        }
        void commit() override { tape_.isCommitted = true; }

    private:
        EndlessTape& tape_;
    };

    const std::uint64_t length_;
};

/// Raises an interrupt when so many bytes have gone.
class InterruptAfterBytes : public ProgressObserver {
public:
    explicit InterruptAfterBytes(std::uint64_t bytes) : bytes_(bytes) { setProgressObserver(this); }
    ~InterruptAfterBytes() override {
        setProgressObserver(nullptr);
        interpreter::takeInterrupt();
    }
    InterruptAfterBytes(const InterruptAfterBytes&) = delete;
    InterruptAfterBytes& operator=(const InterruptAfterBytes&) = delete;

    void progressed(const Progress& progress) override {
        last = progress;
        if (progress.bytesDone >= bytes_) interpreter::raiseInterrupt();
    }
    std::optional<Progress> last;

private:
    const std::uint64_t bytes_;
};

class Transfers : public ::testing::Test {
protected:
    void copyFile(const std::u16string& source, const std::u16string& destination,
                  ReplacementPolicy policy = provider::ReplaceWritable) const {
        copyFileBetween(from_.served(source), to_.served(destination), policy);
    }
    void moveFile(const std::u16string& source, const std::u16string& destination) const {
        moveFileBetween(from_.served(source), to_.served(destination), provider::ReplaceWritable);
    }
    void copyFolder(const std::u16string& source, const std::u16string& destination,
                    ReplacementPolicy policy = provider::ReplaceWritable) const {
        copyFolderBetween(from_.served(source), to_.served(destination), policy);
    }
    void moveFolder(const std::u16string& source, const std::u16string& destination,
                    ReplacementPolicy policy = provider::ReplaceWritable) const {
        moveFolderBetween(from_.served(source), to_.served(destination), policy);
    }

    MemoryBox from_;
    MemoryBox to_;
};

TEST_F(Transfers, KeepTheTimeOfLastChangeAndTheProtection) {
    const std::chrono::sys_time<std::chrono::nanoseconds> time{
        std::chrono::nanoseconds(1'234'567'890'123'456'789)};
    const auto stream = from_.memory->write(MemoryBox::at(u"file"), provider::ReplaceAny);
    stream->setAttributes({.changed = time, .isWritable = false});
    stream->commit();
    copyFile(u"file", u"copy");
    EXPECT_EQ(to_.attributesOf(u"copy").changed, time);
    EXPECT_EQ(to_.attributesOf(u"copy").isWritable, false);
}

TEST_F(Transfers, HoldNoMoreThanABufferOfAFile) {
    constexpr std::uint64_t length = std::uint64_t{1} << 30;
    EndlessTape source(length);
    EndlessTape destination(0);
    copyFileBetween({source, MemoryBox::at(u"a")}, {destination, MemoryBox::at(u"b")}, provider::ReplaceAny);
    EXPECT_EQ(destination.written, length);
    EXPECT_LE(destination.largestPiece, std::size_t{1024} * 1024);
    EXPECT_TRUE(destination.isCommitted);
}

TEST_F(Transfers, AnInterruptInTheMiddleOfAFileStopsIt) {
    constexpr std::uint64_t length = std::uint64_t{1} << 30;
    EndlessTape source(length);
    EndlessTape destination(0);
    const InterruptAfterBytes user(10'000'000);
    const auto failure = failureOf([&] {
        copyFileBetween({source, MemoryBox::at(u"a")}, {destination, MemoryBox::at(u"b")},
                        provider::ReplaceAny);
    });
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->getErrorCode(), vfs::unknownError);
    EXPECT_EQ(failure->getExceptionContextsString(), interruptedContext);
    EXPECT_EQ(failure->getLocation(), MemoryBox::at(u"a"));
    EXPECT_TRUE(interpreter::isInterruptPending());
    EXPECT_FALSE(destination.isCommitted);
    EXPECT_LT(destination.written, std::uint64_t{20'000'000});
}

TEST_F(Transfers, TellHowFarTheyAre) {
    from_.put(u"folder/a", std::string(1000, 'a'));
    from_.put(u"folder/inner/b", std::string(500, 'b'));
    InterruptAfterBytes observer(1'000'000);
    copyFolder(u"folder", u"copy");
    ASSERT_TRUE(observer.last.has_value());
    EXPECT_EQ(observer.last->itemsDone, 4U);
    EXPECT_EQ(observer.last->itemsKnown, 4U);
    EXPECT_EQ(observer.last->bytesDone, 1500U);
    EXPECT_EQ(observer.last->bytesKnown, 1500U);
    EXPECT_EQ(observer.last->location, MemoryBox::at(u"folder"));
}

TEST_F(Transfers, AFailureAtAnyStepOfACopyLeavesTheOldFile) {
    struct Step {
        const MemoryBox& box;
        Operation operation;
    };
    const Step steps[] = {{from_, Operation::read},
                          {to_, Operation::write},
                          {from_, Operation::streamRead},
                          {to_, Operation::streamWrite},
                          {to_, Operation::streamCommit}};
    from_.put(u"file", "new");
    to_.put(u"file", "old");
    for (const Step& step : steps) {
        SCOPED_TRACE(nameOf(step.operation));
        const std::size_t before = step.box.faulty->faultsRaised();
        step.box.faulty->failCall(step.operation, 1, {.code = vfs::ioError});
        EXPECT_THAT(errorOf([&] { moveFile(u"file", u"file"); }), Pair(vfs::ioError, "memory://box/file"));
        EXPECT_EQ(to_.contentOf(u"file"), "old");
        EXPECT_EQ(from_.contentOf(u"file"), "new");
        EXPECT_EQ(step.box.faulty->faultsRaised(), before + 1);
    }
    EXPECT_THAT(from_.faulty->callsOf(Operation::removeFile), IsEmpty());
}

TEST_F(Transfers, AFailureInTheMiddleOfALargeFileLeavesNothing) {
    from_.put(u"file", std::string(2'000'000, 'x'));
    to_.faulty->failCall(Operation::streamWrite, 3, {.code = vfs::noSpaceLeft, .systemText = "disk full"});
    const auto failure = failureOf([&] { copyFile(u"file", u"copy"); });
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->getErrorCode(), vfs::noSpaceLeft);
    EXPECT_EQ(failure->getSystemText(), "disk full");
    EXPECT_THAT(to_.namesIn(u""), IsEmpty());
}

TEST_F(Transfers, AMoveWhoseRemovalFailsLeavesBothWhole) {
    from_.put(u"file", "content");
    from_.faulty->failCall(Operation::removeFile, 1, {.code = vfs::resourceInUse});
    EXPECT_THAT(errorOf([&] { moveFile(u"file", u"moved"); }), Pair(vfs::resourceInUse, "memory://box/file"));
    EXPECT_EQ(from_.contentOf(u"file"), "content");
    EXPECT_EQ(to_.contentOf(u"moved"), "content");
}

/// Lets something happen when everything is copied and nothing is removed yet.
class Pausing : public MemoryProvider {
public:
    void makeDurable(const AbsoluteIRI& location) override {
        asked.push_back(text::toDisplayBytes(location.toString()));
        if (pause) pause();
    }
    std::function<void()> pause;
    std::vector<std::string> asked;
};

TEST_F(Transfers, AMovedFileThatChangedMeanwhileStays) {
    Pausing destination;
    destination.pause = [&] { from_.put(u"file", "changed"); };
    from_.put(u"file", "content");
    const ServedLocation target{destination, MemoryBox::at(u"moved")};
    EXPECT_THAT(errorOf([&] { moveFileBetween(from_.served(u"file"), target, provider::ReplaceWritable); }),
                Pair(vfs::resourceInUse, "memory://box/file"));
    EXPECT_EQ(from_.contentOf(u"file"), "changed");
    EXPECT_THAT(destination.asked, ElementsAre("memory://box/moved"));
}

/// Keeps times in steps, as file systems do, and lets something happen when the content of a file is read.
class WithCoarseTimes : public MemoryProvider {
public:
    explicit WithCoarseTimes(std::chrono::nanoseconds step) : step_(step) {}

    std::unique_ptr<InputStream> read(const AbsoluteIRI& file) override {
        return std::make_unique<Stream>(*this, MemoryProvider::read(file));
    }
    std::function<void()> whenContentIsRead;

private:
    class Stream : public InputStream {
    public:
        Stream(WithCoarseTimes& storage, std::unique_ptr<InputStream> exact)
            : storage_(storage), exact_(std::move(exact)) {}
        std::size_t read(std::span<std::byte> buffer) override {
            if (storage_.whenContentIsRead) std::exchange(storage_.whenContentIsRead, nullptr)();
            return exact_->read(buffer);
        }
        FileAttributes attributes() const override {
            FileAttributes attributes = exact_->attributes();
            *attributes.changed -= attributes.changed.value().time_since_epoch() % storage_.step_;
            return attributes;
        }

    private:
        WithCoarseTimes& storage_;
        const std::unique_ptr<InputStream> exact_;
    };

    const std::chrono::nanoseconds step_;
};

TEST_F(Transfers, AMovedFileThatChangesTwiceInOneStepOfTheClockStays) {
    using namespace std::chrono_literals;
    struct Change {
        std::u16string path;
        std::chrono::nanoseconds step;
    };
    for (const Change& change :
         {Change{u"file", 10ms}, Change{u"folder/file", 10ms}, Change{u"file", 1s}, Change{u"file", 2s}}) {
        SCOPED_TRACE(change.step.count());
        WithCoarseTimes source(change.step);
        const AbsoluteIRI location = MemoryBox::at(change.path);
        source.putFile(location, "content");
        source.whenContentIsRead = [&] { source.putFile(location, "CONTENT"); };
        EXPECT_THAT(
            errorOf([&] {
                if (change.path == u"file") {
                    moveFileBetween({source, location}, to_.served(u"moved"), provider::ReplaceWritable);
                } else {
                    moveFolderBetween({source, MemoryBox::at(u"folder")}, to_.served(u"movedFolder"),
                                      provider::ReplaceWritable);
                }
            }),
            Pair(vfs::resourceInUse, text::toDisplayBytes(location.toString())));
        EXPECT_EQ(source.existence(location), provider::AsFile);
    }
}

TEST_F(Transfers, OfAMovedFolderWhatChangedOrCameMeanwhileStays) {
    struct Change {
        std::u16string path;
        std::string expected;
    };
    for (const Change& change : {Change{u"folder/inner/b", "memory://box/folder/inner/b"},
                                 Change{u"folder/inner/new", "memory://box/folder/inner/new"}}) {
        Pausing destination;
        destination.pause = [&] { from_.put(change.path, "changed"); };
        from_.put(u"folder/a");
        from_.put(u"folder/inner/b");
        const ServedLocation target{destination, MemoryBox::at(u"moved")};
        EXPECT_THAT(
            errorOf([&] { moveFolderBetween(from_.served(u"folder"), target, provider::ReplaceWritable); }),
            Pair(vfs::resourceInUse, change.expected));
        EXPECT_EQ(from_.contentOf(change.path), "changed");
        EXPECT_FALSE(from_.isThere(u"folder/a"));
        EXPECT_EQ(destination.existence(MemoryBox::at(u"moved/inner/b")), provider::AsFile);
        EXPECT_THAT(destination.asked, ElementsAre("memory://box/moved"));
    }
}

TEST_F(Transfers, NothingGoesWhenTheCopyCannotBeMadeDurable) {
    from_.put(u"folder/file");
    to_.faulty->failCall(Operation::makeDurable, 1, {.code = vfs::ioError});
    to_.faulty->failCall(Operation::makeDurable, 2, {.code = vfs::ioError});
    EXPECT_THAT(errorOf([&] { moveFolder(u"folder", u"moved"); }), Pair(vfs::ioError, "memory://box/moved"));
    EXPECT_THAT(errorOf([&] { moveFile(u"folder/file", u"single"); }),
                Pair(vfs::ioError, "memory://box/single"));
    EXPECT_EQ(from_.contentOf(u"folder/file"), "content");
    EXPECT_THAT(from_.faulty->callsOf(Operation::removeFile), IsEmpty());
    EXPECT_THAT(from_.faulty->callsOf(Operation::removeFolder), IsEmpty());
}

TEST_F(Transfers, AFolderMoveThatFailsOnTheWayLeavesTheSourceWhole) {
    from_.put(u"folder/a");
    from_.put(u"folder/b/c");
    from_.put(u"folder/d");
    to_.faulty->failAt(Operation::streamCommit, MemoryBox::at(u"moved/b/c"), {.code = vfs::noSpaceLeft});
    EXPECT_THAT(errorOf([&] { moveFolder(u"folder", u"moved"); }),
                Pair(vfs::noSpaceLeft, "memory://box/moved/b/c"));
    EXPECT_THAT(from_.namesIn(u"folder"), ElementsAre("a", "b", "d"));
    EXPECT_THAT(from_.namesIn(u"folder/b"), ElementsAre("c"));
    EXPECT_THAT(to_.namesIn(u"moved"), ElementsAre("a", "b"));
    EXPECT_THAT(to_.namesIn(u"moved/b"), IsEmpty());
    EXPECT_THAT(from_.faulty->callsOf(Operation::removeFolder), IsEmpty());
}

TEST_F(Transfers, WhatCannotBeReadIsNamedAtTheSource) {
    from_.put(u"folder/secret");
    from_.faulty->failAt(Operation::read, MemoryBox::at(u"folder/secret"), {.code = vfs::permissionDenied});
    EXPECT_THAT(errorOf([&] { copyFolder(u"folder", u"copy"); }),
                Pair(vfs::permissionDenied, "memory://box/folder/secret"));
    EXPECT_THAT(to_.namesIn(u"copy"), IsEmpty());
}

TEST_F(Transfers, ALinkInsideOfAFolderIsRefusedWhereItStands) {
    class WithLink : public MemoryProvider {
    public:
        ExistenceTypeExtended extendedExistence(const AbsoluteIRI& location) override {
            if (location.getName() == u"link") return provider::ExtendedLinkToFolder;
            return MemoryProvider::extendedExistence(location);
        }
    } source;
    source.putFile(MemoryBox::at(u"folder/file"), "content");
    source.putFolder(MemoryBox::at(u"folder/link"));
    const ServedLocation copy = to_.served(u"copy");
    EXPECT_THAT(errorOf([&] {
                    copyFolderBetween({source, MemoryBox::at(u"folder")}, copy, provider::ReplaceAny);
                }),
                Pair(vfs::unsupportedOperation, "memory://box/folder/link"));
    EXPECT_THAT(errorOf([&] {
                    moveFolderBetween({source, MemoryBox::at(u"folder/link")}, copy, provider::ReplaceAny);
                }),
                Pair(vfs::unsupportedOperation, "memory://box/folder/link"));
    EXPECT_EQ(source.existence(MemoryBox::at(u"folder/link")), provider::AsFolder);
}

TEST_F(Transfers, ANameThatWouldLeadOutOfTheFolderIsRefused) {
    class Hostile : public MemoryProvider {
    public:
        explicit Hostile(std::u16string name) : name_(std::move(name)) {}
        std::vector<ListedEntry> list(const AbsoluteIRI&, std::u16string_view) override {
            return {{name_, false}};
        }

    private:
        const std::u16string name_;
    };
    for (const std::u16string name : {u"..", u".", u"../outside", u"inner/file", u""}) {
        Hostile source(name);
        source.putFolder(MemoryBox::at(u"folder"));
        EXPECT_EQ(errorOf([&] {
                      copyFolderBetween({source, MemoryBox::at(u"folder")}, to_.served(u"copy"),
                                        provider::ReplaceAny);
                  }).first,
                  vfs::invalidLocation);
        EXPECT_THAT(to_.namesIn(u"copy"), IsEmpty());
    }
}

TEST_F(Transfers, AVeryDeepFolderIsCopied) {
    std::u16string path = u"folder";
    for (int level = 0; level < 1000; ++level)
        path += u"/d";
    from_.put(path + u"/file", "at the end");
    copyFolderBetween({*from_.memory, MemoryBox::at(u"folder")}, {*to_.memory, MemoryBox::at(u"copy")},
                      provider::ReplaceWritable);
    path.replace(0, 6, u"copy");
    EXPECT_EQ(to_.contentOf(path + u"/file"), "at the end");
}

TEST_F(Transfers, AFolderDoesNotGoIntoMissingFoldersOfItsOwnSubtree) {
    from_.put(u"folder/file");
    const ServedLocation folder{*from_.memory, MemoryBox::at(u"folder")};
    const ServedLocation below{*from_.memory, MemoryBox::at(u"folder/missing/further/copy")};
    EXPECT_THAT(errorOf([&] { copyFolderBetween(folder, below, provider::ReplaceWritable); }),
                Pair(vfs::invalidLocation, "memory://box/folder/missing/further/copy"));
    EXPECT_THAT(errorOf([&] { moveFolderBetween(folder, below, provider::ReplaceWritable); }),
                Pair(vfs::invalidLocation, "memory://box/folder/missing/further/copy"));
}

TEST_F(Transfers, NothingIsAskedOfTheSourceWhenTheDestinationOnlyReads) {
    class ReadOnly : public MemoryProvider {
    public:
        bool onlyReads() const noexcept override { return true; }
    } reading;
    from_.put(u"file");
    const ServedLocation destination{reading, MemoryBox::at(u"copy")};
    EXPECT_THAT(errorOf([&] { copyFileBetween(from_.served(u"file"), destination, provider::ReplaceAny); }),
                Pair(vfs::readOnlyProvider, "memory://box/copy"));
    EXPECT_THAT(errorOf([&] { moveFolderBetween(from_.served(u"file"), destination, provider::ReplaceAny); }),
                Pair(vfs::readOnlyProvider, "memory://box/copy"));
    EXPECT_THAT(from_.faulty->calls(), IsEmpty());
}

TEST_F(Transfers, NothingIsCopiedOutOfAProtectedFolderByAMove) {
    from_.put(u"closed/file");
    from_.put(u"closed/inner/file");
    from_.memory->setWritable(MemoryBox::at(u"closed"), false);
    EXPECT_THAT(errorOf([&] { moveFile(u"closed/file", u"moved"); }),
                Pair(vfs::permissionDenied, "memory://box/closed/file"));
    EXPECT_THAT(errorOf([&] { moveFolder(u"closed/inner", u"moved"); }),
                Pair(vfs::permissionDenied, "memory://box/closed/inner"));
    EXPECT_THAT(to_.namesIn(u""), IsEmpty());
    EXPECT_EQ(from_.contentOf(u"closed/inner/file"), "content");
}

TEST_F(Transfers, NothingIsCopiedWhenAMoveCouldNotRemoveTheSource) {
    class ReadOnly : public MemoryProvider {
    public:
        bool onlyReads() const noexcept override { return true; }
    } reading;
    reading.putFile(MemoryBox::at(u"file"), "content");
    const ServedLocation source{reading, MemoryBox::at(u"file")};
    EXPECT_THAT(errorOf([&] { moveFileBetween(source, to_.served(u"moved"), provider::ReplaceAny); }),
                Pair(vfs::readOnlyProvider, "memory://box/file"));
    EXPECT_THAT(to_.faulty->calls(), IsEmpty());
    copyFileBetween(source, to_.served(u"copy"), provider::ReplaceAny);
    EXPECT_EQ(to_.contentOf(u"copy"), "content");
}

}  // namespace
}  // namespace korvex::runtime::storage
