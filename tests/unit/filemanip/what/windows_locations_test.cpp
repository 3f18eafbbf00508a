// `what` on locations of disks where a location may lack the drive that makes its path absolute: over
// stand-ins for the platform's path functions, and a lister that finds nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <stdexcept>
#include <utility>

#include "io/filesystem/filemanip/what_report.h"
#include "platform/listing.h"
#include "runtime/storage/storage_system.h"
#include "runtime/text/encoding.h"
#include "tests/unit/filemanip/fake_platform_paths.h"
#include "tests/unit/filemanip/observed_provider.h"

namespace vfs = foundation::storage::vfs;

namespace {

std::vector<std::u16string>& listedFolders() {
    static std::vector<std::u16string> folders;
    return folders;
}

}  // namespace

void ioGetDirListVFS(const std::u16string& folder, std::u16string_view, std::vector<FileNameWithStatLight>&) {
    listedFolders().push_back(folder);
}

namespace fl::filesystem {

std::u16string canonical(const std::u16string&, const std::u16string&) {
    throw std::logic_error("a location is no path");
}

}  // namespace fl::filesystem

namespace korvex::filemanip::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Disks that know the drive of some of their locations; the others have no canonical form.
class DrivesProvider : public ListedLocations {
public:
    runtime::storage::CanonicalAbsoluteIRI canonicalLocation(const AbsoluteIRI& location) override {
        const auto onDrive = drives.find(location.toString());
        if (onDrive == drives.end()) throw vfs::Exception(vfs::resourceNotFound, location, u"canonical form");
        return runtime::storage::CanonicalAbsoluteIRI(AbsoluteIRI(onDrive->second));
    }

    std::map<std::u16string, std::u16string> drives;
};

class WhatWindowsLocationsTest : public testing::Test {
protected:
    WhatWindowsLocationsTest() {
        fakePlatform() = FakePlatform();
        fakePlatform().isAbsolute = [](const std::u16string& path) { return path.starts_with(u"/C:/"); };
        listedFolders().clear();
        for (const auto* folder : {u"file:///x", u"file:///lost", u"file:///C:/x", u"file:///C:/other"})
            disks_->entries[folder] = foundation::storage::provider::AsFolder;
    }
    ~WhatWindowsLocationsTest() override { fakePlatform() = FakePlatform(); }

    std::shared_ptr<const vfs::StorageSystem> system() {
        auto system = std::make_shared<vfs::StorageSystem>();
        system->add(u"file", disks_);
        return system;
    }
    bool isReported(const std::u16string& location) {
        return reportFolder(location, false, result_.get(), false, true);
    }

    std::shared_ptr<DrivesProvider> disks_ = std::make_shared<DrivesProvider>();
    runtime::storage::ScopedStorageSystem scope_{system()};
    matrix::ArrayOwner result_ = makeEmptyWhatResult();
};

TEST_F(WhatWindowsLocationsTest, LocationWithoutAnAbsolutePathTakesItsCanonicalForm) {
    disks_->drives = {{u"file:///x", u"file:///C:/x"}};
    EXPECT_TRUE(isReported(u"file:///x"));
    EXPECT_THAT(listedFolders(), ElementsAre(u"file:///C:/x"));
    EXPECT_EQ(kxGetM(result_.get()), 1U);
}

TEST_F(WhatWindowsLocationsTest, LocationWithAnAbsolutePathStaysAsItWasGiven) {
    disks_->drives = {{u"file:///C:/x", u"file:///C:/other"}};
    EXPECT_TRUE(isReported(u"file:///C:/x"));
    EXPECT_THAT(listedFolders(), ElementsAre(u"file:///C:/x"));
}

TEST_F(WhatWindowsLocationsTest, LocationWithoutEitherIsNotThere) {
    EXPECT_FALSE(isReported(u"file:///lost"));
    disks_->drives = {{u"file:///x", u"file:///C:/nothing"}};
    EXPECT_FALSE(isReported(u"file:///x"));
    EXPECT_THAT(listedFolders(), IsEmpty());
    EXPECT_EQ(kxGetM(result_.get()), 0U);
}

}  // namespace
}  // namespace korvex::filemanip::tests
