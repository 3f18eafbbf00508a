// `what` over storage that fails: where the failure is one of the question whether a folder is there, and
// where it is one of the listing.
#include <memory>
#include <ostream>

#include "runtime/packages/package_registry.h"
#include "runtime/storage/fault_injection/fault_injecting_provider.h"
#include "runtime/storage/providers/local/local_provider.h"
#include "runtime/storage/providers/memory/memory_provider.h"
#include "runtime/storage/storage_system.h"
#include "tests/unit/filemanip/what/what_fixture.h"

namespace korvex::filemanip::tests {
namespace {

namespace storage = korvex::runtime::storage;
namespace vfs = foundation::storage::vfs;
using storage::FaultInjectingProvider;
using storage::Operation;
using testing::ElementsAre;
using testing::IsEmpty;

/// Local disk and memory behind providers that fail where they are told to.
class WhatFailuresTest : public WhatTest, public testing::WithParamInterface<vfs::ErrorCode> {
protected:
    WhatFailuresTest() {
        makeFiles({"a/x.k", "b/y.k"});
        const vfs::AbsoluteIRI folder(u"memory://box/a");
        memory_->createFolderRecursive(folder);
        memory_->write(vfs::AbsoluteIRI(folder, u"x.k"), foundation::storage::provider::ReplaceAny)->commit();
    }
    std::shared_ptr<const vfs::StorageSystem> system() {
        auto system = std::make_shared<vfs::StorageSystem>();
        system->add(u"file", local_);
        system->add(u"memory", memory_);
        return system;
    }
    vfs::AbsoluteIRI at(const std::string& name) const {
        return Velquist::PathManagement::GetIRIFromString(path(name));
    }
    /// The code and place of what reaches the interpreter.
    struct Raised {
        std::optional<vfs::ErrorCode> code;
        std::u16string location;
    };
    static Raised raisedBy(int nlhs, const std::vector<std::u16string>& words) {
        try {
            whatOf(nlhs, words);
        } catch (const vfs::Exception& error) {
            return {error.getErrorCode(), error.getLocation().toString()};
        }
        return {};
    }

