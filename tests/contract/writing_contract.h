// What the suites of the contract's writing side share.
#pragma once

#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <vector>

#include "runtime/text/encoding.h"
#include "tests/contract/provider_under_test.h"

namespace korvex::tests {

using provider::MergeFolder;
using provider::ReplaceAny;
using provider::ReplacementPolicy;
using provider::ReplaceWritable;

inline constexpr ReplacementPolicy allPolicies[] = {ReplaceWritable, ReplaceAny, MergeFolder};
/// Under these a folder goes into one that exists.
inline constexpr ReplacementPolicy mergingPolicies[] = {ReplaceAny, MergeFolder};
/// Under these a file has to be writable to be replaced.
inline constexpr ReplacementPolicy carefulPolicies[] = {ReplaceWritable, MergeFolder};

/// The exception that the work raises; fails the test when it raises none.
template <class Work>
std::optional<vfs::Exception> failureOf(const Work& work) {
    try {
        work();
        ADD_FAILURE() << "no exception";
    } catch (const vfs::Exception& failure) {
        return failure;
    }
    return std::nullopt;
}

template <class Work>
void expectFailure(vfs::ErrorCode code, const AbsoluteIRI& location, const Work& work) {
    const auto failure = failureOf(work);
    if (!failure) return;
    EXPECT_EQ(failure->getErrorCode(), code) << failure->what();
    EXPECT_EQ(runtime::text::toDisplayBytes(failure->getLocation().toString()),
              runtime::text::toDisplayBytes(location.toString()));
}

/// Everything below a folder, in the order of a walk: "folder/", "folder/file=content".
std::vector<std::string> treeOf(const ProviderUnderTest& tested, const std::u16string& path);

class WritingContract : public ProviderContract {
protected:
    std::string contentOf(const std::u16string& path) const { return provider_->contentOf(path); }
    std::vector<std::string> tree(const std::u16string& path) const { return treeOf(*provider_, path); }
    void protect(const std::u16string& path) const { fileHandle(path).setWritable(false); }

    void copyFile(const std::u16string& source, const std::u16string& destination,
                  ReplacementPolicy policy) const {
        fileHandle(source).copyFile(fileHandle(destination), policy);
    }
    void moveFile(const std::u16string& source, const std::u16string& destination,
                  ReplacementPolicy policy) const {
        fileHandle(source).moveFile(fileHandle(destination), policy);
    }
    void copyFolder(const std::u16string& source, const std::u16string& destination,
                    ReplacementPolicy policy) const {
        folderHandle(source).copyFolder(folderHandle(destination), policy);
    }
    void moveFolder(const std::u16string& source, const std::u16string& destination,
                    ReplacementPolicy policy) const {
        folderHandle(source).moveFolder(folderHandle(destination), policy);
    }

    /// Expects the error at the location of that path.
    template <class Work>
    void expectError(vfs::ErrorCode code, const std::u16string& path, const Work& work) const {
        expectFailure(code, provider_->locationOf(path), work);
    }
};

}  // namespace korvex::tests
