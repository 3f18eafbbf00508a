// A storage provider for tests: it passes everything on to another one, fails where it is told to, and
// remembers in order what it was asked.
//
//   auto storage = std::make_shared<FaultInjectingProvider>(std::make_shared<MemoryProvider>());
//   storage->failCall(Operation::streamWrite, 2, {.code = vfs::noSpaceLeft, .systemText = "disk full"});
//   storage->failAt(location, {.code = vfs::permissionDenied});
//   ...
//   EXPECT_EQ(storage->faultsRaised(), 1U);
//   EXPECT_THAT(storage->callsOf(Operation::removeFile), IsEmpty());
//
// A call fails before anything happened, or after it took effect: an answer that gets lost on its way. Which
// location the exception carries is a choice too, since with real storage it need not be the one that was
// named.
//
// Streams that it hands out belong to it: their reads, writes and commits are calls like any other, at the
// location of their file. Operations on whole folders are one call, as they are one call to the wrapped
// provider, which then does the steps by itself. `takeFoldersApart` makes their steps visible: a folder is
// copied, moved or removed by listing it and by calling this provider's own operations for each item, in the
// order of names, so that each of them can fail. Links inside of a folder cannot be copied then.
#pragma once

#include <atomic>
#include <cstddef>
#include <iosfwd>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "runtime/storage/provider.h"

namespace korvex::runtime::storage {

enum class Operation {
    existence,
    extendedExistence,
    canonicalLocation,
    isWritable,
    setWritable,
    list,
    read,
    write,
    copyFile,
    moveFile,
    copyFolder,
    moveFolder,
    removeFile,
    removeFolder,
    createFolder,
    createFolderRecursive,
    makeDurable,
    streamRead,
    streamWrite,
    streamCommit,
};

/// The operation's name, as in the enumeration.
std::string_view nameOf(Operation operation) noexcept;

/// What was asked. A transfer has both locations.
struct Call {
    Operation operation;
    AbsoluteIRI location;
    std::optional<AbsoluteIRI> destination = std::nullopt;

    bool operator==(const Call& other) const;
};

std::ostream& operator<<(std::ostream& stream, const Call& call);

/// How a call fails.
struct Fault {
    enum class Moment {
        before,  ///< nothing has happened
        after,   ///< the wrapped provider has done it all
    };

    foundation::storage::vfs::ErrorCode code = foundation::storage::vfs::ioError;
    std::u16string context = {};
    /// In the operating system's stead, UTF-8.
    std::string systemText = {};
    /// Where it is said to have happened; by default the location that was to fail, or the call's first one.
    std::optional<AbsoluteIRI> location = std::nullopt;
    Moment moment = Moment::before;
};

/// May be used by several threads; faults are counted over all of them.
class FaultInjectingProvider : public Provider {
public:
    explicit FaultInjectingProvider(std::shared_ptr<Provider> wrapped);
    ~FaultInjectingProvider() override;

    /// The call of that number from now on fails, once; 1 is the next one.
    void failCall(Operation operation, std::size_t number, Fault fault);
    /// Every call fails that names the location, as a source or a destination.
    void failAt(const AbsoluteIRI& location, Fault fault);
    /// The same for one operation only.
    void failAt(Operation operation, const AbsoluteIRI& location, Fault fault);
    void forgetFaults();
    std::size_t faultsRaised() const;

    void takeFoldersApart(bool isTakenApart = true);

    /// All calls so far, also those that failed.
    std::vector<Call> calls() const;
    std::vector<Call> callsOf(Operation operation) const;
    void forgetCalls();

    bool onlyReads() const noexcept override;
    ExistenceType existence(const AbsoluteIRI& location) override;
    ExistenceTypeExtended extendedExistence(const AbsoluteIRI& location) override;
    CanonicalAbsoluteIRI canonicalLocation(const AbsoluteIRI& location) override;
    bool isSameFile(const AbsoluteIRI& one, const AbsoluteIRI& other) noexcept override {
        return wrapped_->isSameFile(one, other);
    }
    bool isSameFolder(const AbsoluteIRI& one, const AbsoluteIRI& other) noexcept override {
        return wrapped_->isSameFolder(one, other);
    }
    bool isWritable(const AbsoluteIRI& location) override;
    void setWritable(const AbsoluteIRI& location, bool isWritable) override;
    std::vector<ListedEntry> list(const AbsoluteIRI& folder, std::u16string_view pattern) override;
    std::shared_ptr<const FoundPlace> hold(const AbsoluteIRI& folder) override {
        return wrapped_->hold(folder);
    }
    std::unique_ptr<InputStream> read(const AbsoluteIRI& file) override;
    std::unique_ptr<OutputStream> write(const AbsoluteIRI& file, ReplacementPolicy policy) override;
    void copyFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                  ReplacementPolicy policy) override;
    void moveFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                  ReplacementPolicy policy) override;
    void copyFolder(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                    ReplacementPolicy policy) override;
    void moveFolder(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                    ReplacementPolicy policy) override;
    void removeFile(const AbsoluteIRI& file) override;
    void removeFolder(const AbsoluteIRI& folder, FolderRemovalPolicy policy) override;
    void createFolder(const AbsoluteIRI& folder) override;
    void createFolderRecursive(const AbsoluteIRI& folder) override;
    void makeDurable(const AbsoluteIRI& location) override;

private:
    class Input;
    class Output;

    /// One order to fail: by number (counting down) or by location, of one operation or of all.
    struct Order {
        std::optional<Operation> operation;
        std::size_t callsToGo = 0;
        std::optional<AbsoluteIRI> location;
        Fault fault;
    };

    /// Remembers the call; gives the fault that it meets, its location filled in.
    std::optional<Fault> meet(const Call& call);
    bool isMetBy(Order& order, const Call& call);
    [[noreturn]] static void raise(const Fault& fault);

    /// Passes a call on, with the fault that it meets.
    template <class Work>
    auto attempt(const Call& call, const Work& work);

    const std::shared_ptr<Provider> wrapped_;
    mutable std::mutex guard_;
    std::vector<Order> orders_;
    std::vector<Call> calls_;
    std::size_t faultsRaised_ = 0;
    std::atomic<bool> takesFoldersApart_ = false;
};

}  // namespace korvex::runtime::storage
