// `mkdir` and `rmdir` as the interpreter calls them: in a scratch folder, over storage that fails on demand,
// with everything kept that the user and the environment are told.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "platform/message_catalog.h"
#include "platform/message_identifiers.h"
#include "platform/path_management.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/dispatcher/environment_events.h"
#include "runtime/interpreter/warnings.h"
#include "runtime/storage/fault_injection/fault_injecting_provider.h"
#include "runtime/storage/providers/local/local_provider.h"
#include "runtime/storage/providers/memory/memory_provider.h"
#include "runtime/storage/storage_system.h"
#include "runtime/text/encoding.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/filemanip/entry_call.h"

namespace korvex::filemanip::tests {

namespace fs = std::filesystem;
namespace vfs = foundation::storage::vfs;
using runtime::dispatcher::EnvironmentEvent;
using runtime::storage::Call;
using runtime::storage::Fault;
using runtime::storage::FaultInjectingProvider;
using runtime::storage::Operation;

/// What a command with three outputs gave.
struct CommandResult {
    bool succeeded;
    std::string identifier;
    std::u16string text;

    bool operator==(const CommandResult&) const = default;
};

inline void PrintTo(const CommandResult& result, std::ostream* stream) {
    *stream << (result.succeeded ? "success " : "failure ") << result.identifier << " \""
            << runtime::text::toDisplayBytes(result.text) << '"';
}

/// The catalog's text of a message.
inline std::u16string textOf(const resource_core::BaseMsgID& message) {
    return fl::i18n::MessageCatalog::get_message(message, fl::i18n::KwLocale::global());
}

inline CommandResult success() { return {true, "", u""}; }

/// A success that carries a message, under the message's own identifier.
inline CommandResult noted(const resource_core::BaseMsgID& message) {
    return {true, message.identifier(), textOf(message)};
}

/// A failure under the message's own identifier, or another one.
inline CommandResult failure(const resource_core::BaseMsgID& message) {
    return {false, message.identifier(), textOf(message)};
}
inline CommandResult failure(const resource_core::BaseMsgID& message, std::string identifier) {
    return {false, std::move(identifier), textOf(message)};
}

class DirManipTest : public testing::Test {
protected:
    DirManipTest() {
        runtime::dispatcher::setCurrentFolderPath(scratch_.text());
        here_ = runtime::dispatcher::currentFolderPath();
        runtime::interpreter::setWarningReceiver([this](const runtime::interpreter::Warning& warning) {
            warnings_.push_back(warning.identifier);
        });
        runtime::dispatcher::watchEvents([this](const EnvironmentEvent& event) { events_.push_back(event); });
        local_->forgetCalls();
    }
    ~DirManipTest() override {
        runtime::dispatcher::watchEvents({});
        runtime::interpreter::setWarningReceiver({});
        local_->forgetFaults();
        runtime::dispatcher::setCurrentFolderPath(u"/");
    }

    std::shared_ptr<const vfs::StorageSystem> storageSystem() const {
        auto system = std::make_shared<vfs::StorageSystem>();
        system->add(u"file", local_);
        system->add(u"memory", memory_);
        return system;
    }

    /// Calls a command with texts and takes all of its outputs.
    static CommandResult run(Entry entry, const std::vector<std::u16string>& words) {
        std::vector<Array> arrays;
        for (const std::u16string& word : words)
            arrays.push_back(text(word));
        return resultOf(entry, arrays);
    }
    static CommandResult resultOf(Entry entry, const std::vector<Array>& arrays) {
        const Outcome outcome = outcomeOf(entry, 3, arrays);
        EXPECT_EQ(outcome.errorIdentifier, "");
        if (outcome.outputs[2] == nullptr) return {false, "no outputs", u""};
        return {logicals(outcome.outputs[0]).at(0),
                runtime::text::toDisplayBytes(charsOf(outcome.outputs[2])), charsOf(outcome.outputs[1])};
    }
    static Outcome outcomeOf(Entry entry, int nlhs, const std::vector<Array>& arrays) {
        std::vector<const kxArray*> borrowed;
        for (const Array& array : arrays)
            borrowed.push_back(array.get());
        return call(entry, nlhs, borrowed);
    }
    static CommandResult mkdir(const std::vector<std::u16string>& words) { return run(makeDir, words); }
    static CommandResult rmdir(const std::vector<std::u16string>& words) { return run(removeDir, words); }
    /// `rmdir(name, ['s',] 'resolvesymboliclinks', true)`.
    static CommandResult rmdirResolving(const std::u16string& name, bool isRecursive) {
        std::vector<Array> arrays;
        arrays.push_back(text(name));
        if (isRecursive) arrays.push_back(text(u"s"));
        arrays.push_back(text(u"resolvesymboliclinks"));
        arrays.emplace_back(kxCreateLogicalScalar(true));
        return resultOf(removeDir, arrays);
    }
    static std::u16string charsOf(const Array& array) {
        const std::span<const char16_t> units = kxGetChars(static_cast<const kxArray*>(array.get()));
        return {units.begin(), units.end()};
    }

    /// The native path of a name below the scratch folder, and its location.
    std::u16string pathOf(const std::u16string& name) const { return here_ + u"/" + name; }
    vfs::AbsoluteIRI locationOf(const std::u16string& name) const {
        return Velquist::PathManagement::GetIRIFromString(pathOf(name));
    }
    static vfs::AbsoluteIRI boxLocation(const std::u16string& name) {
        return vfs::AbsoluteIRI(u"memory://box/" + name);
    }
    fs::path diskPath(const std::string& name) const { return scratch_.path() / name; }
    bool isThere(const std::string& name) const { return fs::exists(fs::symlink_status(diskPath(name))); }
    void makeLink(const std::string& target, const std::string& name) const {
        fs::create_symlink(target, diskPath(name));
    }

    korvex::tests::ScratchFolder scratch_;
    std::shared_ptr<FaultInjectingProvider> local_ =
        std::make_shared<FaultInjectingProvider>(std::make_shared<runtime::storage::LocalProvider>());
    std::shared_ptr<runtime::storage::MemoryProvider> box_ =
        std::make_shared<runtime::storage::MemoryProvider>();
    std::shared_ptr<FaultInjectingProvider> memory_ = std::make_shared<FaultInjectingProvider>(box_);
    runtime::storage::ScopedStorageSystem system_{storageSystem()};
    std::u16string here_;
    /// Identifiers, in order.
    std::vector<std::string> warnings_;
    std::vector<EnvironmentEvent> events_;
};

}  // namespace korvex::filemanip::tests
