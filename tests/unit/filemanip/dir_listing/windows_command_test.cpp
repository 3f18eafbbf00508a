// The whole of `dir` where paths are those of Windows: the order in which a path is cleaned up, and when its
// length is judged. Over stand-ins for the platform's path functions, and a lister that finds nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "platform/dispatcher.h"
#include "platform/filesystem_core.h"
#include "runtime/paths/path_style.h"
#include "runtime/storage/provider.h"
#include "runtime/storage/storage_system.h"
#include "tests/unit/filemanip/dir_listing/listing_outcome.h"
#include "tests/unit/filemanip/fake_platform_paths.h"

namespace vfs = foundation::storage::vfs;
using korvex::filemanip::tests::fakePlatform;

namespace {

/// Knows its current folder and nothing else.
class FakeDispatcher : public Kdispatcher, public Velquist::current_working_folder::ICurrentWorkingFolder {
public:
    ICurrentWorkingFolder& GetCurrentWorkingFolder() override { return *this; }
    vfs::Folder get() const override {
        return vfs::Folder(vfs::AbsoluteIRI(u"file:///C:/here"),
                           Velquist::KorvexStorageSystem::GetStorageSystemReference());
    }

    vfs::AbsoluteIRI absolutize(const std::u16string&) const override { fail(); }
    Velquist::PathManagement::IMainSearchPathManager& GetMainSearchPathManager() override { fail(); }
    std::shared_ptr<const Velquist::PathManagement::IPath> GetCurrentPath() override { fail(); }
    int get_iExtension(dispatcher::ustring_namehash::Key, bool) const override { fail(); }

private:
    [[noreturn]] static void fail() { throw std::logic_error("nothing that dir should ask for"); }
};

struct AskedLister {
    std::u16string folder;
    std::u16string pattern;
    std::u16string prefix;

    bool operator==(const AskedLister&) const = default;
};

void PrintTo(const AskedLister& asked, std::ostream* stream) {
    using korvex::runtime::text::toDisplayBytes;
    *stream << toDisplayBytes(asked.folder) << " for \"" << toDisplayBytes(asked.pattern) << "\" under \""
            << toDisplayBytes(asked.prefix) << '"';
}

AskedLister& askedLister() {
    static AskedLister asked;
    return asked;
}

}  // namespace

Kdispatcher& Kdispatcher::getDispatcher() {
    static FakeDispatcher dispatcher;
    return dispatcher;
}

bool ioGetDirListRecursive(const vfs::AbsoluteIRI& folder, std::u16string_view pattern,
                           std::vector<FileNameWithStatLight>&, const std::u16string& prefix, bool,
                           ListingDisplay, const std::u16string&) {
    askedLister() = {folder.toString(), std::u16string(pattern), prefix};
    return false;
}

namespace korvex::io::filesystem::core {

void relativeToAbsolute(std::u16string& path, ResolveSymbolicLinks) {
    fakePlatform().calls.push_back(u"relativeToAbsolute(" + path + u')');
    path = runtime::paths::joined(u"C:\\here", path, runtime::paths::PathStyle::windows);
}

}  // namespace korvex::io::filesystem::core

namespace korvex::filemanip::tests {
namespace {

namespace storage = korvex::runtime::storage;
using testing::ElementsAre;

class WindowsCommandTest : public testing::Test {
protected:
    WindowsCommandTest() {
        fakePlatform() = FakePlatform();
        askedLister() = {};
    }
    ~WindowsCommandTest() override { fakePlatform() = FakePlatform(); }

