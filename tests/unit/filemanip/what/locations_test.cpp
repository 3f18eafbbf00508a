// `what` on locations with a scheme: on the disk, in memory, on the web, and badly formed.
#include <memory>
#include <sstream>

#include "platform/diagnostic_log.h"
#include "runtime/log/trace_output.h"
#include "runtime/storage/providers/http/web_provider.h"
#include "runtime/storage/providers/local/local_provider.h"
#include "runtime/storage/providers/memory/memory_provider.h"
#include "runtime/storage/storage_system.h"
#include "tests/support/loopback_web_server.h"
#include "tests/unit/filemanip/what/what_fixture.h"

namespace korvex::filemanip::tests {
namespace {

namespace severity = foundation::log::severity;
namespace storage = korvex::runtime::storage;
namespace vfs = foundation::storage::vfs;
using testing::ElementsAre;
using testing::IsEmpty;

class WhatLocationsTest : public WhatTest {
protected:
    std::shared_ptr<const vfs::StorageSystem> system() {
        auto system = std::make_shared<vfs::StorageSystem>();
        system->add(u"file", std::make_shared<storage::LocalProvider>());
        system->add(u"memory", memory_);
        system->add(u"http", std::make_shared<storage::WebProvider>());
        return system;
    }
    void makeRemoteFile(const std::u16string& text) const {
        const vfs::AbsoluteIRI location(text);
        if (location.getParent().hasParent()) memory_->createFolderRecursive(location.getParent());
        memory_->write(location, foundation::storage::provider::ReplaceAny)->commit();
    }
    std::u16string web(const std::string& path) const {
        const std::string address = server_.address() + path;
        return {address.begin(), address.end()};
    }

