// What the suites of the contract's writing side share.
#include "tests/contract/writing_contract.h"

namespace korvex::tests {

std::vector<std::string> treeOf(const ProviderUnderTest& tested, const std::u16string& path) {
    const std::u16string above = path.empty() ? path : path + u"/";
    std::vector<std::string> found;
    std::vector<std::u16string> folders{u""};
    while (!folders.empty()) {
        const std::u16string below = folders.back();
        folders.pop_back();
        const vfs::Folder folder(AbsoluteIRI(tested.locationOf(path), below), tested.storage());
        for (const vfs::ListEntry& entry : folder.listAll(u"")) {
            const std::u16string item = below + entry.getLocation().getName();
            const bool isFolder = entry.getFileOrFolder().which() == 1;
            if (isFolder) folders.push_back(item + u"/");
            const std::string content = isFolder ? "/" : "=" + tested.contentOf(above + item);
            found.push_back(runtime::text::toDisplayBytes(item) + content);
        }
    }
    return found;
}

}  // namespace korvex::tests
