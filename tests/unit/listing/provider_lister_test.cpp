// The lister on storage other than the local disk: in memory, on the web, and where the storage fails.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <filesystem>
#include <memory>
#include <span>

#include "platform/storage_vfs.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/fault_injection/fault_injecting_provider.h"
#include "runtime/storage/providers/http/web_provider.h"
#include "runtime/storage/providers/local/local_provider.h"
#include "runtime/storage/providers/memory/memory_provider.h"
#include "runtime/storage/storage_system.h"
#include "tests/support/loopback_web_server.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/listing/lister_calls.h"

namespace korvex::tests {
namespace {

namespace storage = korvex::runtime::storage;
namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;
using storage::FaultInjectingProvider;
using storage::Operation;
using testing::ElementsAre;
using testing::IsEmpty;

/// "memory" and "file" behind providers that fail where they are told to.
class ProviderListerTest : public testing::Test {
protected:
    std::shared_ptr<const vfs::StorageSystem> system() {
        auto system = std::make_shared<vfs::StorageSystem>();
        system->add(u"memory", memory_);
        system->add(u"file", local_);
        return system;
    }

    void writeFile(const std::u16string& name, std::string_view content = {}) const {
        const vfs::AbsoluteIRI location(u"memory://box/" + name);
        if (location.getParent().hasParent()) memory_->createFolderRecursive(location.getParent());
        const auto stream = memory_->write(location, provider::ReplaceAny);
        stream->setAttributes({.changed = std::chrono::sys_time<std::chrono::nanoseconds>(
                                   std::chrono::nanoseconds(1'500'000'000'123'456'789))});
        stream->write(std::as_bytes(std::span(content)));
        stream->commit();
    }
    Texts paths(std::u16string_view pattern) const { return calls_.paths(pattern); }

