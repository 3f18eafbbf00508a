// `dir` on locations with a scheme: in memory, on the web, with schemes that nobody serves, and badly formed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "runtime/storage/provider.h"
#include "runtime/storage/providers/http/web_provider.h"
#include "runtime/storage/providers/local/local_provider.h"
#include "runtime/storage/providers/memory/memory_provider.h"
#include "runtime/storage/storage_system.h"
#include "tests/support/loopback_web_server.h"
#include "tests/unit/filemanip/dir_listing/listing_outcome.h"

namespace korvex::filemanip::tests {
namespace {

namespace storage = korvex::runtime::storage;
namespace vfs = foundation::storage::vfs;
using testing::ElementsAre;

class DirLocationsTest : public testing::Test {
protected:
    std::shared_ptr<const vfs::StorageSystem> system() {
        auto system = std::make_shared<vfs::StorageSystem>();
        system->add(u"file", std::make_shared<storage::LocalProvider>());
        system->add(u"memory", memory_);
        return system;
    }

    void makeFile(const std::u16string& name) const {
        const vfs::AbsoluteIRI location(u"memory://box/" + name);
        if (location.getParent().hasParent()) memory_->createFolderRecursive(location.getParent());
        memory_->write(location, foundation::storage::provider::ReplaceAny)->commit();
    }

    std::shared_ptr<storage::MemoryProvider> memory_ = std::make_shared<storage::MemoryProvider>();
    storage::ScopedStorageSystem scope_{system()};
    WindowOfColumns window_{80};
};

std::string notFound(const std::string& name) {
    return "\"" + name + "\" was not found. Check the spelling and the current folder.\n";
}
std::string noMatch(const std::string& pattern) {
    return "Nothing matches \"" + pattern + "\". Check the pattern and the current folder.\n";
}

TEST_F(DirLocationsTest, FolderInMemoryIsListed) {
    for (const auto* name : {u"b", u"A", u"sub/x"})
        makeFile(name);
    EXPECT_EQ(print(u"memory://box/").printed, "\nA    b    sub  \n\n");
    EXPECT_EQ(print(u"memory://box/sub").printed, "\nx  \n\n");
    EXPECT_EQ(print(u"memory://box/sub/").printed, "\nx  \n\n");
    EXPECT_EQ(print(u"MEMORY://box/*").printed, "\nA    b    sub  \n\n");
}

TEST_F(DirLocationsTest, LocationThatParsesOnlyWithASlashIsListed) {
    makeFile(u"a");
    EXPECT_EQ(print(u"memory://box").printed, "\na  \n\n");
    EXPECT_THAT(column(list(u"memory://box").outputs[0], "name"), ElementsAre("a"));
    EXPECT_THAT(column(list(u"memory://box").outputs[0], "folder"), ElementsAre("memory://box/"));
}

TEST_F(DirLocationsTest, TreeInMemoryHasHeaders) {
    for (const auto* name : {u"a", u"two words/b"})
        makeFile(name);
    EXPECT_EQ(print(u"memory://box/**").printed,
              "Files found in memory://box/:\n\na          two words  \n\n"
              "Files found in memory://box/two words:\n\nb  \n\n");
    EXPECT_THAT(column(list(u"memory://box/**").outputs[0], "folder"),
                ElementsAre("memory://box/", "memory://box/", "memory://box/two words"));
}

TEST_F(DirLocationsTest, EscapesAreDecodedInThePatternToo) {
    makeFile(u"two words/a b");
    EXPECT_THAT(column(list(u"memory://box/two%20words/a%20*").outputs[0], "name"), ElementsAre("a b"));
    EXPECT_THAT(column(list(u"memory://box/two%20words").outputs[0], "name"), ElementsAre("a b"));
}

TEST_F(DirLocationsTest, LocationOnTheLocalDiskIsListedByItsPath) {
    EXPECT_THAT(column(list(u"file:///dev/null").outputs[0], "name"), ElementsAre("null"));
    EXPECT_THAT(column(list(u"file:///dev/nul?").outputs[0], "folder"), ElementsAre("/dev"));
}

TEST_F(DirLocationsTest, WhatIsNotThereIsALineWithoutAnOutputAndNothingWithOne) {
    EXPECT_EQ(print(u"memory://box/nothing").printed, notFound("memory://box/nothing"));
    EXPECT_EQ(print(u"memory://box/nothing/").printed, notFound("memory://box/nothing/"));
    EXPECT_EQ(print(u"memory://box/nothing*").printed, noMatch("memory://box/nothing*"));
    const ListingOutcome outcome = list(u"memory://box/nothing");
    expectEmptyStructure(outcome.outputs[0]);
    EXPECT_EQ(outcome.printed, "");
}

TEST_F(DirLocationsTest, BadFormIsPrintedTwiceWithoutAnOutputAndOnceWithOne) {
    for (const auto* bad :
         {u"file:/a", u"file://", u"memory:/box/a", u"memory:///box/a", u"memory://box/../a",
          u"memory://box/./a", u"memory://box/%2e%2E/a", u"http:/host"}) {
        const std::string line = notFound(runtime::text::toDisplayBytes(bad));
        EXPECT_EQ(print(bad).printed, line + line);
        const ListingOutcome outcome = list(bad);
        EXPECT_EQ(outcome.printed, line);
        expectEmptyStructure(outcome.outputs[0]);
    }
}

TEST_F(DirLocationsTest, BadFormIsJudgedBeforeNulAndPattern) {
    EXPECT_EQ(list(u"memory:/box/%00").errorIdentifier, "");
    EXPECT_EQ(list(u"memory:/box/a**").errorIdentifier, "");
}

TEST_F(DirLocationsTest, LocationThatParsesInNoFormIsALineWithoutAnOutput) {
    const std::string line = print(u"memory://bad host").printed;
    EXPECT_THAT(line, testing::HasSubstr("memory://bad host"));
    EXPECT_EQ(std::ranges::count(line, '\n'), 1);
    EXPECT_EQ(line,
              "\"memory://bad host\" is not a valid location. Write scheme://host/path, or file:///path for "
              "a local file.\n");
    const ListingOutcome outcome = list(u"memory://bad host");
    expectEmptyStructure(outcome.outputs[0]);
    EXPECT_EQ(outcome.printed, "");
    EXPECT_EQ(outcome.errorIdentifier, "");
}

TEST_F(DirLocationsTest, FolderWithAQuestionMarkInItsNameIsOpened) {
    makeFile(u"what?/inner");
    makeFile(u"whatx");
    EXPECT_EQ(print(u"memory://box/what%3F").printed, "\ninner  \n\n");
}

TEST_F(DirLocationsTest, SchemeThatNobodyServesIsALineWithoutAnOutput) {
    EXPECT_EQ(
        print(u"gopher://host/a").printed,
        "No storage provider serves \"gopher://host/a\". Check the spelling of the scheme, which stands "
        "before the colon.\n");
    const ListingOutcome outcome = list(u"gopher://host/a");
    expectEmptyStructure(outcome.outputs[0]);
    EXPECT_EQ(outcome.printed, "");
    EXPECT_EQ(outcome.errorIdentifier, "");
}

TEST_F(DirLocationsTest, LengthIsNotLimited) {
    const std::u16string name(2000, u'x');
    makeFile(name);
    EXPECT_THAT(column(list(u"memory://box/" + name).outputs[0], "name"),
                ElementsAre(std::string(2000, 'x')));
}

TEST_F(DirLocationsTest, TwoStarsInALocationFollowTheSameRules) {
    EXPECT_EQ(list(u"memory://box/a**").errorIdentifier, "KORVEX:dir:invalidGlob");
    EXPECT_EQ(list(u"memory://box/**/**/a").errorIdentifier, "KORVEX:dir:SuccessiveGlobs");
}

/// The web as one server on this machine, which lives longer than the connections to it.
class DirWebTest : public testing::Test {
protected:
    static std::shared_ptr<const vfs::StorageSystem> system() {
        auto system = std::make_shared<vfs::StorageSystem>();
        system->add(u"file", std::make_shared<storage::LocalProvider>());
        system->add(u"http", std::make_shared<storage::WebProvider>());
        return system;
    }

