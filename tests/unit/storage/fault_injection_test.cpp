// The provider that fails on demand: when, where and how.
#include "runtime/storage/fault_injection/fault_injecting_provider.h"

#include <gmock/gmock.h>

#include <sstream>

#include "tests/unit/storage/memory_boxes.h"

namespace korvex::runtime::storage {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

class FaultInjection : public ::testing::Test {
protected:
    static AbsoluteIRI at(const std::u16string& path) { return MemoryBox::at(path); }
    void createFolder(const std::u16string& path) const { storage_.createFolder(at(path)); }
    std::vector<std::string> calls() const {
        std::vector<std::string> lines;
        for (const Call& call : storage_.calls()) {
            std::ostringstream line;
            line << call;
            lines.push_back(line.str());
        }
        return lines;
    }

    MemoryBox box_;
    FaultInjectingProvider& storage_ = *box_.faulty;
};

TEST_F(FaultInjection, WithoutFaultsNothingIsDifferent) {
    box_.put(u"file", "content");
    storage_.copyFile(at(u"file"), at(u"copy"), provider::ReplaceWritable);
    EXPECT_EQ(storage_.existence(at(u"copy")), provider::AsFile);
    EXPECT_EQ(box_.contentOf(u"copy"), "content");
    EXPECT_EQ(storage_.faultsRaised(), 0U);
}

TEST_F(FaultInjection, CallsAreRememberedInOrder) {
    box_.put(u"file");
    storage_.isWritable(at(u"file"));
    storage_.moveFile(at(u"file"), at(u"50% off"), provider::ReplaceWritable);
    EXPECT_THROW(storage_.removeFile(at(u"file")), vfs::Exception);
    EXPECT_THAT(calls(), ElementsAre("isWritable memory://box/file",
                                     "moveFile memory://box/file to memory://box/50%25%20off",
                                     "removeFile memory://box/file"));
    EXPECT_THAT(storage_.callsOf(Operation::removeFile),
                ElementsAre(Call{Operation::removeFile, at(u"file")}));
    storage_.forgetCalls();
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(FaultInjection, TheCallOfThatNumberFailsOnce) {
    storage_.failCall(Operation::createFolder, 2, {.code = vfs::noSpaceLeft});
    createFolder(u"a");
    storage_.existence(at(u"a"));
    EXPECT_THAT(errorOf([&] { createFolder(u"b"); }), Pair(vfs::noSpaceLeft, "memory://box/b"));
    createFolder(u"c");
    EXPECT_THAT(box_.namesIn(u""), ElementsAre("a", "c"));
    EXPECT_EQ(storage_.faultsRaised(), 1U);
}

TEST_F(FaultInjection, EveryCallAtALocationFails) {
    box_.put(u"file");
    storage_.failAt(at(u"file"), {.code = vfs::permissionDenied});
    const auto denied = Pair(vfs::permissionDenied, "memory://box/file");
    for (int time = 0; time < 2; ++time) {
        EXPECT_THAT(errorOf([&] { storage_.existence(at(u"file")); }), denied);
        EXPECT_THAT(errorOf([&] { storage_.read(at(u"file")); }), denied);
    }
    EXPECT_THAT(errorOf([&] { storage_.copyFile(at(u"other"), at(u"file"), provider::ReplaceAny); }), denied);
    EXPECT_EQ(storage_.existence(at(u"other")), provider::AsNeither);
    storage_.forgetFaults();
    EXPECT_EQ(storage_.existence(at(u"file")), provider::AsFile);
    EXPECT_EQ(storage_.faultsRaised(), 5U);
}

TEST_F(FaultInjection, OneOperationAtALocationFails) {
    box_.put(u"file");
    storage_.failAt(Operation::removeFile, at(u"file"), {.code = vfs::resourceInUse});
    EXPECT_EQ(storage_.existence(at(u"file")), provider::AsFile);
    EXPECT_THAT(errorOf([&] { storage_.removeFile(at(u"file")); }),
                Pair(vfs::resourceInUse, "memory://box/file"));
}

TEST_F(FaultInjection, TheExceptionSaysWhatItIsToldTo) {
    storage_.failCall(Operation::setWritable, 1,
                      {.code = vfs::ioError,
                       .context = u"going down",
                       .systemText = "Input/output error",
                       .location = at(u"elsewhere")});
    const auto failure = failureOf([&] { storage_.setWritable(at(u"file"), true); });
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->getErrorCode(), vfs::ioError);
    EXPECT_EQ(failure->getExceptionContextsString(), u"going down");
    EXPECT_EQ(failure->getSystemText(), "Input/output error");
    EXPECT_EQ(failure->getLocation(), at(u"elsewhere"));
}

TEST_F(FaultInjection, ACallMayTakeEffectAndFailNevertheless) {
    box_.put(u"file");
    storage_.failCall(Operation::moveFile, 1, {.moment = Fault::Moment::after});
    storage_.failCall(Operation::existence, 1, {.moment = Fault::Moment::after});
    EXPECT_THROW(storage_.moveFile(at(u"file"), at(u"moved"), provider::ReplaceAny), vfs::Exception);
    EXPECT_THROW(storage_.existence(at(u"moved")), vfs::Exception);
    EXPECT_THAT(box_.namesIn(u""), ElementsAre("moved"));
}

TEST_F(FaultInjection, WhatFailsByItselfFailsAsItDoes) {
    storage_.failCall(Operation::removeFile, 1, {.code = vfs::ioError, .moment = Fault::Moment::after});
    EXPECT_EQ(errorOf([&] { storage_.removeFile(at(u"absent")); }).first, vfs::resourceNotFound);
}

TEST_F(FaultInjection, SeveralFaultsAreMetInTheOrderInWhichTheyWereGiven) {
    storage_.failCall(Operation::createFolder, 1, {.code = vfs::ioError});
    storage_.failAt(at(u"a"), {.code = vfs::permissionDenied});
    EXPECT_EQ(errorOf([&] { createFolder(u"a"); }).first, vfs::ioError);
    EXPECT_EQ(errorOf([&] { createFolder(u"a"); }).first, vfs::permissionDenied);
}

TEST_F(FaultInjection, StreamsFailToo) {
    box_.put(u"file", "content");
    storage_.failCall(Operation::streamRead, 2, {.code = vfs::ioError});
    storage_.failCall(Operation::streamCommit, 1, {.code = vfs::noSpaceLeft});
    const auto input = storage_.read(at(u"file"));
    std::array<std::byte, 3> buffer{};
    EXPECT_EQ(input->read(buffer), 3U);
    EXPECT_EQ(errorOf([&] { input->read(buffer); }).first, vfs::ioError);
    EXPECT_EQ(input->read(buffer), 3U);
    const auto output = storage_.write(at(u"new"), provider::ReplaceAny);
    output->write(buffer);
    EXPECT_THAT(errorOf([&] { output->commit(); }), Pair(vfs::noSpaceLeft, "memory://box/new"));
    EXPECT_FALSE(box_.isThere(u"new"));
}

TEST_F(FaultInjection, AFolderIsOneCallUnlessItIsTakenApart) {
    box_.put(u"folder/file");
    storage_.removeFolder(at(u"folder"), vfs::RemoveWithContents);
    EXPECT_THAT(calls(), ElementsAre("removeFolder memory://box/folder"));
}

TEST_F(FaultInjection, ARemovalTakenApartGoesItemByItem) {
    box_.put(u"folder/b/file");
    box_.put(u"folder/a");
    storage_.takeFoldersApart();
    storage_.removeFolder(at(u"folder"), vfs::RemoveWithContents);
    EXPECT_FALSE(box_.isThere(u"folder"));
    EXPECT_THAT(calls(),
                ElementsAre("removeFolder memory://box/folder", "list memory://box/folder",
                            "removeFile memory://box/folder/a", "extendedExistence memory://box/folder/b",
                            "list memory://box/folder/b", "removeFile memory://box/folder/b/file",
                            "removeFolder memory://box/folder/b", "removeFolder memory://box/folder"));
}

TEST_F(FaultInjection, ACopyTakenApartFailsAtAnyItem) {
    box_.put(u"folder/a");
    box_.put(u"folder/b");
    box_.put(u"folder/c");
    storage_.takeFoldersApart();
    storage_.failCall(Operation::copyFile, 2, {.code = vfs::noSpaceLeft, .location = at(u"copy/b")});
    EXPECT_THAT(errorOf([&] { storage_.copyFolder(at(u"folder"), at(u"copy"), provider::ReplaceWritable); }),
                Pair(vfs::noSpaceLeft, "memory://box/copy/b"));
    EXPECT_THAT(box_.namesIn(u"copy"), ElementsAre("a"));
}

TEST_F(FaultInjection, AMoveTakenApartRemovesNothingBeforeAllIsCopied) {
    box_.put(u"folder/a");
    box_.put(u"folder/b");
    storage_.takeFoldersApart();
    storage_.failCall(Operation::removeFile, 2, {.code = vfs::resourceInUse});
    EXPECT_THAT(errorOf([&] { storage_.moveFolder(at(u"folder"), at(u"moved"), provider::ReplaceWritable); }),
                Pair(vfs::resourceInUse, "memory://box/folder/b"));
    EXPECT_THAT(box_.namesIn(u"moved"), ElementsAre("a", "b"));
    EXPECT_THAT(box_.namesIn(u"folder"), ElementsAre("b"));
}

TEST_F(FaultInjection, EveryOperationHasItsName) {
    EXPECT_EQ(nameOf(Operation::existence), "existence");
    EXPECT_EQ(nameOf(Operation::copyFolder), "copyFolder");
    EXPECT_EQ(nameOf(Operation::createFolderRecursive), "createFolderRecursive");
    EXPECT_EQ(nameOf(Operation::streamCommit), "streamCommit");
}

}  // namespace
}  // namespace korvex::runtime::storage
