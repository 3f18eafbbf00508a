// The provider of "file", over a scratch folder that the standard library fills.
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "platform/path_management.h"
#include "runtime/storage/providers/local/local_provider.h"
#include "runtime/text/encoding.h"
#include "tests/contract/provider_under_test.h"
#include "tests/support/posix/ordinary_user.h"
#include "tests/support/scratch_folder.h"

namespace korvex::tests {

namespace {

/// Names that are no Unicode included.
std::filesystem::path nativePath(const std::u16string& text) { return runtime::text::toBytes(text).value(); }

class LocalProviderUnderTest : public ProviderUnderTest {
public:
    LocalProviderUnderTest() {
        std::filesystem::permissions(folder_.path(), std::filesystem::perms::all);
        system_->add(u"file", std::make_shared<runtime::storage::LocalProvider>());
    }

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

    std::string contentOf(const std::u16string& path) const override {
        std::ifstream stream(at(path), std::ios::binary);
        if (!stream) throw std::runtime_error("cannot read " + at(path).string());
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    std::u16string linkTargetOf(const std::u16string& path) const override {
        return runtime::text::fromBytes(std::filesystem::read_symlink(at(path)).string());
    }
    bool hasWriteBits(const std::u16string& path) const override {
        using std::filesystem::perms;
        constexpr perms writeBits = perms::owner_write | perms::group_write | perms::others_write;
        return (std::filesystem::status(at(path)).permissions() & writeBits) != perms::none;
    }
    Time changeTimeOf(const std::u16string& path) const override {
        const auto time = std::filesystem::last_write_time(at(path));
        return std::chrono::floor<std::chrono::seconds>(std::filesystem::file_time_type::clock::to_sys(time));
    }
    void setChangeTime(const std::u16string& path, Time time) override {
        using Clock = std::filesystem::file_time_type::clock;
        std::filesystem::last_write_time(at(path), Clock::from_sys(time));
    }

private:
    std::filesystem::path at(const std::u16string& path) const { return folder_.path() / nativePath(path); }

    ScratchFolder folder_;
    std::shared_ptr<vfs::StorageSystem> system_ = std::make_shared<vfs::StorageSystem>();
};

class LocalProviderOfOrdinaryUser : public LocalProviderUnderTest {
private:
    // Behind the folder, which the process's own user makes and takes away.
    const OrdinaryUser user_;
};

}  // namespace

std::unique_ptr<ProviderUnderTest> makeLocalProviderUnderTest() {
    return std::make_unique<LocalProviderUnderTest>();
}

std::unique_ptr<ProviderUnderTest> makeLocalProviderOfOrdinaryUserUnderTest() {
    return std::make_unique<LocalProviderOfOrdinaryUser>();
}

}  // namespace korvex::tests