    /// What was done to the path, without the questions.
    static std::vector<std::u16string> cleanUps() {
        std::vector<std::u16string> calls = fakePlatform().calls;
        std::erase_if(calls, [](const std::u16string& call) {
            return call.starts_with(u"is_absolute") || call.starts_with(u"make_native_form") ||
                   call.starts_with(u"GetIRIFromString");
        });
        return calls;
    }
};

TEST_F(WindowsCommandTest, PathIsCleanedUpInItsOrder) {
    list(u"a/.\\b/../c/x . ");
    EXPECT_THAT(cleanUps(), ElementsAre(u"replaceSlashesOnWindows(a/.\\b/../c/x . )",
                                        u"handleWindowsTrailingDotsAndSpaces(a\\.\\b\\..\\c\\x . )",
                                        u"relativeToAbsolute(a\\.\\b\\..\\c\\x)",
                                        u"handleSingleDots(C:\\here\\a\\.\\b\\..\\c\\x)",
                                        u"handleDotDots(C:\\here\\a\\b\\..\\c\\x)",
                                        u"convertWindowsBackslashes(C:\\here\\a\\c\\x)"));
    EXPECT_EQ(askedLister(), (AskedLister{u"file:///C:/here/a/c", u"x", u""}));
}

TEST_F(WindowsCommandTest, PrefixIsThatOfTheCleanedPathBeforeItIsMadeAbsolute) {
    list(u"sub/deep/*. ");
    EXPECT_EQ(askedLister(), (AskedLister{u"file:///C:/here/sub/deep", u"*", u"sub\\deep"}));
}

TEST_F(WindowsCommandTest, LengthIsJudgedWhenTrailingDotsAndBlanksHaveGone) {
    const std::u16string longest(1023, u'x');
    EXPECT_EQ(list(longest + u". . .").errorIdentifier, "");
    EXPECT_EQ(askedLister().pattern, longest);
}

/// A disk on which everything has one canonical form, or none at all.
class CanonicalDisk : public storage::Provider {
public:
    storage::ExistenceType existence(const vfs::AbsoluteIRI&) override {
        throw std::logic_error("not asked");
    }
    storage::ExistenceTypeExtended extendedExistence(const vfs::AbsoluteIRI&) override {
        throw std::logic_error("not asked");
    }
    vfs::CanonicalAbsoluteIRI canonicalLocation(const vfs::AbsoluteIRI&) override {
        if (isBroken) throw 42;  // no exception class
        return vfs::CanonicalAbsoluteIRI(vfs::AbsoluteIRI(u"file:///C:/canonical/x"));
    }

    bool isBroken = false;
};

class WindowsLocationTest : public WindowsCommandTest {
protected:
    std::shared_ptr<const vfs::StorageSystem> system() const {
        auto system = std::make_shared<vfs::StorageSystem>();
        system->add(u"file", disk_);
        return system;
    }
    static void letPathsBeAbsolute(bool areAbsolute) {
        fakePlatform().isAbsolute = [areAbsolute](const std::u16string&) { return areAbsolute; };
    }

    std::shared_ptr<CanonicalDisk> disk_ = std::make_shared<CanonicalDisk>();
    storage::ScopedStorageSystem scope_{system()};
    const std::string invalid_ =
        "\"file://host/a\" is not a valid location. Write scheme://host/path, or file:///path for a local "
        "file.\n";
};

TEST_F(WindowsLocationTest, LocalLocationWithoutAnAbsolutePathTakesItsCanonicalForm) {
    letPathsBeAbsolute(true);
    list(u"file:///a");
    EXPECT_EQ(askedLister(), (AskedLister{u"file:///", u"a", u"file:///a"}));
    letPathsBeAbsolute(false);
    list(u"file:///a");
    EXPECT_EQ(askedLister(), (AskedLister{u"file:///C:/canonical", u"x", u"file:///a"}));
    list(u"memory://box/a");
    EXPECT_EQ(askedLister(), (AskedLister{u"memory://box/", u"a", u"memory://box/a"}));
}

TEST_F(WindowsLocationTest, WhateverKeepsItFromItsCanonicalFormMakesItInvalid) {
    letPathsBeAbsolute(false);
    disk_->isBroken = true;
    EXPECT_EQ(print(u"file://host/a").printed, invalid_);
    EXPECT_EQ(askedLister(), AskedLister());
    // With an output it is listed in the form of the second try.
    const ListingOutcome outcome = list(u"file://host/a");
    expectEmptyStructure(outcome.outputs[0]);
    EXPECT_EQ(outcome.printed, "");
    EXPECT_EQ(askedLister(), (AskedLister{u"file://host/a", u"*", u"file://host/a"}));
}

TEST_F(WindowsLocationTest, SecondTryHasASlashAtTheEnd) {
    std::vector<std::u16string> tried;
    fakePlatform().beforeLocation = [&](const std::u16string& text) {
        tried.push_back(text);
        if (tried.size() == 1) throw 42;
    };
    list(u"memory://box/a");
    EXPECT_THAT(tried, ElementsAre(u"memory://box/a", u"memory://box/a/", u"memory://box/a/"));
    EXPECT_EQ(askedLister(), (AskedLister{u"memory://box/a", u"*", u"memory://box/a"}));
}

TEST_F(WindowsCommandTest, PathThatIsTooLongIsToldAsItWasCleaned) {
    const std::u16string name(1022, u'x');
    for (const int nlhs : {0, 1}) {
        const ListingOutcome outcome = listing(nlhs, {text(u"a/" + name + u". ").get()});
        EXPECT_EQ(outcome.errorIdentifier, "KORVEX:dir:pathnameTooLong");
        EXPECT_THAT(outcome.errorArguments, ElementsAre(u"a\\" + name));
    }
}

}  // namespace
}  // namespace korvex::filemanip::tests
