// The exception template: text, identifier, copies, and the classes under which it is caught.
#include <gtest/gtest.h>

#include <boost/exception_ptr.hpp>
#include <memory>
#include <string>
#include <type_traits>

#include "platform/message_identifiers.h"
#include "platform/user_exceptions.h"
#include "runtime/messages/locale.h"
#include "runtime/text/encoding.h"

namespace {

using foundation::core::except::Exception;
using foundation::core::except::IException;
using foundation::core::except::IMsgIDException;
using foundation::core::except::IUserException;
using KORVEX::FILE::FileNotFound;
using korvex::runtime::messages::setGlobalLocale;

using FileNotFoundException = Exception<FileNotFound>;

/// English as the global locale as long as it lives.
struct EnglishTexts {
    EnglishTexts() { setGlobalLocale("en"); }
    ~EnglishTexts() { setGlobalLocale(""); }
};

class UserExceptions : public testing::Test {
protected:
    const EnglishTexts english_;  // first, since an exception takes its narrow text when it is made
    const FileNotFoundException exception_{FileNotFound(u"gr\u00FCn.txt")};
    const std::u16string text_ =
        u"Nothing was found under the name \"gr\u00FCn.txt\". Check the spelling and the current folder.";
};

TEST_F(UserExceptions, BuiltFromAMessageAloneItCarriesTheMessagesIdentifier) {
    EXPECT_EQ(exception_.get_error_id(), "KORVEX:FILE:FileNotFound");
    EXPECT_EQ(exception_.GetUnicodeMessageTxt(), text_);
}

TEST_F(UserExceptions, BuiltWithAnIdentifierItKeepsThatAndTheMessagesText) {
    const FileNotFoundException exception(FileNotFound(u"gr\u00FCn.txt"), "KORVEX:COPYFILE:FileNotFound");
    EXPECT_EQ(exception.get_error_id(), "KORVEX:COPYFILE:FileNotFound");
    EXPECT_EQ(exception.GetUnicodeMessageTxt(), text_);
    EXPECT_EQ(exception.message().identifier(), "KORVEX:FILE:FileNotFound");
}

TEST_F(UserExceptions, AllItsTextsAreTheSame) {
    const std::string bytes = korvex::runtime::text::toDisplayBytes(text_);
    std::u16string wide;
    std::string narrow;
    exception_.convert_str(wide);
    exception_.convert_str(narrow);
    EXPECT_EQ(exception_.what(), bytes);
    EXPECT_EQ(narrow, bytes);
    EXPECT_EQ(wide, text_);
    EXPECT_EQ(exception_.ToUstring(), text_);
}

TEST_F(UserExceptions, ItsMessageKeepsTheArguments) {
    ASSERT_EQ(exception_.message().args.size(), 1U);
    EXPECT_EQ(*exception_.message().args[0].wideText(), u"gr\u00FCn.txt");
}

TEST_F(UserExceptions, TheTextFollowsTheGlobalLocale) {
    setGlobalLocale("de");
    EXPECT_NE(exception_.GetUnicodeMessageTxt(), text_);
    EXPECT_NE(exception_.GetUnicodeMessageTxt().find(u"\u201Egr\u00FCn.txt\u201C"), std::u16string::npos);
}

TEST_F(UserExceptions, ACopyOnTheHeapIsAnIndependentOneOfTheSameClass) {
    std::unique_ptr<IException> stored;
    {
        const FileNotFoundException original(FileNotFound(u"gone.txt"), "KORVEX:MOVEFILE:FileNotFound");
        stored = original.copyToHeap();
    }
    const auto* copy = dynamic_cast<const FileNotFoundException*>(stored.get());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->get_error_id(), "KORVEX:MOVEFILE:FileNotFound");
    EXPECT_NE(copy->GetUnicodeMessageTxt().find(u"gone.txt"), std::u16string::npos);
}

TEST_F(UserExceptions, AThrownCopyKeepsTheClassAndTheIdentifier) {
    const FileNotFoundException exception(FileNotFound(u"a"), "KORVEX:RMDIR:FileNotFound");
    const IException& root = exception;
    try {
        root.throwCopy();
    } catch (const FileNotFoundException& caught) {
        EXPECT_NE(&caught, &exception);
        EXPECT_EQ(caught.get_error_id(), "KORVEX:RMDIR:FileNotFound");
        EXPECT_STREQ(caught.what(), exception.what());
    }
}

TEST_F(UserExceptions, ItSurvivesAnExceptionPointer) {
    const boost::exception_ptr stored = boost::copy_exception(exception_);
    try {
        boost::rethrow_exception(stored);
        FAIL() << "nothing was thrown";
    } catch (const FileNotFoundException& caught) {
        EXPECT_EQ(caught.get_error_id(), "KORVEX:FILE:FileNotFound");
        EXPECT_EQ(caught.GetUnicodeMessageTxt(), text_);
    }
}

TEST_F(UserExceptions, CopyingNeverThrowsAndLeavesTheOriginalWhole) {
    EXPECT_TRUE(std::is_nothrow_copy_constructible_v<FileNotFoundException>);
    FileNotFoundException original = exception_;
    const FileNotFoundException copy = std::move(original);
    EXPECT_STREQ(original.what(), copy.what());
}

template <class Caught>
bool isCaughtAs(const IException& exception) {
    bool caught = false;
    try {
        exception.throwCopy();
    } catch (const Caught&) {
        caught = true;
    } catch (...) {
        caught = false;
    }
    return caught;
}

TEST_F(UserExceptions, ItIsCaughtUnderEachOfItsBases) {
    EXPECT_TRUE(isCaughtAs<FileNotFoundException>(exception_));
    EXPECT_TRUE(isCaughtAs<IMsgIDException>(exception_));
    EXPECT_TRUE(isCaughtAs<IUserException>(exception_));
    EXPECT_TRUE(isCaughtAs<IException>(exception_));
    EXPECT_TRUE(isCaughtAs<std::exception>(exception_));
}

TEST_F(UserExceptions, ItIsNotCaughtAsAnotherMessagesException) {
    EXPECT_FALSE(isCaughtAs<Exception<KORVEX::DELETE::FileNotFound>>(exception_));
}

TEST_F(UserExceptions, AnotherStandardBaseMayBeChosen) {
    struct StandardBase : std::exception {};
    const Exception<FileNotFound, StandardBase> exception(FileNotFound(u"a"));
    EXPECT_TRUE(isCaughtAs<StandardBase>(exception));
    EXPECT_FALSE(isCaughtAs<FileNotFoundException>(exception));
}

TEST_F(UserExceptions, UnpairedSurrogatesReachTheTextAndTheirBytesTheNarrowOne) {
    const FileNotFoundException exception(FileNotFound(u"\xDCFF"));
    EXPECT_NE(exception.GetUnicodeMessageTxt().find(u'\xDCFF'), std::u16string::npos);
    EXPECT_NE(std::string(exception.what()).find("\"\xFF\""), std::string::npos);
}

}  // namespace
