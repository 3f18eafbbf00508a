// `delete` and `recycle` as the interpreter calls them: in a scratch folder and a box in memory, over storage
// that fails on demand, with everything kept that the user and the environment are told.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/message_identifiers.h"
#include "platform/path_management.h"
#include "runtime/configuration/configuration_folder.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/dispatcher/environment_events.h"
#include "runtime/dispatcher/folder_views.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/fault_injection/fault_injecting_provider.h"
#include "runtime/storage/providers/local/local_provider.h"
#include "runtime/storage/providers/memory/memory_provider.h"
#include "runtime/storage/storage_system.h"
#include "runtime/text/encoding.h"
#include "tests/support/scratch_folder.h"
#include "tests/unit/filemanip/copy_move/copy_move_fixture.h"
#include "tests/unit/filemanip/entry_call.h"

namespace korvex::filemanip::tests {

namespace fs = std::filesystem;
using runtime::storage::Fault;
using runtime::storage::FaultInjectingProvider;
using runtime::storage::Operation;
using Names = std::set<std::string>;
using Warnings = std::vector<std::string>;

/// A user who has seen enough when the first file is gone.
class InterruptingWatcher {
public:
    InterruptingWatcher()
        : earlier_(runtime::dispatcher::watchEvents([](const runtime::dispatcher::EnvironmentEvent&) {
              runtime::interpreter::raiseInterrupt();
          })) {}
    ~InterruptingWatcher() {
        runtime::dispatcher::watchEvents(std::move(earlier_));
        runtime::interpreter::takeInterrupt();
    }
    InterruptingWatcher(const InterruptingWatcher&) = delete;
    InterruptingWatcher& operator=(const InterruptingWatcher&) = delete;

private:
    runtime::dispatcher::EventWatcher earlier_;
};

class DeleteTest : public testing::Test {
protected:
    DeleteTest() {
        runtime::dispatcher::setCurrentFolderPath(scratch_.text());
        here_ = runtime::dispatcher::currentFolderPath();
        local_->forgetCalls();
    }
    ~DeleteTest() override {
        local_->forgetFaults();
        runtime::dispatcher::forgetFolderViews();
        runtime::configuration::setConfigurationFolder(u"");
        runtime::dispatcher::setCurrentFolderPath(u"/");
    }

    /// Calls `delete` with these arguments; without an error of the user's kind the identifier is empty.
    static Outcome outcomeOf(const std::vector<Array>& arguments, int nlhs = 0) {
        std::vector<const kxArray*> borrowed;
        for (const Array& argument : arguments)
            borrowed.push_back(argument.get());
        return call(bnFullDeleteFcn, nlhs, borrowed);
    }
    template <class... Arrays>
    static Outcome outcomeOfArrays(Arrays... arrays) {
        std::vector<Array> arguments;
        (arguments.push_back(std::move(arrays)), ...);
        return outcomeOf(arguments);
    }
    /// Deletes names and gives the warnings.
    Warnings deleteNames(const Texts& names) {
        std::vector<Array> arguments;
        for (const std::u16string& name : names)
            arguments.push_back(text(name));
        EXPECT_EQ(outcomeOf(arguments).errorIdentifier, "");
        return environment_.takeWarnings();
    }
    /// `delete(name, 'resolvesymboliclinks', true)`.
    Warnings deleteResolving(const std::u16string& name) {
        EXPECT_EQ(outcomeOfArrays(text(name), text(u"resolvesymboliclinks"), logical(true)).errorIdentifier,
                  "");
        return environment_.takeWarnings();
    }
    static Array logical(bool value) { return Array(kxCreateLogicalScalar(value)); }

    /// What `recycle(state)` gives.
    static std::string recycle(const std::u16string& state) {
        const Array argument = text(state);
        return stateOf(call(bnFullRecycleFcn, 1, {argument.get()}));
    }
    static std::string recycle() { return stateOf(call(bnFullRecycleFcn, 1, {})); }
    static std::string stateOf(const Outcome& outcome) {
        if (outcome.outputs[0] == nullptr) return outcome.errorIdentifier;
        const auto units = kxGetChars(static_cast<const kxArray*>(outcome.outputs[0].get()));
        return runtime::text::toDisplayBytes({units.data(), units.size()});
    }

    /// The native path of a name below the scratch folder, and its location.
    std::u16string pathOf(const std::u16string& name) const { return here_ + u"/" + name; }
    vfs::AbsoluteIRI locationOf(const std::u16string& name) const {
        return Velquist::PathManagement::GetIRIFromString(pathOf(name));
    }
    fs::path diskPath(const std::string& name) const { return scratch_.path() / name; }

    /// Files, and folders behind "/" at their end.
    void make(const std::vector<std::string>& entries) const {
        for (const std::string& entry : entries)
            entry.ends_with('/') ? scratch_.makeFolder(entry) : scratch_.writeFile(entry, "content");
    }
    void makeLink(const std::string& target, const std::string& name) const {
        fs::create_symlink(target, diskPath(name));
    }
    void makeInBox(const Texts& files) const {
        for (const std::u16string& file : files)
            box_->putFile(boxLocation(file), "content");
    }
    static vfs::AbsoluteIRI boxLocation(const std::u16string& name) {
        return vfs::AbsoluteIRI(u"memory://box/" + name);
    }

    /// What stands right in the scratch folder; links count as what they are.
    Names left() const {
        Names names;
        for (const fs::directory_entry& entry : fs::directory_iterator(scratch_.path()))
            names.insert(entry.path().filename().string());
        return names;
    }
    Names leftInBox() const {
        Names names;
        for (const auto& entry : box_->list(boxLocation(u""), u""))
            names.insert(runtime::text::toDisplayBytes(entry.name));
        return names;
    }

    korvex::tests::ScratchFolder scratch_;
    std::shared_ptr<FaultInjectingProvider> local_ =
        std::make_shared<FaultInjectingProvider>(std::make_shared<runtime::storage::LocalProvider>());
    std::shared_ptr<storage::MemoryProvider> box_ = std::make_shared<storage::MemoryProvider>();
    std::shared_ptr<FaultInjectingProvider> memory_ = std::make_shared<FaultInjectingProvider>(box_);
    std::u16string here_;
    EnvironmentObserver environment_;

private:
    std::shared_ptr<const vfs::StorageSystem> storageSystem() const {
        auto system = std::make_shared<vfs::StorageSystem>();
        system->add(u"file", local_);
        system->add(u"memory", memory_);
        return system;
    }

    storage::ScopedStorageSystem system_{storageSystem()};
};

}  // namespace korvex::filemanip::tests
