// What the tests of `copyfile` and `movefile` share: the two commands, the failures that they tell, storage
// in memory that is watched, and what the environment was told meanwhile.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/message_record.h"
#include "platform/path_management.h"
#include "platform/storage_vfs.h"
#include "runtime/dispatcher/environment_events.h"
#include "runtime/interpreter/warnings.h"
#include "runtime/storage/fault_injection/fault_injecting_provider.h"
#include "runtime/storage/providers/memory/memory_provider.h"
#include "runtime/storage/storage_system.h"
#include "tests/unit/filemanip/entry_call.h"

namespace korvex::filemanip::tests {

namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
namespace storage = korvex::runtime::storage;

using Texts = std::vector<std::u16string>;

struct Command {
    const char* name;
    Entry entry;
    /// As it stands in identifiers.
    std::string word;
    /// The option that takes a link behaviour.
    std::u16string linkOption;
    bool isCopy;
};

void PrintTo(const Command& command, std::ostream* stream);

extern const Command copyCommand;
extern const Command moveCommand;

/// A failure as the user is told it. Arguments in UTF-8, so that a failing test prints them readably.
struct Failure {
    std::string identifier;
    /// The entry of the catalog that gives the text; not always the identifier's.
    std::string entry;
    std::vector<std::string> arguments;

    bool operator==(const Failure&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Failure& failure);

Failure failure(std::string identifier, std::string entry, const Texts& arguments = {});
/// One whose identifier is that of its entry.
Failure plainFailure(const std::string& identifier, const Texts& arguments = {});
/// What a call that succeeds gives.
Failure noFailure();

/// How a call went, with no output asked for.
Failure failureOfArrays(const Command& command, const std::vector<const kxArray*>& arguments);
/// The same with character vectors as arguments.
Failure failureOf(const Command& command, const Texts& arguments);

/// A warning's text as the catalog has it.
std::string textOf(const resource_core::BaseMsgID& message);

/// Everything below a folder by its path from there; folders end in "/". A file shows its content, behind
/// "[read-only] " when it is protected; so does a folder.
using Tree = std::map<std::string, std::string>;

inline constexpr const char* readOnlyMark = "[read-only] ";

/// Remembers under which policy each transfer was asked for.
class PolicyRecordingMemory : public storage::MemoryProvider {
public:
    using AbsoluteIRI = storage::AbsoluteIRI;
    using ReplacementPolicy = storage::ReplacementPolicy;

    void copyFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                  ReplacementPolicy policy) override;
    void moveFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                  ReplacementPolicy policy) override;
    void copyFolder(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                    ReplacementPolicy policy) override;
    void moveFolder(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                    ReplacementPolicy policy) override;

    std::vector<ReplacementPolicy> policies;
};

/// Collects what the environment is told and which warnings are shown.
class EnvironmentObserver {
public:
    using Event = runtime::dispatcher::EnvironmentEvent;

    EnvironmentObserver();
    ~EnvironmentObserver();
    EnvironmentObserver(const EnvironmentObserver&) = delete;
    EnvironmentObserver& operator=(const EnvironmentObserver&) = delete;

    /// The events since the last look, as "folderOutOfDate /d" and the like.
    std::vector<std::string> takeEvents();
    /// The warnings since the last look, as "IDENTIFIER TEXT".
    std::vector<std::string> takeWarnings();

private:
    std::vector<Event> events_;
    std::vector<std::string> warnings_;
    runtime::dispatcher::EventWatcher earlierWatcher_;
    runtime::interpreter::WarningReceiver earlierReceiver_;
};

/// "IDENTIFIER TEXT" of a warning that shows this message.
std::string warning(const resource_core::BaseMsgID& message);

/// Local paths, "memory://..." and "http://..." kept in memory, every call of the storage remembered. The
/// current folder is "/here", and "/" afterwards.
class WatchedStorage {
public:
    WatchedStorage();
    ~WatchedStorage();
    WatchedStorage(const WatchedStorage&) = delete;
    WatchedStorage& operator=(const WatchedStorage&) = delete;

    vfs::AbsoluteIRI at(const std::u16string& text) const;
    /// Makes a file with that content, or, behind a "/" at the end, a folder.
    void put(const std::u16string& text, std::string_view content = {});
    void protect(const std::u16string& text);
    /// What is at and below a folder, by the path from there.
    Tree treeOf(const std::u16string& folder) const;
    provider::ExistenceType existence(const std::u16string& text) const;

    /// Calls of operations that change something.
    std::vector<storage::Call> changes() const;

    /// Below the watched one: asked without leaving a trace.
    std::shared_ptr<PolicyRecordingMemory> memory = std::make_shared<PolicyRecordingMemory>();
    std::shared_ptr<storage::FaultInjectingProvider> provider =
        std::make_shared<storage::FaultInjectingProvider>(memory);

private:
    void collect(Tree& tree, const vfs::AbsoluteIRI& folder, const std::string& path) const;

    storage::ScopedStorageSystem scope_;
};

/// A test of one command with one kind of paths: native ones, or locations with a scheme.
struct Setting {
    Command command;
    /// In front of each path: nothing, or a scheme and host.
    std::u16string prefix;

    bool hasScheme() const { return !prefix.empty(); }
};

void PrintTo(const Setting& setting, std::ostream* stream);
std::string nameOfSetting(const testing::TestParamInfo<Setting>& info);
std::string nameOfCommand(const testing::TestParamInfo<Command>& info);
std::vector<Setting> allSettings();
std::vector<Setting> copySettings();
std::vector<Setting> moveSettings();

/// Runs a command over watched storage.
class WatchedStorageTest : public testing::Test {
protected:
    using Texts = std::vector<std::u16string>;

    WatchedStorage storage_;
    EnvironmentObserver environment_;
};

class TransferTest : public WatchedStorageTest, public testing::WithParamInterface<Setting> {
protected:
    const Command& command() const { return GetParam().command; }
    std::u16string path(const std::u16string& path) const { return GetParam().prefix + path; }
    void put(const std::u16string& at, std::string_view content = {}) { storage_.put(path(at), content); }
    /// Of everything but the current folder.
    Tree tree() const;
    /// Paths stand behind the prefix; what follows the first two are options.
    Failure run(const std::u16string& source, const std::u16string& destination, const Texts& options = {});

    /// "KORVEX:<prefix>:<key>", the prefix by the kind of the paths.
    std::string identifier(const std::string& key) const;
    /// The same with the command's word, whatever the paths are.
    std::string commandIdentifier(const std::string& key) const;
    /// A storage failure that no other message fits.
    Failure generalFailure(const std::string& key, const std::u16string& at) const;
};

}  // namespace korvex::filemanip::tests
