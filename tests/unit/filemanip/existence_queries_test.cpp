// `isfile` and `isfolder`: shapes, kinds of arguments, kinds of texts, and what storage is asked.
#include <algorithm>
#include <cstring>
#include <exception>
#include <filesystem>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>

#include "platform/message_catalog.h"
#include "platform/message_identifiers.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/storage/providers/local/local_provider.h"
#include "runtime/storage/providers/memory/memory_provider.h"
#include "runtime/storage/storage_system.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/filemanip/entry_call.h"
#include "tests/unit/filemanip/observed_provider.h"

namespace korvex::filemanip::tests {
namespace {

namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
namespace storage = korvex::runtime::storage;
using Shape = std::vector<std::size_t>;
using Questions = std::vector<std::u16string>;

constexpr const char* notTexts = "KORVEX:string:MustBeCharCellArrayOrString";

/// A scratch folder with `file` and `folder` in it, as the current folder, over a storage that is observed at
/// every scheme. The web knows `http://host/` alone.
class ExistenceQueriesTest : public testing::Test {
protected:
    ExistenceQueriesTest() {
        scratch_.writeFile("file");
        scratch_.makeFolder("folder");
        web_->entries[u"http://host/"] = provider::AsFile;
        korvex::runtime::dispatcher::setCurrentFolderPath(scratch_.text());
        here_ = korvex::runtime::dispatcher::currentFolderPath();
        hereLocation_ = vfs::AbsoluteIRI(u"file://" + here_).toString();
        asked_.clear();
    }
    ~ExistenceQueriesTest() override {
        local_->failure = nullptr;
        korvex::runtime::dispatcher::setCurrentFolderPath(u"/");
    }

    std::shared_ptr<const vfs::StorageSystem> observedSystem() {
        auto system = std::make_shared<vfs::StorageSystem>();
        system->add(u"file", local_);
        system->add(u"memory",
                    std::make_shared<ObservedProvider>(asked_, std::make_shared<storage::MemoryProvider>()));
        system->add(u"http", std::make_shared<ObservedProvider>(asked_, web_));
        system->add(u"https", std::make_shared<ObservedProvider>(asked_, web_));
        return system;
    }

    static bool isFile(std::u16string_view name) { return answer(bnIsFileFcn, name); }
    static bool isFolder(std::u16string_view name) { return answer(bnIsFolderFcn, name); }

    static bool answer(Entry entry, std::u16string_view name) {
        const Outcome outcome = call(entry, 1, {text(name).get()});
        EXPECT_EQ(outcome.errorIdentifier, "");
        EXPECT_EQ(dimensions(outcome.outputs[0]), (Shape{1, 1}));
        return logicals(outcome.outputs[0])[0];
    }

    /// How often the storage was asked about a location with this name.
    std::size_t timesAsked(const std::u16string& name) const {
        return static_cast<std::size_t>(
            std::count_if(asked_.begin(), asked_.end(),
                          [&](const std::u16string& location) { return location.ends_with(u"/" + name); }));
    }

    /// What the storage was asked during the calls since the last look, in order.
    Questions takeQuestions() { return std::exchange(asked_, {}); }
    /// The one question of a call that looks no text up: whether the current folder is still there.
    Questions currentFolderOnly() const { return {hereLocation_}; }

