// The provider of "file", over a scratch folder that the standard library fills.
#include <filesystem>

#include "platform/path_management.h"
#include "runtime/storage/providers/local/local_provider.h"
#include "runtime/text/encoding.h"
#include "tests/contract/provider_under_test.h"
#include "tests/support/scratch_folder.h"

namespace korvex::tests {

namespace {

/// Names that are no Unicode included.
std::filesystem::path nativePath(const std::u16string& text) { return runtime::text::toBytes(text).value(); }

class LocalProviderUnderTest : public ProviderUnderTest {
public:
    LocalProviderUnderTest() { system_->add(u"file", std::make_shared<runtime::storage::LocalProvider>()); }

    vfs::StorageSystemReference storage() const override { return vfs::StorageSystemReference(system_); }
    AbsoluteIRI root() const override { return AbsoluteIRI(u"file:///"); }
    AbsoluteIRI home() const override { return Velquist::PathManagement::GetIRIFromString(folder_.text()); }

    void makeFile(const std::u16string& path, const std::string& content) override {
        folder_.writeFile(nativePath(path), content);
    }
    void makeFolder(const std::u16string& path) override { folder_.makeFolder(nativePath(path)); }
    void makeLink(const std::u16string& path, const std::u16string& target) override {
        const std::filesystem::path link = folder_.path() / nativePath(path);
        std::filesystem::create_directories(link.parent_path());
        std::filesystem::create_symlink(nativePath(target), link);
    }

private:
    ScratchFolder folder_;
    std::shared_ptr<vfs::StorageSystem> system_ = std::make_shared<vfs::StorageSystem>();
};

}  // namespace

std::unique_ptr<ProviderUnderTest> makeLocalProviderUnderTest() {
    return std::make_unique<LocalProviderUnderTest>();
}

}  // namespace korvex::tests
