// What every provider answers about files and about what is not there.
#include <array>
#include <future>

#include "runtime/text/encoding.h"
#include "tests/contract/provider_under_test.h"

namespace korvex::tests {
namespace {

class Reading : public ProviderContract {};

INSTANTIATE_TEST_SUITE_P(Contract, Reading, testing::ValuesIn(allProviders()), nameOfProvider);

TEST_P(Reading, AFileIsAFile) {
    provider_->makeFile(u"file");
    EXPECT_EQ(existence(u"file"), provider::AsFile);
    EXPECT_EQ(extendedExistence(u"file"), provider::ExtendedFile);
}

TEST_P(Reading, AnEmptyFileIsAFile) {
    provider_->makeFile(u"empty", "");
    EXPECT_EQ(existence(u"empty"), provider::AsFile);
}

TEST_P(Reading, AFileIsThereForAFileHandleOnly) {
    provider_->makeFile(u"file");
    EXPECT_TRUE(vfs::exists(fileHandle(u"file")));
    EXPECT_FALSE(vfs::exists(folderHandle(u"file")));
    EXPECT_FALSE(folderHandle(u"file").folderExists());
}

TEST_P(Reading, WhatIsNotThereIsNothing) { expectNothing(u"absent"); }

TEST_P(Reading, NothingIsBelowWhatIsNotThere) { expectNothing(u"absent/file"); }

TEST_P(Reading, NothingIsBelowAFile) {
    provider_->makeFile(u"file");
    expectNothing(u"file/below");
}

TEST_P(Reading, AFileFurtherDownIsAFile) {
    provider_->makeFile(u"one/two/three");
    EXPECT_EQ(existence(u"one/two/three"), provider::AsFile);
    expectNothing(u"one/three");
}

TEST_P(Reading, WhatIsMadeLaterIsThereLater) {
    expectNothing(u"file");
    provider_->makeFile(u"file");
    EXPECT_EQ(existence(u"file"), provider::AsFile);
}

TEST_P(Reading, AnyNameIsFoundUnderItselfAlone) {
    const std::u16string names[] = {
        u"two words",
        u" blank at both ends ",
        u"50% off",
        u"%41",
        u"%2Fslash",
        u"what?",
        u"a?b=c&d",
        u"sharp#name",
        u"plus+plus",
        u"semi;colon",
        u"gr\u00FC\u00DFe",
        u"\u6F22\u5B57",
        u"\U0001F600",
        u"line\nfeed",
        u"tab\there",
        u"quote\"s'",
        u"[brackets]",
        u"...",
        u".hidden",
        u"~home",
        u"a:b",
        u"star*",
    };
    for (const std::u16string& name : names) {
        SCOPED_TRACE(runtime::text::toDisplayBytes(name));
        provider_->makeFile(name);
        EXPECT_EQ(existence(name), provider::AsFile);
        EXPECT_EQ(provider_->locationOf(name).getName(), name);
        expectNothing(name + u"2");
    }
    expectNothing(u"A");
    expectNothing(u"what");
    expectNothing(u"sharp");
}

TEST_P(Reading, ANameWithBytesThatAreNoUnicodeIsFound) {
    const std::u16string name = {u'n', char16_t{0xDCE4}, u'm', char16_t{0xDC80}};
    provider_->makeFile(name);
    EXPECT_EQ(existence(name), provider::AsFile);
    expectNothing(u"n\u00E4m");
}

TEST_P(Reading, ANameThatStandsForNoBytesIsNothing) { expectNothing({u'n', char16_t{0xD800}}); }

TEST_P(Reading, NamesOfALocationsTextLeadToTheSameFile) {
    provider_->makeFile(u"50% of what?#\n");
    const AbsoluteIRI parsed(provider_->locationOf(u"50% of what?#\n").toString());
    EXPECT_EQ(vfs::exists(parsed, provider_->storage()), provider::AsFile);
}

TEST_P(Reading, ANameOf255BytesIsFound) {
    const std::u16string ascii(255, u'n');
    const std::u16string threeBytesEach(85, u'\u6F22');
    provider_->makeFile(ascii);
    provider_->makeFile(threeBytesEach);
    EXPECT_EQ(existence(ascii), provider::AsFile);
    EXPECT_EQ(existence(threeBytesEach), provider::AsFile);
}

TEST_P(Reading, ANameLongerThanADiskHoldsIsNothing) {
    provider_->makeFile(std::u16string(255, u'n'));
    expectNothing(std::u16string(256, u'n'));
    expectNothing(std::u16string(86, u'\u6F22'));
}

TEST_P(Reading, APathLongerThanTheSystemTakesIsNothing) {
    std::u16string path = u"absent";
    while (path.size() < 5000)
        path += u"/" + std::u16string(50, u'n');
    expectNothing(path);
}

TEST_P(Reading, TheCanonicalLocationOfAFileIsItsOwn) {
    provider_->makeFile(u"folder/file 1");
    EXPECT_EQ(canonical(u"folder/file 1"), provider_->locationOf(u"folder/file 1"));
}

TEST_P(Reading, WhatIsNotThereHasNoCanonicalLocation) {
    try {
        canonical(u"absent");
        FAIL() << "no exception";
    } catch (const vfs::Exception& failure) {
        EXPECT_EQ(failure.getErrorCode(), vfs::resourceNotFound);
        EXPECT_EQ(failure.getLocation(), provider_->locationOf(u"absent"));
    }
}

TEST_P(Reading, ThreadsMayAskAtTheSameTime) {
    constexpr int questions = 20;
    provider_->makeFile(u"folder/file");
    const auto askAll = [&] {
        int rightAnswers = 0;
        for (int question = 0; question < questions; ++question) {
            rightAnswers += existence(u"folder/file") == provider::AsFile;
            rightAnswers += existence(u"folder/absent") == provider::AsNeither;
        }
        return rightAnswers;
    };
    std::array<std::future<int>, 4> threads;
    for (auto& thread : threads)
        thread = std::async(std::launch::async, askAll);
    for (auto& thread : threads)
        EXPECT_EQ(thread.get(), 2 * questions);
}

TEST_P(Reading, WithoutItsProviderNothingIsThereAndAQuestionForTheKindRaises) {
    provider_->makeFile(u"file");
    const vfs::StorageSystemReference empty(std::make_shared<vfs::StorageSystem>());
    const AbsoluteIRI location = provider_->locationOf(u"file");
    EXPECT_FALSE(vfs::exists(vfs::File(location, empty)));
    EXPECT_FALSE(vfs::exists(vfs::Folder(location, empty)));
    EXPECT_THROW(vfs::exists(location, empty), vfs::UnsupportedIRISchemeException);
    EXPECT_THROW(vfs::existsExtended(location, empty), vfs::UnsupportedIRISchemeException);
    EXPECT_THROW(vfs::File(location, empty).getCanonicalLocation(), vfs::UnsupportedIRISchemeException);
}

TEST_P(Reading, ASchemeThatNobodyServesIsNamedInTheException) {
    const AbsoluteIRI location(u"carrier-pigeon://coop/message");
    EXPECT_FALSE(vfs::exists(vfs::File(location, provider_->storage())));
    try {
        vfs::exists(location, provider_->storage());
        FAIL() << "no exception";
    } catch (const vfs::UnsupportedIRISchemeException& failure) {
        EXPECT_EQ(failure.getScheme(), u"carrier-pigeon");
    }
}

}  // namespace
}  // namespace korvex::tests
