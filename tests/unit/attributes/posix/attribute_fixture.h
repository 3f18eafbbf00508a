// A scratch folder, and what stands on the disk beside content.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <array>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/foundation_filesystem.h"
#include "runtime/attributes/stored_attributes.h"
#include "tests/support/scratch_folder.h"

namespace korvex::tests {

using fl::filesystem::file_status;

class AttributesTest : public testing::Test {
protected:
    /// The path of a name below the scratch folder.
    std::u16string at(const std::string& name) const { return (scratch_.path() / name).u16string(); }

    mode_t modeOf(const std::string& name) const {
        struct ::stat status {};
        EXPECT_EQ(::stat((scratch_.path() / name).c_str(), &status), 0) << name;
        return status.st_mode & 07777;
    }
    void setMode(const std::string& name, mode_t mode) const {
        EXPECT_EQ(::chmod((scratch_.path() / name).c_str(), mode), 0) << name;
    }

    /// "none" where there is none.
    std::string storedOf(const std::string& name) const {
        std::array<char, 512> value{};
        const ssize_t length =
            ::getxattr((scratch_.path() / name).c_str(), runtime::attributes::storedAttributesName,
                       value.data(), value.size());
        return length < 0 ? "none" : std::string(value.data(), static_cast<std::size_t>(length));
    }
    void store(const std::string& name, std::string_view value) const {
        EXPECT_EQ(::setxattr((scratch_.path() / name).c_str(), runtime::attributes::storedAttributesName,
                             value.data(), value.size(), 0),
                  0)
            << "The temporary folder does not keep extended attributes.";
    }

    ScratchFolder scratch_;
};

}  // namespace korvex::tests
