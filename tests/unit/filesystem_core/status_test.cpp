// The way from a command's outcome to its outputs.
#include "platform/filesystem_core.h"

#include <algorithm>

#include "platform/message_identifiers.h"
#include "tests/unit/filemanip/entry_call.h"

namespace korvex::io::filesystem::core {
namespace {

using namespace korvex::filemanip::tests;
using ReadOnly = foundation::core::except::Exception<KORVEX::FILE::ReadOnly>;

Status statusWith(std::int32_t code) {
    Status status;
    status.code = code;
    status.exception =
        boost::copy_exception(ReadOnly(KORVEX::FILE::ReadOnly(u"/a"), "KORVEX:COPYFILE:ReadOnly"));
    return status;
}

std::u16string unitsOf(const Array& array) {
    const std::span<const char16_t> units = kxGetChars(static_cast<const kxArray*>(array.get()));
    return {units.begin(), units.end()};
}

/// The outputs that `HandleStatus` sets, and the identifier that it raises.
Outcome handle(const Status& status, int nlhs) {
    std::vector<kxArray*> plhs(4, nullptr);
    Outcome outcome;
    try {
        ResultHandler::HandleStatus(status, nlhs, plhs.data());
    } catch (const foundation::core::except::IMsgIDException& error) {
        outcome.fail(error);
    }
    for (kxArray* output : plhs)
        outcome.outputs.emplace_back(output);
    return outcome;
}

TEST(HandleStatusTest, SuccessGivesTrueAndTwoEmptyTexts) {
    const Outcome outcome = handle(Status(), 3);
    EXPECT_EQ(logicals(outcome.outputs[0]), std::vector<bool>{true});
    EXPECT_EQ(dimensions(outcome.outputs[1]), (std::vector<std::size_t>{0, 0}));
    EXPECT_EQ(dimensions(outcome.outputs[2]), (std::vector<std::size_t>{0, 0}));
}

TEST(HandleStatusTest, SuccessWithoutOutputsSetsAndRaisesNothing) {
    const Outcome outcome = handle(Status(), 0);
    EXPECT_EQ(outcome.errorIdentifier, "");
    EXPECT_EQ(outcome.outputs[0], nullptr);
}

TEST(HandleStatusTest, FailureGivesFalseTextAndIdentifierAsFarAsAskedFor) {
    for (int nlhs = 1; nlhs <= 3; ++nlhs) {
        const Outcome outcome = handle(statusWith(Status::failure), nlhs);
        EXPECT_EQ(outcome.errorIdentifier, "");
        EXPECT_EQ(logicals(outcome.outputs[0]), std::vector<bool>{false});
        for (std::size_t i = 1; i < 4; ++i) {
            EXPECT_EQ(outcome.outputs[i] != nullptr, i < std::size_t(nlhs));
        }
    }
    const Outcome outcome = handle(statusWith(Status::failure), 3);
    EXPECT_NE(unitsOf(outcome.outputs[1]).find(u"/a"), std::u16string::npos);
    EXPECT_EQ(unitsOf(outcome.outputs[2]), u"KORVEX:COPYFILE:ReadOnly");
}

TEST(HandleStatusTest, FailureWithoutOutputsIsRaised) {
    const Outcome outcome = handle(statusWith(Status::failure), 0);
    EXPECT_EQ(outcome.errorIdentifier, "KORVEX:COPYFILE:ReadOnly");
    EXPECT_NE(outcome.errorText.find("/a"), std::string::npos);
}

TEST(HandleStatusTest, MessageUnderASuccessCodeIsANoteAndNeverRaises) {
    EXPECT_EQ(handle(statusWith(Status::success), 0).errorIdentifier, "");
    const Outcome outcome = handle(statusWith(Status::success), 3);
    EXPECT_EQ(logicals(outcome.outputs[0]), std::vector<bool>{true});
    EXPECT_EQ(unitsOf(outcome.outputs[2]), u"KORVEX:COPYFILE:ReadOnly");
}

TEST(HandleStatusTest, FailureWithoutAMessageReadsAsSystemError) {
    Status status;
    status.code = Status::failure;
    EXPECT_EQ(handle(status, 0).errorIdentifier, "KORVEX:FILE:OSError");
    EXPECT_EQ(unitsOf(handle(status, 3).outputs[2]), u"KORVEX:FILE:OSError");
}

TEST(StoredExceptionTest, IdentifierAndTextCanBeReadBack) {
    const Status status = statusWith(Status::failure);
    EXPECT_EQ(detail::GetID(status.exception), "KORVEX:COPYFILE:ReadOnly");
    EXPECT_NE(detail::GetUnicodeMessageTxt(status.exception).find(u"/a"), std::u16string::npos);
    EXPECT_EQ(detail::GetID(boost::exception_ptr()), "");
    EXPECT_EQ(detail::GetUnicodeMessageTxt(boost::exception_ptr()), u"");
}

TEST(AppendWithLimitTest, PutsEachTextOnALineAndTellsWhenTheListIsFull) {
    std::u16string list;
    EXPECT_FALSE(Status::AppendWithLimit(list, KORVEX::FileManip::CouldNotRemove(u"/a")));
    EXPECT_EQ(list.find(u'\n'), std::u16string::npos);
    EXPECT_FALSE(Status::AppendWithLimit(list, KORVEX::FileManip::CouldNotRemove(u"/b")));
    EXPECT_EQ(std::count(list.begin(), list.end(), u'\n'), 1);

    const std::size_t messageLength = list.find(u'\n');
    std::u16string nearlyFull(4095 - 1 - messageLength, u'x');
    EXPECT_FALSE(Status::AppendWithLimit(nearlyFull, KORVEX::FileManip::CouldNotRemove(u"/c")));
    std::u16string full(4096 - 1 - messageLength, u'x');
    EXPECT_TRUE(Status::AppendWithLimit(full, KORVEX::FileManip::CouldNotRemove(u"/c")));
    EXPECT_EQ(full.size(), 4096U);
}

}  // namespace
}  // namespace korvex::io::filesystem::core
