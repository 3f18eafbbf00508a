// A folder of a test as the environment's current folder.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "platform/dispatcher.h"
#include "runtime/dispatcher/current_folder.h"
#include "tests/support/scratch_folder.h"

namespace korvex::runtime::dispatcher {

/// A scratch folder that is the environment's current folder.
class CurrentFolderTest : public testing::Test {
protected:
    CurrentFolderTest() {
        setCurrentFolderPath(scratch_.text());
        here_ = currentFolderPath();
    }
    ~CurrentFolderTest() override { setCurrentFolderPath(u"/"); }

    /// The code with which a folder is refused; none when it has become the current one.
    static std::optional<foundation::storage::vfs::ErrorCode> refusalOf(const std::u16string& path) {
        try {
            setCurrentFolderPath(path);
        } catch (const foundation::storage::vfs::Exception& error) {
            return error.getErrorCode();
        }
        return std::nullopt;
    }

    /// The folder that the commands are given.
    static foundation::storage::vfs::Folder given() {
        return Kdispatcher::getDispatcher().GetCurrentWorkingFolder().get();
    }

    korvex::tests::ScratchFolder scratch_;
    std::u16string here_;
};

}  // namespace korvex::runtime::dispatcher
