// `rmdir` in a scratch folder: its outcomes by name, and a search path and packages that end with the test.
#pragma once

#include <string>
#include <vector>

#include "runtime/dispatcher/search_path.h"
#include "runtime/packages/package_registry.h"
#include "tests/unit/filemanip/dir_manip/dir_manip_fixture.h"

namespace korvex::filemanip::tests {

using Kind = EnvironmentEvent::Kind;
namespace dispatcher = korvex::runtime::dispatcher;
namespace provider = foundation::storage::provider;

class DirManipRemovalTest : public DirManipTest {
protected:
    ~DirManipRemovalTest() override {
        for (const runtime::packages::RegisteredPackage& package : runtime::packages::registeredPackages())
            runtime::packages::unregisterPackage(package.name);
        std::vector<std::u16string> onPath;
        for (const vfs::AbsoluteIRI& entry : dispatcher::searchPath())
            onPath.push_back(vfs::fromAbsoluteIRI(entry));
        dispatcher::removeFromSearchPath(onPath);
    }

    static CommandResult notRemoved(const std::u16string& typed) {
        return failure(KORVEX::RMDIR::DirectoryNotRemoved(typed));
    }
    static CommandResult noneRemoved() { return failure(KORVEX::RMDIR::NoDirectoriesRemoved()); }
    static CommandResult noFolder(const std::u16string& typed) {
        return failure(KORVEX::RMDIR::NotADirectory(typed));
    }
    static CommandResult someNotRemoved(const std::u16string& list) {
        return failure(KORVEX::RMDIR::SomeDirectoriesNotRemoved(list));
    }
    std::u16string isNoFolder(const std::u16string& name) const {
        return textOf(KORVEX::FileManip::NotADirectory(pathOf(name)));
    }
    std::vector<Kind> kindsOfEvents() const {
        std::vector<Kind> kinds;
        for (const EnvironmentEvent& event : events_)
            kinds.push_back(event.kind);
        return kinds;
    }
    void protect(const std::string& name) const {
        fs::permissions(diskPath(name), fs::perms::owner_read | fs::perms::owner_exec);
    }
};

}  // namespace korvex::filemanip::tests