    korvex::tests::LoopbackWebServer server_{korvex::tests::LoopbackWebServer::Protocol::http};
    std::shared_ptr<storage::MemoryProvider> memory_ = std::make_shared<storage::MemoryProvider>();
    storage::ScopedStorageSystem scope_{system()};
};

const std::string webHasNoFolders =
    "Web locations have no folders that could be listed. Name a folder on another storage.\n";

TEST_F(WhatLocationsTest, FolderInMemoryIsReportedByItsDecodedLocation) {
    makeRemoteFile(u"memory://box/two%20words/x.k");
    const std::u16string location = u"memory://box/two%20words";
    EXPECT_EQ(printedBy({location}), block("memory://box/two words", "x"));
    EXPECT_THAT(foldersFor({location}), ElementsAre("memory://box/two words"));
    EXPECT_THAT(groupOf(resultOf({u"MEMORY://box/two words/"}), 0, "k"), ElementsAre("x.k"));
    EXPECT_THAT(foldersFor({u"memory://box/"}), ElementsAre("memory://box/"));
}

TEST_F(WhatLocationsTest, LocationOnTheDiskIsReportedByItsPath) {
    makeFiles({"two words/x.k"});
    const std::u16string location = u"file://" + path("two%20words");
    EXPECT_EQ(printedBy({location}), block(here("two words"), "x"));
    EXPECT_THAT(foldersFor({location}), ElementsAre(here("two words")));
}

TEST_F(WhatLocationsTest, WithRegardToCaseALocationMustBeSpelledAsItsTrueName) {
    makeRemoteFile(u"memory://box/two%20words/x.k");
    EXPECT_THAT(foldersFor({u"memory://box/two%20words", u"-casesensitive"}),
                ElementsAre("memory://box/two words"));
    EXPECT_THAT(foldersFor({u"memory://box/two words", u"-casesensitive"}), IsEmpty());
    // The true name of a local folder is its path, and so has no scheme to agree with.
    makeFolders({"a"});
    EXPECT_THAT(foldersFor({u"file://" + path("a"), u"-casesensitive"}), IsEmpty());
    EXPECT_THAT(foldersFor({u"file://" + path("a")}), ElementsAre(here("a")));
}

TEST_F(WhatLocationsTest, LocationStaysAsItWasGiven) {
    makeFiles({"real/x.k"});
    link("link", "real");
    EXPECT_THAT(foldersFor({u"file://" + path("link")}), ElementsAre(here("link")));
}

/// Disks of which every path is another name for one folder in memory.
class OneFolderProvider : public storage::MemoryProvider {
public:
    vfs::CanonicalAbsoluteIRI canonicalLocation(const vfs::AbsoluteIRI&) override {
        return vfs::CanonicalAbsoluteIRI(vfs::AbsoluteIRI(u"memory://box/a"));
    }
};

TEST_F(WhatLocationsTest, LocationWithAnAbsolutePathKeepsItOnAnyMachine) {
    makeRemoteFile(u"memory://box/a/x.k");
    auto system = std::make_shared<vfs::StorageSystem>();
    const auto disks = std::make_shared<OneFolderProvider>();
    for (const auto* folder : {u"file:///own/sub", u"file://host/other/sub"})
        disks->createFolderRecursive(vfs::AbsoluteIRI(folder));
    system->add(u"file", disks);
    system->add(u"memory", memory_);
    const storage::ScopedStorageSystem scope(system);
    EXPECT_THAT(foldersFor({u"file:///own"}), ElementsAre("/own"));
    EXPECT_THAT(foldersFor({u"file://host/other"}), ElementsAre("//host/other"));
}

TEST_F(WhatLocationsTest, DiskOfAnotherMachineThatNobodyServesIsNotFound) {
    EXPECT_EQ(printedBy({u"file://host/x"}), notFoundLine("file://host/x"));
    EXPECT_THAT(foldersFor({u"file://host/"}), IsEmpty());
}

TEST_F(WhatLocationsTest, WhatIsNoFolderIsNotFound) {
    makeRemoteFile(u"memory://box/x.k");
    for (const auto* name : {u"memory://box/x.k", u"memory://box/nothing", u"memory://box",
                             u"gopher://host/a", u"memory://bad host/"}) {
        EXPECT_EQ(printedBy({name}), notFoundLine(runtime::text::toDisplayBytes(name)));
        EXPECT_THAT(foldersFor({name}), IsEmpty());
    }
}

TEST_F(WhatLocationsTest, BadFormIsNotFoundWhetherOrNotTheFolderExists) {
    makeRemoteFile(u"memory://box/a/x.k");
    makeRemoteFile(u"memory://box/b/x.k");
    for (const auto* name : {u"memory://box/a/../b", u"memory://box/./a", u"memory:/box/a",
                             u"memory:///box/a", u"memory://box/a/%2E%2e/b", u"file:/tmp", u"http:/host/x"}) {
        EXPECT_EQ(printedBy({name}), notFoundLine(runtime::text::toDisplayBytes(name)));
        EXPECT_THAT(foldersFor({name}), IsEmpty());
    }
}

TEST_F(WhatLocationsTest, NamesBehindABadOneAreReported) {
    makeFiles({"a/x.k"});
    EXPECT_EQ(printedBy({u"file:/tmp", u"a"}), notFoundLine("file:/tmp") + block(here("a"), "x"));
}

TEST_F(WhatLocationsTest, WebLocationHasALineOfItsOwnBehindTheOneOfWhatIsNotFound) {
    server_.addFile("/x", "content");
    for (const std::u16string& name : {web("/x"), web("/nothing"), web("/x/"), web("/status/500")}) {
        EXPECT_EQ(printedBy({name}), notFoundLine(runtime::text::toDisplayBytes(name)) + webHasNoFolders);
        EXPECT_THAT(foldersFor({name}), IsEmpty());
    }
    // Also where nobody serves the scheme, whatever the case of its letters.
    EXPECT_EQ(printedBy({u"HTTPS://host/x"}), notFoundLine("HTTPS://host/x") + webHasNoFolders);
}

TEST_F(WhatLocationsTest, WebLocationIsTraced) {
    std::ostringstream lines;
    {
        const runtime::log::TraceOutput output(lines, severity::error | severity::exceptionInFlight);
        printedBy({web("/x")});
    }
    EXPECT_EQ(lines.str(),
              " 512 Http/s URLs are treated as files.\n"
              "  16 Exception caught: No diagnostic information available.\n");
}

TEST_F(WhatLocationsTest, NothingElseIsTraced) {
    makeFiles({"a/x.k"});
    std::ostringstream lines;
    {
        const runtime::log::TraceOutput output(lines, severity::error | severity::exceptionInFlight);
        printedBy({u"a", u"nothing", u"memory://box/nothing"});
        foldersFor({web("/x")});
    }
    EXPECT_EQ(lines.str(), "");
}

}  // namespace
}  // namespace korvex::filemanip::tests
