// Providers behind one that could inject faults and is not told to: nothing may be different.
#include <utility>

#include "runtime/storage/fault_injection/fault_injecting_provider.h"
#include "tests/contract/provider_under_test.h"

namespace korvex::tests {

namespace {

using runtime::storage::FaultInjectingProvider;
using runtime::storage::Provider;

class WatchedProviderUnderTest : public ProviderUnderTest {
public:
    explicit WatchedProviderUnderTest(std::unique_ptr<ProviderUnderTest> wrapped)
        : wrapped_(std::move(wrapped)) {
        // The wrapped provider belongs to the storage system that it came with.
        const auto inner = std::make_shared<vfs::StorageSystemReference>(wrapped_->storage());
        const std::shared_ptr<Provider> provider(inner, &inner->system().provider(root()));
        watcher_ = std::make_shared<FaultInjectingProvider>(provider);
        system_->add(root().getScheme(), watcher_);
    }

    void takeFoldersApart() { watcher_->takeFoldersApart(); }

    vfs::StorageSystemReference storage() const override { return vfs::StorageSystemReference(system_); }
    AbsoluteIRI root() const override { return wrapped_->root(); }
    AbsoluteIRI home() const override { return wrapped_->home(); }

    void makeFile(const std::u16string& path, const std::string& content) override {
        wrapped_->makeFile(path, content);
    }
    void makeFolder(const std::u16string& path) override { wrapped_->makeFolder(path); }
    void makeLink(const std::u16string& path, const std::u16string& target) override {
        wrapped_->makeLink(path, target);
    }

    std::string contentOf(const std::u16string& path) const override { return wrapped_->contentOf(path); }
    std::u16string linkTargetOf(const std::u16string& path) const override {
        return wrapped_->linkTargetOf(path);
    }
    bool hasWriteBits(const std::u16string& path) const override { return wrapped_->hasWriteBits(path); }
    Time changeTimeOf(const std::u16string& path) const override { return wrapped_->changeTimeOf(path); }
    void setChangeTime(const std::u16string& path, Time time) override {
        wrapped_->setChangeTime(path, time);
    }

private:
    const std::unique_ptr<ProviderUnderTest> wrapped_;
    std::shared_ptr<FaultInjectingProvider> watcher_;
    std::shared_ptr<vfs::StorageSystem> system_ = std::make_shared<vfs::StorageSystem>();
};

}  // namespace

std::unique_ptr<ProviderUnderTest> makeWatchedLocalProviderUnderTest() {
    return std::make_unique<WatchedProviderUnderTest>(makeLocalProviderUnderTest());
}

std::unique_ptr<ProviderUnderTest> makeWatchedMemoryProviderUnderTest() {
    return std::make_unique<WatchedProviderUnderTest>(makeMemoryProviderUnderTest());
}

std::unique_ptr<ProviderUnderTest> makeMemoryProviderByItemsUnderTest() {
    auto watched = std::make_unique<WatchedProviderUnderTest>(makeMemoryProviderUnderTest());
    watched->takeFoldersApart();
    return watched;
}

}  // namespace korvex::tests