    std::u16string location(const std::string& path) const {
        const std::string address = server_.address() + path;
        return {address.begin(), address.end()};
    }

    korvex::tests::LoopbackWebServer server_{korvex::tests::LoopbackWebServer::Protocol::http};
    storage::ScopedStorageSystem scope_{system()};
    WindowOfColumns window_{80};
};

TEST_F(DirWebTest, LocationThatAnswersIsOneRow) {
    server_.addFile("/data/a b.csv", "12345");
    const Array structure = std::move(list(location("/data/a%20b.csv")).outputs[0]);
    EXPECT_THAT(column(structure, "name"), ElementsAre("a b.csv"));
    EXPECT_THAT(column(structure, "folder"), ElementsAre(server_.address() + "/data"));
    EXPECT_EQ(kxGetScalar(field(structure, 0, "bytes")), 5);
    EXPECT_EQ(print(location("/data/a%20b.csv")).printed, "\na b.csv  \n\n");
}

TEST_F(DirWebTest, ClosingSlashGetsNoStar) {
    server_.addFile("/", "index");
    EXPECT_THAT(column(list(location("/")).outputs[0], "name"), ElementsAre("/"));
    EXPECT_THAT(column(list(location("")).outputs[0], "name"), ElementsAre("/"));
}

TEST_F(DirWebTest, WhatDoesNotAnswerIsNotFound) {
    const std::u16string nothing = location("/nothing");
    EXPECT_EQ(print(nothing).printed, notFound(runtime::text::toDisplayBytes(nothing)));
    expectEmptyStructure(list(nothing).outputs[0]);
    const std::u16string pattern = location("/no*");
    EXPECT_EQ(print(pattern).printed, noMatch(runtime::text::toDisplayBytes(pattern)));
}

TEST_F(DirWebTest, ServerThatFailsIsAnErrorOfTheStorage) {
    EXPECT_THROW(print(location("/status/500")), vfs::Exception);
    EXPECT_THROW(list(location("/status/500")), vfs::Exception);
}

}  // namespace
}  // namespace korvex::filemanip::tests