    korvex::tests::ScratchFolder scratch_;
    Questions asked_;
    std::shared_ptr<ObservedProvider> local_ =
        std::make_shared<ObservedProvider>(asked_, std::make_shared<storage::LocalProvider>());
    std::shared_ptr<ListedLocations> web_ = std::make_shared<ListedLocations>();
    storage::ScopedStorageSystem system_{observedSystem()};
    std::u16string here_;
    std::u16string hereLocation_;
};

TEST_F(ExistenceQueriesTest, FileIsNoFolderAndFolderIsNoFile) {
    EXPECT_TRUE(isFile(u"file"));
    EXPECT_FALSE(isFolder(u"file"));
    EXPECT_FALSE(isFile(u"folder"));
    EXPECT_TRUE(isFolder(u"folder"));
    EXPECT_FALSE(isFile(u"nothing"));
    EXPECT_FALSE(isFolder(u"nothing"));
}

TEST_F(ExistenceQueriesTest, AnswerIsDeliveredAlsoWhenNoOutputIsAskedFor) {
    const Outcome outcome = call(bnIsFileFcn, 0, {text(u"file").get()});
    EXPECT_EQ(logicals(outcome.outputs[0]), std::vector<bool>{true});
}

TEST_F(ExistenceQueriesTest, AnswerIsOneByteAnElement) {
    const Array names = cell({1, 3}, text(u"file"), text(u"nothing"), text(u"file"));
    const Outcome outcome = call(bnIsFileFcn, 1, {names.get()});
    kxArray* const answers = outcome.outputs[0].get();
    ASSERT_EQ(kxGetClassID(answers), kxLOGICAL_CLASS);
    EXPECT_EQ(kxGetLogicals(answers).size_bytes(), 3U);
    EXPECT_EQ(std::memcmp(kxGetData(answers), "\1\0\1", 3), 0);
}

TEST_F(ExistenceQueriesTest, EmptyTextsAreNotThereAndNeverReachTheStorage) {
    for (const Entry entry : {bnIsFileFcn, bnIsFolderFcn}) {
        for (const Array& empty : {text(u""), characters({1, 0}), string(u"")}) {
            const Outcome outcome = call(entry, 1, {empty.get()});
            EXPECT_EQ(dimensions(outcome.outputs[0]), (Shape{1, 1}));
            EXPECT_EQ(logicals(outcome.outputs[0]), std::vector<bool>{false});
            EXPECT_EQ(takeQuestions(), currentFolderOnly());
        }
    }
}

TEST_F(ExistenceQueriesTest, EmptyAndMissingElementsNeverReachTheStorage) {
    call(bnIsFolderFcn, 1, {cell({1, 2}, text(u""), characters({1, 0})).get()});
    EXPECT_EQ(takeQuestions(), currentFolderOnly());
    call(bnIsFolderFcn, 1, {strings({1, 2}, {u"", std::nullopt}).get()});
    EXPECT_EQ(takeQuestions(), currentFolderOnly());
}

TEST_F(ExistenceQueriesTest, StringArrayIsAnsweredInItsShapeAndMissingIsFalse) {
    const Array names = strings({2, 3}, {u"file", u"folder", std::nullopt, u"file", u"nothing", u""});
    const Outcome outcome = call(bnIsFileFcn, 1, {names.get()});
    EXPECT_EQ(dimensions(outcome.outputs[0]), (Shape{2, 3}));
    EXPECT_EQ(logicals(outcome.outputs[0]), (std::vector<bool>{true, false, false, true, false, false}));
}

TEST_F(ExistenceQueriesTest, MissingStringScalarIsFalse) {
    const Outcome outcome = call(bnIsFileFcn, 1, {missing().get()});
    EXPECT_EQ(logicals(outcome.outputs[0]), std::vector<bool>{false});
}

TEST_F(ExistenceQueriesTest, CellArrayIsAnsweredInItsShape) {
    const Array names = cell({2, 3}, text(u"file"), text(u""), text(u"folder"), text(u"x"),
                             characters({1, 0}), text(u"file"));
    EXPECT_EQ(logicals(call(bnIsFileFcn, 1, {names.get()}).outputs[0]),
              (std::vector<bool>{true, false, false, false, false, true}));
    EXPECT_EQ(dimensions(call(bnIsFolderFcn, 1, {names.get()}).outputs[0]), (Shape{2, 3}));
}

TEST_F(ExistenceQueriesTest, ArraysOfMoreDimensionsKeepTheirShape) {
    const Array names = cell({1, 1, 2}, text(u"folder"), text(u"file"));
    const Outcome outcome = call(bnIsFolderFcn, 1, {names.get()});
    EXPECT_EQ(dimensions(outcome.outputs[0]), (Shape{1, 1, 2}));
    EXPECT_EQ(logicals(outcome.outputs[0]), (std::vector<bool>{true, false}));
}

TEST_F(ExistenceQueriesTest, EmptyArraysGiveEmptyAnswers) {
    EXPECT_EQ(dimensions(call(bnIsFileFcn, 1, {strings({0, 0}, {}).get()}).outputs[0]), (Shape{0, 0}));
    EXPECT_EQ(dimensions(call(bnIsFileFcn, 1, {cell({0, 0}).get()}).outputs[0]), (Shape{0, 0}));
    EXPECT_EQ(dimensions(call(bnIsFileFcn, 1, {cell({0, 3}).get()}).outputs[0]), (Shape{0, 3}));
}

TEST_F(ExistenceQueriesTest, BadCellElementStopsAtOnceAfterTheOnesBeforeIt) {
    const Outcome outcome =
        call(bnIsFileFcn, 1, {cell({1, 3}, text(u"file"), number(1), text(u"folder")).get()});
    EXPECT_EQ(outcome.errorIdentifier, notTexts);
    EXPECT_EQ(outcome.outputs[0], nullptr);
    EXPECT_EQ(timesAsked(u"file"), 1U);
    EXPECT_EQ(timesAsked(u"folder"), 0U);
}

TEST_F(ExistenceQueriesTest, RefusalBeginsWithTheLabelOfAPathArgument) {
    const std::u16string label =
        fl::i18n::MessageCatalog::get_message(KORVEX::FileUtils::inputPath(), fl::i18n::KwLocale::global());
    for (const Entry entry : {bnIsFileFcn, bnIsFolderFcn}) {
        for (const Array& refused : {number(1), cell({1, 1}, number(1))}) {
            const Outcome outcome = call(entry, 1, {refused.get()});
            EXPECT_EQ(outcome.catalogEntry, notTexts);
            EXPECT_EQ(outcome.errorArguments, std::vector<std::u16string>{label});
        }
    }
}

TEST_F(ExistenceQueriesTest, CellElementsMustBeCharacterVectors) {
    std::vector<Array> refused;
    refused.push_back(cell({1, 1}, string(u"file")));
    refused.push_back(cell({1, 1}, characters({2, 3})));
    refused.push_back(cell({1, 1}, characters({0, 3})));
    refused.push_back(cell({1, 1}));
    refused.push_back(cell({1, 1}, cell({1, 1}, text(u"file"))));
    for (const Array& argument : refused) {
        for (const Entry entry : {bnIsFileFcn, bnIsFolderFcn}) {
            EXPECT_EQ(call(entry, 1, {argument.get()}).errorIdentifier, notTexts);
            EXPECT_EQ(takeQuestions(), currentFolderOnly());
        }
    }
}

TEST_F(ExistenceQueriesTest, OtherArgumentsAreRefusedWithoutAQuestion) {
    std::vector<Array> refused;
    refused.push_back(number(1));
    refused.push_back(Array(kxCreateLogicalScalar(true)));
    refused.push_back(Array(kxCreateStructMatrix(1, 1, 0, nullptr)));
    refused.push_back(Array(kxCreateDoubleMatrix(0, 0)));
    refused.push_back(characters({2, 3}));
    refused.push_back(characters({0, 3}));
    refused.push_back(characters({1, 2, 2}));
    for (const Array& argument : refused) {
        for (const Entry entry : {bnIsFileFcn, bnIsFolderFcn}) {
            const Outcome outcome = call(entry, 1, {argument.get()});
            EXPECT_EQ(outcome.errorIdentifier, notTexts);
            EXPECT_EQ(outcome.outputs[0], nullptr);
        }
    }
    EXPECT_EQ(takeQuestions(), Questions());
}

TEST_F(ExistenceQueriesTest, RelativePathsAreTakenAgainstTheEnvironmentsCurrentFolder) {
    const std::filesystem::path processFolder = std::filesystem::current_path();
    scratch_.writeFile("folder/inner");
    EXPECT_FALSE(isFile(u"inner"));
    korvex::runtime::dispatcher::setCurrentFolderPath(u"folder");
    EXPECT_TRUE(isFile(u"inner"));
    EXPECT_TRUE(isFile(u"./inner"));
    EXPECT_TRUE(isFile(u"../file"));
    EXPECT_EQ(std::filesystem::current_path(), processFolder);
}

TEST_F(ExistenceQueriesTest, AbsolutePathsStandForThemselves) {
    EXPECT_TRUE(isFile(here_ + u"/file"));
    EXPECT_TRUE(isFolder(u"/"));
    EXPECT_TRUE(isFolder(here_ + u"/folder/"));
    EXPECT_TRUE(isFolder(here_ + u"//folder/."));
}

TEST_F(ExistenceQueriesTest, SeparatorAtTheEndOfAFileIsDropped) {
    EXPECT_TRUE(isFile(u"file/"));
    EXPECT_FALSE(isFile(u"file/."));
}

TEST_F(ExistenceQueriesTest, LocationsAreAnswered) {
    EXPECT_TRUE(isFile(u"file://" + here_ + u"/file"));
    EXPECT_TRUE(isFolder(u"FILE://" + here_ + u"/folder"));
    EXPECT_TRUE(isFolder(u"memory://box/"));
    EXPECT_FALSE(isFile(u"memory://box/nothing"));
}

TEST_F(ExistenceQueriesTest, LocationWithWrongSlashesIsFalseWithoutAQuestion) {
    for (const std::u16string& name :
         {u"file:" + here_ + u"/file", u"file:///" + here_ + u"/file", std::u16string(u"memory:/box/"),
          std::u16string(u"memory:///box/"), std::u16string(u"http:///host/")}) {
        EXPECT_FALSE(isFile(name));
        EXPECT_EQ(takeQuestions(), currentFolderOnly());
        EXPECT_FALSE(isFolder(name));
        EXPECT_EQ(takeQuestions(), currentFolderOnly());
    }
}

TEST_F(ExistenceQueriesTest, WebLocationWithoutAPathGetsTheSlashThatMakesItParse) {
    EXPECT_TRUE(isFile(u"http://host"));
    EXPECT_EQ(takeQuestions(), (Questions{hereLocation_, u"http://host/"}));
    EXPECT_FALSE(isFolder(u"HTTPS://host"));
    EXPECT_EQ(takeQuestions(), (Questions{hereLocation_, u"https://host/"}));
    EXPECT_FALSE(isFile(u"http://host/a"));
    EXPECT_EQ(takeQuestions(), (Questions{hereLocation_, u"http://host/a"}));
}

TEST_F(ExistenceQueriesTest, SchemeThatNobodyServesIsFalse) {
    EXPECT_FALSE(isFile(u"gopher://host/a"));
    EXPECT_FALSE(isFolder(u"gopher://host/a"));
}

TEST_F(ExistenceQueriesTest, LocationThatDoesNotParseIsAnError) {
    const auto ask = [](std::u16string_view name) { call(bnIsFileFcn, 1, {text(name).get()}); };
    EXPECT_THROW(ask(u"memory://box"), vfs::InvalidIRIException);
    EXPECT_THROW(ask(u"http://ho st/a"), vfs::InvalidIRIException);
    EXPECT_THROW(ask(u"http://ho st"), vfs::InvalidIRIException);
    EXPECT_THROW(ask(u"http://host*"), vfs::InvalidIRIException);
}

TEST_F(ExistenceQueriesTest, FailingStorageIsFalseForThatElementOnly) {
    local_->failingName = u"bad";
    const Array names = cell({1, 3}, text(u"file"), text(u"bad"), text(u"file"));
    for (const vfs::ErrorCode code :
         {vfs::folderNotEmpty, vfs::invalidLocation, vfs::permissionDenied, vfs::resourceAlreadyExists,
          vfs::resourceNotFound, vfs::readOnlyProvider, vfs::fileTooLarge, vfs::resourceInUse,
          vfs::noSpaceLeft, vfs::ioError, vfs::internalError, vfs::unsupportedOperation, vfs::unknownError}) {
        local_->failure = std::make_exception_ptr(vfs::Exception(code, vfs::AbsoluteIRI(u"file:///bad")));
        const Outcome outcome = call(bnIsFileFcn, 1, {names.get()});
        EXPECT_EQ(outcome.errorIdentifier, "");
        EXPECT_EQ(logicals(outcome.outputs[0]), (std::vector<bool>{true, false, true}));
    }
}

TEST_F(ExistenceQueriesTest, WhatIsNoFailureOfTheStorageIsLetThrough) {
    local_->failingName = u"bad";
    const Array name = text(u"bad");
    for (const Entry entry : {bnIsFileFcn, bnIsFolderFcn}) {
        local_->failure = std::make_exception_ptr(std::runtime_error("damaged"));
        EXPECT_THROW(call(entry, 1, {name.get()}), std::runtime_error);
        local_->failure = std::make_exception_ptr(std::bad_alloc());
        EXPECT_THROW(call(entry, 1, {name.get()}), std::bad_alloc);
        local_->failure = std::make_exception_ptr(vfs::InvalidIRIException(u"bad"));
        EXPECT_THROW(call(entry, 1, {name.get()}), vfs::InvalidIRIException);
        local_->failure = std::make_exception_ptr(vfs::UnsupportedIRISchemeException(u"bad"));
        EXPECT_THROW(call(entry, 1, {name.get()}), vfs::UnsupportedIRISchemeException);
    }
}

TEST_F(ExistenceQueriesTest, GoneCurrentFolderIsAnErrorBeforeAnyTextIsLookedAt) {
    scratch_.makeFolder("gone");
    korvex::runtime::dispatcher::setCurrentFolderPath(u"gone");
    std::filesystem::remove(scratch_.path() / "gone");
    takeQuestions();

    const Outcome outcome = call(bnIsFileFcn, 1, {cell({1, 2}, text(here_ + u"/file"), number(1)).get()});
    EXPECT_EQ(outcome.errorIdentifier, "KORVEX:services:cwdIsInvalid");
    EXPECT_EQ(takeQuestions(), Questions{hereLocation_ + u"/gone"});
}

TEST_F(ExistenceQueriesTest, CurrentFolderIsAskedOnceForACallAndNotForBadArguments) {
    const Array names = cell({1, 3}, text(u"/1"), text(u"/2"), text(u"/3"));
    call(bnIsFileFcn, 1, {names.get()});
    EXPECT_EQ(takeQuestions(), (Questions{hereLocation_, u"file:///1", u"file:///2", u"file:///3"}));

    call(bnIsFileFcn, 1, {number(1).get()});
    EXPECT_EQ(takeQuestions(), Questions());
}

TEST_F(ExistenceQueriesTest, OddNamesAreAnsweredRight) {
    const std::u16string undecodable = {u'a', 0xDCFF, u'b'};
    scratch_.writeFile(
        "a\xff"
        "b");
    scratch_.writeFile("line\nfeed");
    scratch_.writeFile(std::string(255, 'n'));
    scratch_.writeFile(" ");
    EXPECT_TRUE(isFile(undecodable));
    EXPECT_TRUE(isFile(u"line\nfeed"));
    EXPECT_TRUE(isFile(u" "));
    EXPECT_TRUE(isFile(std::u16string(255, u'n')));
    EXPECT_FALSE(isFile(std::u16string(256, u'n')));
    EXPECT_FALSE(isFile(std::u16string(u"file\0", 5)));
    EXPECT_FALSE(isFile(std::u16string(u"file\0x", 6)));
    EXPECT_FALSE(isFile(std::u16string(1, 0xD800)));
    EXPECT_TRUE(isFile(u"file:///" + here_.substr(1) + u"/a%FFb"));
}

TEST_F(ExistenceQueriesTest, PathsBeyondTheSystemsLimitAreAnsweredRight) {
    std::u16string dots;
    while (dots.size() < 10000) {
        dots += u"folder/../";
    }
    EXPECT_TRUE(isFile(dots + u"file"));
    EXPECT_TRUE(isFolder(dots + u"folder"));
    EXPECT_FALSE(isFile(dots + u"nothing"));
}

TEST_F(ExistenceQueriesTest, LinksAnswerForWhatTheyLeadTo) {
    std::filesystem::create_symlink("file", scratch_.path() / "toFile");
    std::filesystem::create_symlink("folder", scratch_.path() / "toFolder");
    std::filesystem::create_symlink("nothing", scratch_.path() / "broken");
    EXPECT_TRUE(isFile(u"toFile"));
    EXPECT_TRUE(isFolder(u"toFolder"));
    EXPECT_FALSE(isFile(u"broken"));
    EXPECT_FALSE(isFolder(u"broken"));
}

}  // namespace
}  // namespace korvex::filemanip::tests