    std::shared_ptr<FaultInjectingProvider> local_ =
        std::make_shared<FaultInjectingProvider>(std::make_shared<storage::LocalProvider>());
    std::shared_ptr<FaultInjectingProvider> memory_ =
        std::make_shared<FaultInjectingProvider>(std::make_shared<storage::MemoryProvider>());
    storage::ScopedStorageSystem scope_{system()};
};

TEST_P(WhatFailuresTest, ListerThatFailsPassesItsFailureOn) {
    local_->failAt(Operation::list, at("a"), {.code = GetParam()});
    memory_->failAt(Operation::list, vfs::AbsoluteIRI(u"memory://box/a"), {.code = GetParam()});
    for (const int nlhs : {0, 1}) {
        EXPECT_EQ(raisedBy(nlhs, {u"a"}).code, GetParam());
        EXPECT_EQ(raisedBy(nlhs, {u"a"}).location, at("a").toString());
        EXPECT_EQ(raisedBy(nlhs, {u"memory://box/a"}).code, GetParam());
    }
}

TEST_P(WhatFailuresTest, ListerThatFailsOnTheCurrentFolderDoesSo) {
    moveTo("a");
    local_->failAt(Operation::list, at("a"), {.code = GetParam()});
    EXPECT_EQ(raisedBy(0, {}).code, GetParam());
    EXPECT_EQ(raisedBy(1, {}).code, GetParam());
}

TEST_P(WhatFailuresTest, ListerThatFailsOnAFolderOfThePathDoesSo) {
    putOnPath({"p/solvers"});
    local_->failAt(Operation::list, at("p/solvers"), {.code = GetParam()});
    EXPECT_EQ(raisedBy(0, {u"solvers"}).code, GetParam());
}

TEST_P(WhatFailuresTest, FolderWhoseExistenceCannotBeToldIsNotThere) {
    local_->failAt(Operation::existence, at("a"), {.code = GetParam()});
    memory_->failAt(Operation::existence, vfs::AbsoluteIRI(u"memory://box/a"), {.code = GetParam()});
    for (const auto* name : {u"a", u"memory://box/a"}) {
        EXPECT_EQ(printedBy({name}), notFoundLine(runtime::text::toDisplayBytes(name)));
        EXPECT_THAT(foldersFor({name}), IsEmpty());
    }
}

TEST_P(WhatFailuresTest, FolderWithoutACanonicalFormIsNotThere) {
    local_->failAt(Operation::canonicalLocation, at("a"), {.code = GetParam()});
    EXPECT_EQ(printedBy({u"a"}), notFoundLine("a"));
    EXPECT_THAT(foldersFor({u"a"}), IsEmpty());
    EXPECT_EQ(printedBy({u"a", u"-casesensitive"}), notFoundLine("a"));
}

TEST_P(WhatFailuresTest, SpellingThatCannotBeLookedUpLeavesTheNameAsItIs) {
    // The question whether it is a link, and the two for its spelling, as a folder and as a file.
    local_->failAt(Operation::extendedExistence, at("a"), {.code = GetParam()});
    local_->failCall(Operation::canonicalLocation, 1, {.code = GetParam()});
    local_->failCall(Operation::canonicalLocation, 2, {.code = GetParam()});
    EXPECT_THAT(foldersFor({u"a"}), ElementsAre(here("a")));
    EXPECT_EQ(local_->faultsRaised(), 3U);
}

TEST_P(WhatFailuresTest, FolderOfThePathThatFailsIsPassedOver) {
    putOnPath({"p/x", "q/x"});
    local_->failAt(Operation::existence, at("p/x"), {.code = GetParam()});
    EXPECT_THAT(foldersFor({u"x"}), ElementsAre(here("q/x")));
}

TEST_P(WhatFailuresTest, FolderOfThePathThatCannotBeReadHasNoSpecialFolders) {
    putOnPath({"p", "q"});
    makeFolders({"p/@c", "q/@c"});
    local_->failAt(Operation::list, at("p"), {.code = GetParam()});
    EXPECT_THAT(foldersFor({u"@c"}), ElementsAre(here("q/@c")));
}

TEST_P(WhatFailuresTest, FoldersOfAPackageThatFailArePassedOverAndNoOthers) {
    makeFolders({"tools/bad/x", "tools/closed/x", "tools/good/x"});
    runtime::packages::registerPackage(path("tools"), u"tools", false);
    local_->failAt(Operation::extendedExistence, at("tools/bad"), {.code = GetParam()});
    local_->failAt(Operation::list, at("tools/closed"), {.code = GetParam()});
    EXPECT_THAT(foldersFor({u"x"}), ElementsAre(here("tools/good/x")));
}

TEST_P(WhatFailuresTest, NothingIsEverChanged) {
    local_->failAt(Operation::existence, at("a"), {.code = GetParam()});
    printedBy({u"a", u"b", u"nothing", u"memory://box/a", u"-casesensitive"});
    for (const storage::Call& call : local_->calls()) {
        const bool onlyAsks =
            call.operation == Operation::existence || call.operation == Operation::extendedExistence ||
            call.operation == Operation::canonicalLocation || call.operation == Operation::list;
        EXPECT_TRUE(onlyAsks) << call;
    }
    EXPECT_THAT(local_->callsOf(Operation::list), testing::SizeIs(1));
}

TEST_P(WhatFailuresTest, FilesAreOfTheirKindsWhoeverMayReadThem) {
    local_->failAt(at("a/x.k"), {.code = GetParam()});
    memory_->failAt(vfs::AbsoluteIRI(u"memory://box/a/x.k"), {.code = GetParam()});
    EXPECT_EQ(printedBy({u"a"}), block(here("a"), "x"));
    EXPECT_EQ(printedBy({u"memory://box/a"}), block("memory://box/a", "x"));
    EXPECT_EQ(local_->faultsRaised() + memory_->faultsRaised(), 0U) << "none was asked";
}

constexpr vfs::ErrorCode allCodes[] = {
    vfs::folderNotEmpty,   vfs::invalidLocation,  vfs::permissionDenied, vfs::resourceAlreadyExists,
    vfs::resourceNotFound, vfs::readOnlyProvider, vfs::fileTooLarge,     vfs::resourceInUse,
    vfs::noSpaceLeft,      vfs::ioError,          vfs::internalError,    vfs::unsupportedOperation,
    vfs::unknownError};
INSTANTIATE_TEST_SUITE_P(Codes, WhatFailuresTest, testing::ValuesIn(allCodes));

using WhatPartialFailuresTest = WhatFailuresTest;

TEST_F(WhatPartialFailuresTest, FoldersReportedBeforeAFailureStay) {
    local_->failAt(Operation::list, at("b"), {.code = vfs::ioError});
    kxArray* plhs[1] = {nullptr};
    const Array first = text(u"a");
    const Array second = text(u"b");
    const kxArray* prhs[3] = {first.get(), second.get(), nullptr};
    EXPECT_THROW(bnFullWhatFcn(1, plhs, 2, prhs), vfs::Exception);
    EXPECT_THAT(foldersOf(Array(plhs[0])), ElementsAre(here("a")));

    const PrintedText printed;
    EXPECT_THROW(bnFullWhatFcn(0, plhs, 2, prhs), vfs::Exception);
    EXPECT_EQ(printed.text(), block(here("a"), "x"));
}

}  // namespace
}  // namespace korvex::filemanip::tests
