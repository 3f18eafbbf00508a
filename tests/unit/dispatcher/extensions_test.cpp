// Which file extensions the interpreter executes, the hash that their names go through, and the guard over
// protected functions.
#include <gtest/gtest.h>

#include <stdexcept>

#include "platform/dispatcher.h"

namespace korvex::runtime::dispatcher {
namespace {

int numberOf(const std::u16string& extension, bool isCaseExact = false) {
    Kdispatcher& kdispatcher = Kdispatcher::getDispatcher();
    return kdispatcher.get_iExtension(kdispatcher.namehash.insert(extension), isCaseExact);
}

TEST(ExtensionsTest, SourceAndLiveCodeAreExecuted) {
    EXPECT_EQ(numberOf(u".k"), 0);
    EXPECT_EQ(numberOf(u".klx"), 1);
}

TEST(ExtensionsTest, CaseCountsWhereItIsAskedFor) {
    EXPECT_EQ(numberOf(u".K"), 0);
    EXPECT_EQ(numberOf(u".KLX"), 1);
    EXPECT_EQ(numberOf(u".k", true), 0);
    EXPECT_EQ(numberOf(u".K", true), -1);
}

TEST(ExtensionsTest, OthersAreNotExecuted) {
    for (const char16_t* extension : {u"", u".", u"k", u".txt", u".kk", u".klxx", u"..k", u".k "})
        EXPECT_EQ(numberOf(extension), -1);
}

TEST(NameHashTest, EqualTextsHaveOneKey) {
    ::dispatcher::ustring_namehash hash;
    const auto first = hash.insert(u".k");
    for (int i = 0; i < 1000; ++i)
        hash.insert(u".e" + std::u16string(static_cast<std::size_t>(i), u'x'));
    EXPECT_EQ(hash.insert(u".k"), first);
    EXPECT_EQ(*first, u".k");
    EXPECT_NE(hash.insert(u".K"), first);
    EXPECT_EQ(*hash.insert(u""), u"");
}

TEST(ProtectedFunctionsGuardTest, PutsTheFlagBackAsItWas) {
    Kdispatcher& kdispatcher = Kdispatcher::getDispatcher();
    EXPECT_TRUE(kdispatcher.loadLmBuiltinAllowed);
    try {
        const kdLoadLmBuiltinAllowedProtected outer(kdispatcher);
        {
            const kdLoadLmBuiltinAllowedProtected inner(kdispatcher);
            EXPECT_FALSE(kdispatcher.loadLmBuiltinAllowed);
        }
        EXPECT_FALSE(kdispatcher.loadLmBuiltinAllowed);
        throw std::runtime_error("whatever happens");
    } catch (const std::runtime_error&) {
        EXPECT_TRUE(kdispatcher.loadLmBuiltinAllowed);
    }
}

}  // namespace
}  // namespace korvex::runtime::dispatcher
