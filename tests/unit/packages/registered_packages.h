// A scratch folder with a configuration folder in it, for packages of a test; it is the current folder too.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/filesystem_core.h"
#include "platform/path_management.h"
#include "runtime/configuration/configuration_folder.h"
#include "runtime/configuration/stored_document.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/packages/package_registry.h"
#include "tests/support/scratch_folder.h"

namespace korvex::runtime::packages {

class PackageTest : public testing::Test {
protected:
    PackageTest() {
        configuration::setConfigurationFolder(configurationFolder().u16string());
        dispatcher::setCurrentFolderPath(scratch_.text());
    }
    ~PackageTest() override {
        dispatcher::setCurrentFolderPath(u"/");
        configuration::setConfigurationFolder(u"");
    }

    std::filesystem::path configurationFolder() const { return scratch_.path() / "config"; }
    std::filesystem::path registryFile() const { return configurationFolder() / "packages.json"; }

    static foundation::storage::vfs::Folder folderAt(const std::u16string& text) {
        return foundation::storage::vfs::Folder(Velquist::PathManagement::GetIRIFromString(text),
                                                Velquist::KorvexStorageSystem::GetStorageSystemReference());
    }

    /// The name of the package that claims a folder; empty when none does.
    static std::u16string claimantOf(const std::u16string& folder) {
        const auto owner = io::filesystem::core::GetClaimingPackage(folderAt(folder));
        return owner ? io::filesystem::core::GetCurrentPackageRegistry()->name(*owner) : u"";
    }

    static std::vector<std::u16string> names() {
        std::vector<std::u16string> found;
        for (const RegisteredPackage& package : registeredPackages())
            found.push_back(package.name);
        return found;
    }

    korvex::tests::ScratchFolder scratch_;
};

}  // namespace korvex::runtime::packages
