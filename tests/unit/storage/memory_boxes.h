// Two providers in memory and what their files hold, for tests of what goes on between them.
#pragma once

#include <gmock/gmock.h>

#include <array>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "runtime/storage/fault_injection/fault_injecting_provider.h"
#include "runtime/storage/providers/memory/memory_provider.h"
#include "runtime/storage/transfers.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::storage {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

/// A provider in memory behind one that injects faults.
struct MemoryBox {
    std::shared_ptr<MemoryProvider> memory = std::make_shared<MemoryProvider>();
    std::shared_ptr<FaultInjectingProvider> faulty = std::make_shared<FaultInjectingProvider>(memory);

    static AbsoluteIRI at(const std::u16string& path) { return AbsoluteIRI(u"memory://box/" + path); }
    ServedLocation served(const std::u16string& path) const { return {*faulty, at(path)}; }

    void put(const std::u16string& path, std::string content = "content") const {
        memory->putFile(at(path), std::move(content));
    }
    std::string contentOf(const std::u16string& path) const {
        const auto stream = memory->read(at(path));
        std::string content;
        std::array<char, 4096> buffer{};
        while (const std::size_t count = stream->read(std::as_writable_bytes(std::span(buffer))))
            content.append(buffer.data(), count);
        return content;
    }
    FileAttributes attributesOf(const std::u16string& path) const {
        return memory->read(at(path))->attributes();
    }
    bool isThere(const std::u16string& path) const {
        return memory->existence(at(path)) != provider::AsNeither;
    }
    std::vector<std::string> namesIn(const std::u16string& path) const {
        std::vector<std::string> names;
        for (const ListedEntry& entry : memory->list(at(path), u""))
            names.push_back(text::toDisplayBytes(entry.name));
        return names;
    }
};

/// The exception that the work raises; fails the test when it raises none.
template <class Work>
std::optional<vfs::Exception> failureOf(const Work& work) {
    try {
        work();
        ADD_FAILURE() << "no exception";
    } catch (const vfs::Exception& failure) {
        return failure;
    }
    return std::nullopt;
}

/// Its code and location.
template <class Work>
std::pair<vfs::ErrorCode, std::string> errorOf(const Work& work) {
    const auto failure = failureOf(work);
    if (!failure) return {vfs::internalError, "nowhere"};
    return {failure->getErrorCode(), text::toDisplayBytes(failure->getLocation().toString())};
}

}  // namespace korvex::runtime::storage