    std::shared_ptr<FaultInjectingProvider> memory_ =
        std::make_shared<FaultInjectingProvider>(std::make_shared<storage::MemoryProvider>());
    std::shared_ptr<FaultInjectingProvider> local_ =
        std::make_shared<FaultInjectingProvider>(std::make_shared<storage::LocalProvider>());
    storage::ScopedStorageSystem scope_{system()};
    ListerCalls calls_{u"memory://box"};
};

TEST_F(ProviderListerTest, TreeInMemoryIsListedLikeOneOnDisk) {
    for (const auto* name : {u"b.txt", u"A.txt", u"sub/x.txt", u"sub/deep/y.txt", u"sub-1/z.txt"})
        writeFile(name);
    EXPECT_THAT(paths(u"*"), ElementsAre("A.txt", "b.txt", "sub", "sub-1"));
    EXPECT_THAT(paths(u"**/*.txt"),
                ElementsAre("A.txt", "b.txt", "sub/x.txt", "sub/deep/y.txt", "sub-1/z.txt"));
    EXPECT_THAT(paths(u"sub"), ElementsAre("sub/deep", "sub/x.txt"));
    EXPECT_THAT(paths(u"sub/x.txt"), ElementsAre("sub/x.txt"));
    EXPECT_THAT(paths(u"s*/*/y*"), ElementsAre("sub/deep/y.txt"));
    EXPECT_THAT(paths(u"nothing"), IsEmpty());
}

TEST_F(ProviderListerTest, FilesInMemoryHaveTheirSizeAndTime) {
    writeFile(u"file", "12345");
    memory_->createFolder(vfs::AbsoluteIRI(u"memory://box/folder"));
    const auto found = calls_.entries(u"*");
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(std::get<std::uint64_t>(found[0].size), 5U);
    EXPECT_EQ(to_iso_extended_string(found[0].modified), "2017-07-14T02:40:00.123456");
    EXPECT_TRUE(found[1].isDirectory);
    EXPECT_TRUE(found[1].sizeKnown);
    EXPECT_TRUE(found[1].modified.is_not_a_date_time());
}

TEST_F(ProviderListerTest, FolderTextOfARemoteEntryIsTheDecodedLocation) {
    writeFile(u"two words/100%/file");
    const auto found = calls_.entries(u"two words/**/f*");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(*found[0].folder, u"memory://box/two words/100%");
    EXPECT_EQ(*calls_.entries(u"*").front().folder, u"memory://box/");
}

TEST_F(ProviderListerTest, OnlyTheSlashSeparatesInALocation) {
    writeFile(u"back\\slash");
    EXPECT_THAT(paths(u"back\\*"), ElementsAre("back\\slash"));
}

TEST_F(ProviderListerTest, SchemeThatNobodyServesIsRaised) {
    EXPECT_THROW(ListerCalls(u"gopher://host").entries(u"*"), vfs::UnsupportedIRISchemeException);
}

TEST_F(ProviderListerTest, FailureAtTheFolderIsRaised) {
    writeFile(u"sub/x");
    for (const Operation operation : {Operation::existence, Operation::list}) {
        memory_->failAt(operation, vfs::AbsoluteIRI(u"memory://box/"), {.code = vfs::ioError});
        try {
            calls_.entries(u"*");
            FAIL() << "nothing was raised";
        } catch (const vfs::Exception& error) {
            EXPECT_EQ(error.getErrorCode(), vfs::ioError);
        }
        memory_->forgetFaults();
    }
}

TEST_F(ProviderListerTest, FailureAtANamedEntryIsRaised) {
    writeFile(u"file");
    memory_->failAt(Operation::extendedExistence, vfs::AbsoluteIRI(u"memory://box/file"),
                    {.code = vfs::permissionDenied});
    EXPECT_THROW(calls_.entries(u"file"), vfs::Exception);
}

TEST_F(ProviderListerTest, FolderBelowThatCannotBeListedIsPassedOver) {
    for (const auto* name : {u"a/x", u"b/y"})
        writeFile(name);
    memory_->failAt(Operation::list, vfs::AbsoluteIRI(u"memory://box/a"), {.code = vfs::permissionDenied});
    EXPECT_THAT(paths(u"**/*"), ElementsAre("a", "b", "b/y"));
    EXPECT_EQ(memory_->faultsRaised(), 1U);
}

TEST_F(ProviderListerTest, FolderBelowThatCannotBeListedIsNeitherDisplayedAsEmptyNorFound) {
    writeFile(u"a/x");
    for (const vfs::ErrorCode code : {vfs::permissionDenied, vfs::resourceNotFound, vfs::invalidLocation}) {
        memory_->failAt(Operation::list, vfs::AbsoluteIRI(u"memory://box/a"), {.code = code});
        std::vector<FileNameWithStatLight> buffer;
        displayCalls().clear();
        EXPECT_TRUE(ioGetDirListRecursive(vfs::AbsoluteIRI(u"memory://box/"), u"**/*", buffer, u"", true,
                                          rememberDisplay, u""));
        EXPECT_THAT(displayCalls(), ElementsAre(Displayed{{"a"}, "memory://box/", "", false}));
        displayCalls().clear();
        EXPECT_FALSE(ioGetDirListRecursive(vfs::AbsoluteIRI(u"memory://box/"), u"*/*", buffer, u"", true,
                                           rememberDisplay, u""));
        EXPECT_THAT(displayCalls(), IsEmpty());
        memory_->forgetFaults();
    }
}

TEST_F(ProviderListerTest, FolderOfTheVeryNameIsOpened) {
    for (const auto* name : {u"what?/inner", u"whatx"})
        writeFile(name);
    EXPECT_THAT(paths(u"what?"), ElementsAre("what?/inner"));
    EXPECT_THAT(paths(u"wha??"), ElementsAre("what?", "whatx"));
}

TEST_F(ProviderListerTest, StorageThatFailsAtAFolderBelowIsRaised) {
    for (const auto* name : {u"a/x", u"b/y"})
        writeFile(name);
    memory_->failAt(Operation::list, vfs::AbsoluteIRI(u"memory://box/b"), {.code = vfs::ioError});
    EXPECT_THROW(paths(u"**/*"), vfs::Exception);
}

TEST_F(ProviderListerTest, FileThatCannotBeReadIsListedWithNothingKnown) {
    writeFile(u"file", "12345");
    memory_->failAt(Operation::read, vfs::AbsoluteIRI(u"memory://box/file"), {.code = vfs::ioError});
    const auto found = calls_.entries(u"*");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_FALSE(found[0].sizeKnown);
    EXPECT_TRUE(found[0].modified.is_not_a_date_time());
}

TEST_F(ProviderListerTest, DisplayAsksForNoSizes) {
    writeFile(u"file", "12345");
    memory_->forgetCalls();
    std::vector<FileNameWithStatLight> buffer;
    displayCalls().clear();
    EXPECT_TRUE(ioGetDirListRecursive(vfs::AbsoluteIRI(u"memory://box/"), u"*", buffer, u"", true,
                                      rememberDisplay, u""));
    EXPECT_THAT(displayCalls(), ElementsAre(Displayed{{"file"}, "memory://box/", "", false}));
    EXPECT_THAT(memory_->callsOf(Operation::read), IsEmpty());
    displayCalls().clear();
}

TEST_F(ProviderListerTest, ProviderThatWrapsTheLocalOneListsTheSame) {
    const ScratchFolder scratch;
    for (const char* file : {"b", "a/x.txt", "a/in/y.txt", "a-b/z", ".hidden"})
        scratch.writeFile(file, "123");
    std::filesystem::create_symlink("a", scratch.path() / "link");
    std::filesystem::create_symlink(".", scratch.path() / "a/round");
    std::filesystem::create_symlink("nowhere", scratch.path() / "broken");
    const ListerCalls calls(scratch.text());
    for (const auto* pattern : {u"*", u"**/*", u"a", u"link", u"**/*.txt", u"*/x*", u"**/round/x*", u"broken",
                                u"**/in", u"link/*", u"*/round/*", u"nothing", u"a*/"}) {
        const Texts wrapped = calls.paths(pattern);
        const bool isFound = calls.isFound;
        EXPECT_FALSE(local_->calls().empty());
        const storage::ScopedStorageSystem plain([] {
            auto only = std::make_shared<vfs::StorageSystem>();
            only->add(u"file", std::make_shared<storage::LocalProvider>());
            return only;
        }());
        EXPECT_EQ(wrapped, calls.paths(pattern));
        EXPECT_EQ(isFound, calls.isFound);
    }
}

/// The web as one server on this machine.
class WebListerTest : public testing::Test {
protected:
    std::shared_ptr<const vfs::StorageSystem> system() {
        auto system = std::make_shared<vfs::StorageSystem>();
        system->add(u"http", std::make_shared<storage::WebProvider>());
        return system;
    }
    bool list(const std::string& path, ListingDisplay display = nullptr) {
        const std::string address = server_.address() + path;
        const vfs::AbsoluteIRI location(std::u16string(address.begin(), address.end()));
        return ioGetDirListRecursive(location, u"", found_, u"", true, display, u"");
    }

