// The storage layer's exceptions and the messages of its error codes.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "platform/storage_vfs.h"

namespace {

namespace vfs = foundation::storage::vfs;

TEST(StorageExceptionTest, EachErrorCodeHasItsMessage) {
    const std::pair<int, const char*> rows[] = {
        {0, "folderNotEmpty"},   {1, "invalidLocation"},
        {2, "permissionDenied"}, {3, "resourceAlreadyExists"},
        {4, "resourceNotFound"}, {5, "readOnlyProvider"},
        {6, "fileTooLarge"},     {7, "resourceInUse"},
        {8, "noSpaceLeft"},      {9, "ioError"},
        {10, "internalError"},   {11, "unsupportedOperation"},
        {12, "unknownError"},    {13, "unknownError"},
        {-1, "unknownError"},
    };
    for (const auto& [code, key] : rows) {
        const resource_core::BaseMsgID message = vfs::messageOf(static_cast<vfs::ErrorCode>(code), u"p");
        EXPECT_EQ(message.identifier(), std::string("KORVEX:virtualfilesystem:") + key);
        ASSERT_EQ(message.args.size(), 1U);
        EXPECT_EQ(*message.args[0].wideText(), u"p");
    }
}

TEST(StorageExceptionTest, TextShowsPathContextAndTheSystemsWords) {
    const vfs::Exception error(vfs::ioError, vfs::AbsoluteIRI(u"file:///a%20b"), u"copying",
                               "Remote I/O error");
    const std::string text = error.what();
    EXPECT_NE(text.find("/a b"), std::string::npos) << text;
    EXPECT_NE(text.find("copying"), std::string::npos) << text;
    EXPECT_NE(text.find("Remote I/O error"), std::string::npos) << text;
    EXPECT_EQ(error.ToUstring(), std::u16string(text.begin(), text.end()));
}

TEST(StorageExceptionTest, TheThreeAreUnrelatedClasses) {
    EXPECT_FALSE((std::is_base_of_v<vfs::Exception, vfs::InvalidIRIException>));
    EXPECT_FALSE((std::is_base_of_v<vfs::Exception, vfs::UnsupportedIRISchemeException>));
    EXPECT_FALSE((std::is_base_of_v<vfs::InvalidIRIException, vfs::UnsupportedIRISchemeException>));
}

TEST(StorageExceptionTest, CopiesKeepTheirClass) {
    const vfs::UnsupportedIRISchemeException error(u"gopher");
    EXPECT_THROW(error.copyToHeap()->throwCopy(), vfs::UnsupportedIRISchemeException);
    EXPECT_THROW(vfs::InvalidIRIException(u"x").copyToHeap()->throwCopy(), vfs::InvalidIRIException);
    EXPECT_THROW(vfs::Exception(vfs::ioError, vfs::AbsoluteIRI(u"file:///a")).copyToHeap()->throwCopy(),
                 vfs::Exception);
}

}  // namespace
