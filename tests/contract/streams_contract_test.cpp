// The content of files as streams of bytes.
#include <array>
#include <span>

#include "tests/contract/writing_contract.h"

namespace korvex::tests {
namespace {

using runtime::storage::InputStream;
using runtime::storage::OutputStream;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ReadingStreams : public WritingContract {
protected:
    std::unique_ptr<InputStream> read(const std::u16string& path) const {
        const AbsoluteIRI location = provider_->locationOf(path);
        return provider_->storage().system().provider(location).read(location);
    }
    std::unique_ptr<OutputStream> write(const std::u16string& path, ReplacementPolicy policy) const {
        const AbsoluteIRI location = provider_->locationOf(path);
        return provider_->storage().system().provider(location).write(location, policy);
    }
    static std::string allOf(InputStream& stream, std::size_t bufferSize) {
        std::string content;
        std::string buffer(bufferSize, '\0');
        while (const std::size_t count = stream.read(std::as_writable_bytes(std::span(buffer))))
            content.append(buffer, 0, count);
        return content;
    }
    static void put(OutputStream& stream, const std::string& bytes) {
        stream.write(std::as_bytes(std::span(bytes)));
    }
};

INSTANTIATE_TEST_SUITE_P(Contract, ReadingStreams, testing::ValuesIn(allProviders()), nameOfProvider);

TEST_P(ReadingStreams, GiveTheWholeContentInPiecesOfAnySize) {
    std::string content;
    for (int number = 0; number < 30'000; ++number)
        content += std::to_string(number);
    provider_->makeFile(u"file", content);
    for (const std::size_t size : {std::size_t{7}, std::size_t{4096}, content.size(), 2 * content.size()}) {
        EXPECT_TRUE(allOf(*read(u"file"), size) == content);
    }
}

TEST_P(ReadingStreams, OfAnEmptyFileAreAtTheirEnd) {
    provider_->makeFile(u"empty", "");
    EXPECT_EQ(allOf(*read(u"empty"), 10), "");
}

TEST_P(ReadingStreams, TellTheLengthOrNothing) {
    provider_->makeFile(u"file", "content");
    EXPECT_EQ(read(u"file")->attributes().size.value_or(7), 7U);
}

TEST_P(ReadingStreams, OfWhatIsNotThereAreRefused) {
    expectError(vfs::resourceNotFound, u"absent", [&] { read(u"absent"); });
    expectError(vfs::resourceNotFound, u"absent/file", [&] { read(u"absent/file"); });
}

class WritingStreams : public ReadingStreams {};

INSTANTIATE_TEST_SUITE_P(Contract, WritingStreams, testing::ValuesIn(providersWith(&Abilities::canWrite)),
                         nameOfProvider);

TEST_P(WritingStreams, MakeAFileWhenTheyAreCommitted) {
    const auto stream = write(u"file", ReplaceWritable);
    put(*stream, "one ");
    put(*stream, "two");
    expectNothing(u"file");
    stream->commit();
    EXPECT_THAT(tree(u""), ElementsAre("file=one two"));
    EXPECT_TRUE(provider_->hasWriteBits(u"file"));
}

TEST_P(WritingStreams, LeaveTheOldFileUntilTheyAreCommitted) {
    provider_->makeFile(u"file", "old");
    const auto stream = write(u"file", ReplaceWritable);
    put(*stream, "new");
    EXPECT_EQ(contentOf(u"file"), "old");
    stream->commit();
    EXPECT_THAT(tree(u""), ElementsAre("file=new"));
}

TEST_P(WritingStreams, LeaveNoTraceWithoutACommit) {
    provider_->makeFile(u"file", "old");
    put(*write(u"file", ReplaceWritable), "new");
    put(*write(u"other", ReplaceWritable), "new");
    EXPECT_THAT(tree(u""), ElementsAre("file=old"));
}

TEST_P(WritingStreams, MayStayEmpty) {
    write(u"file", ReplaceWritable)->commit();
    EXPECT_THAT(tree(u""), ElementsAre("file="));
}

TEST_P(WritingStreams, AreRefusedWhereNoFileMayBePut) {
    provider_->makeFile(u"folder/file", "old");
    protect(u"folder/file");
    for (const ReplacementPolicy policy : allPolicies) {
        expectError(vfs::resourceAlreadyExists, u"folder", [&] { write(u"folder", policy); });
        expectError(vfs::resourceNotFound, u"absent/file", [&] { write(u"absent/file", policy); });
        expectError(vfs::resourceNotFound, u"folder/file/below",
                    [&] { write(u"folder/file/below", policy); });
    }
    for (const ReplacementPolicy policy : carefulPolicies) {
        expectError(vfs::permissionDenied, u"folder/file", [&] { write(u"folder/file", policy); });
    }
    EXPECT_THAT(tree(u""), ElementsAre("folder/", "folder/file=old"));
}

TEST_P(WritingStreams, ReplaceAReadOnlyFileWhenAnyFileMayBe) {
    provider_->makeFile(u"file", "old");
    protect(u"file");
    const auto stream = write(u"file", ReplaceAny);
    put(*stream, "new");
    stream->commit();
    EXPECT_EQ(contentOf(u"file"), "new");
}

TEST_P(WritingStreams, AreRefusedAtTheCommitWhenSomethingHasComeInTheWay) {
    const auto stream = write(u"name", ReplaceWritable);
    put(*stream, "new");
    provider_->makeFile(u"name/file", "meanwhile");
    expectError(vfs::resourceAlreadyExists, u"name", [&] { stream->commit(); });
    EXPECT_EQ(contentOf(u"name/file"), "meanwhile");
}

TEST_P(WritingStreams, AFolderHasNoContent) {
    provider_->makeFolder(u"folder");
    expectError(vfs::invalidLocation, u"folder", [&] { read(u"folder"); });
    EXPECT_THAT(tree(u"folder"), IsEmpty());
}

}  // namespace
}  // namespace korvex::tests