    LoopbackWebServer server_{LoopbackWebServer::Protocol::http};
    storage::ScopedStorageSystem scope_{system()};
    std::vector<FileNameWithStatLight> found_;
};

TEST_F(WebListerTest, LocationThatAnswersIsOneEntry) {
    server_.addFile("/folder/two words.txt", "12345");
    EXPECT_TRUE(list("/folder/two%20words.txt"));
    ASSERT_EQ(found_.size(), 1U);
    EXPECT_EQ(found_[0].name, u"two words.txt");
    EXPECT_EQ(shown(*found_[0].folder), server_.address() + "/folder");
    EXPECT_FALSE(found_[0].isDirectory);
    EXPECT_EQ(std::get<std::uint64_t>(found_[0].size), 5U);
}

TEST_F(WebListerTest, TimeIsWhatTheServerTells) {
    EXPECT_TRUE(list("/dated"));
    ASSERT_EQ(found_.size(), 1U);
    EXPECT_EQ(to_iso_extended_string(found_[0].modified), "2015-03-02T12:30:00");
}

TEST_F(WebListerTest, HostAloneIsItsOwnFolder) {
    server_.addFile("/", "index");
    EXPECT_TRUE(list("/"));
    ASSERT_EQ(found_.size(), 1U);
    EXPECT_EQ(found_[0].name, u"/");
    EXPECT_EQ(shown(*found_[0].folder), server_.address() + "/");
}

TEST_F(WebListerTest, WhatTheServerDoesNotHaveIsNotFound) {
    EXPECT_FALSE(list("/nothing"));
    EXPECT_THAT(found_, IsEmpty());
}

TEST_F(WebListerTest, ServerThatFailsIsRaised) { EXPECT_THROW(list("/status/500"), vfs::Exception); }

TEST_F(WebListerTest, DisplayFetchesNoContent) {
    server_.addFile("/file", "12345");
    displayCalls().clear();
    EXPECT_TRUE(list("/file", rememberDisplay));
    EXPECT_THAT(displayCalls(), ElementsAre(Displayed{{"file"}, server_.address() + "/", "", false}));
    ASSERT_EQ(server_.requests().size(), 1U);
    EXPECT_EQ(server_.requests()[0].method, "HEAD");
    displayCalls().clear();
}

TEST_F(WebListerTest, PendingInterruptEndsTheWaitAndStaysPending) {
    korvex::runtime::interpreter::raiseInterrupt();
    EXPECT_FALSE(list("/silent"));
    EXPECT_TRUE(korvex::runtime::interpreter::takeInterrupt());
}

}  // namespace
}  // namespace korvex::tests
