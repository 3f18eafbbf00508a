// The provider of "memory", with a host that has other neighbours.
#include "runtime/storage/providers/memory/memory_provider.h"
#include "tests/contract/provider_under_test.h"

namespace korvex::tests {

namespace {

class MemoryProviderUnderTest : public ProviderUnderTest {
public:
    MemoryProviderUnderTest() {
        system_->add(u"memory", memory_);
        memory_->putFolder(home());
        memory_->putFile(AbsoluteIRI(u"memory://neighbour/home/file"), "not the one");
    }

    vfs::StorageSystemReference storage() const override { return vfs::StorageSystemReference(system_); }
    AbsoluteIRI root() const override { return AbsoluteIRI(u"memory://box/"); }
    AbsoluteIRI home() const override { return AbsoluteIRI(u"memory://box/home"); }

    void makeFile(const std::u16string& path, const std::string& content) override {
        memory_->putFile(locationOf(path), content);
    }
    void makeFolder(const std::u16string& path) override { memory_->putFolder(locationOf(path)); }

private:
    std::shared_ptr<runtime::storage::MemoryProvider> memory_ =
        std::make_shared<runtime::storage::MemoryProvider>();
    std::shared_ptr<vfs::StorageSystem> system_ = std::make_shared<vfs::StorageSystem>();
};

}  // namespace

std::unique_ptr<ProviderUnderTest> makeMemoryProviderUnderTest() {
    return std::make_unique<MemoryProviderUnderTest>();
}

}  // namespace korvex::tests
