// The provider of "memory", with a host that has other neighbours.
#include "runtime/storage/providers/memory/memory_provider.h"

#include <array>
#include <span>

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

    std::string contentOf(const std::u16string& path) const override {
        const auto stream = memory_->read(locationOf(path));
        std::string content;
        std::array<char, 4096> buffer{};
        while (const std::size_t count = stream->read(std::as_writable_bytes(std::span(buffer))))
            content.append(buffer.data(), count);
        return content;
    }
    bool hasWriteBits(const std::u16string& path) const override {
        return memory_->isWritable(locationOf(path));
    }
    Time changeTimeOf(const std::u16string& path) const override {
        return std::chrono::floor<std::chrono::seconds>(
            memory_->read(locationOf(path))->attributes().changed.value());
    }
    void setChangeTime(const std::u16string& path, Time time) override {
        const std::string content = contentOf(path);
        const auto stream = memory_->write(locationOf(path), provider::ReplaceAny);
        stream->write(std::as_bytes(std::span(content)));
        stream->setAttributes({.changed = time});
        stream->commit();
    }

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
