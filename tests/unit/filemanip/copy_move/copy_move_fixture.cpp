// Storage in memory for the tests of `copyfile` and `movefile`, and what they read from it.
#include "tests/unit/filemanip/copy_move/copy_move_fixture.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <ostream>
#include <utility>

#include "platform/message_catalog.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/text/encoding.h"

namespace korvex::filemanip::tests {

namespace {

using runtime::text::toDisplayBytes;

const std::u16string currentFolder = u"/here";

std::vector<std::string> displayed(const Texts& texts) {
    std::vector<std::string> narrow;
    for (const std::u16string& text : texts)
        narrow.push_back(toDisplayBytes(text));
    return narrow;
}

std::shared_ptr<const vfs::StorageSystem> systemOf(
    const std::shared_ptr<storage::FaultInjectingProvider>& provider) {
    auto system = std::make_shared<vfs::StorageSystem>();
    for (const char16_t* scheme : {u"file", u"memory", u"http", u"https"})
        system->add(scheme, provider);
    return system;
}

std::string nameOf(runtime::dispatcher::EnvironmentEvent::Kind kind) {
    using Kind = runtime::dispatcher::EnvironmentEvent::Kind;
    switch (kind) {
        case Kind::folderOutOfDate: return "folderOutOfDate";
        case Kind::pathRefreshRequested: return "pathRefreshRequested";
        case Kind::functionsCleared: return "functionsCleared";
        case Kind::pathEntriesRemoved: return "pathEntriesRemoved";
        case Kind::pathEntriesRestored: return "pathEntriesRestored";
        case Kind::searchPathRefreshed: return "searchPathRefreshed";
        case Kind::upstreamEntriesNotified: return "upstreamEntriesNotified";
        case Kind::functionCalled: return "functionCalled";
    }
    return "another event";
}

bool isChange(const storage::Call& call) {
    using storage::Operation;
    switch (call.operation) {
        case Operation::existence:
        case Operation::extendedExistence:
        case Operation::canonicalLocation:
        case Operation::isWritable:
        case Operation::list:
        case Operation::read:
        case Operation::streamRead: return false;
        default: return true;
    }
}

}  // namespace

const Command copyCommand{"copyfile", copyFile, "COPYFILE", u"copylinkbehavior", true};
const Command moveCommand{"movefile", moveFile, "MOVEFILE", u"movelinkbehavior", false};

void PrintTo(const Command& command, std::ostream* stream) { *stream << command.name; }

std::ostream& operator<<(std::ostream& stream, const Failure& failure) {
    if (failure == noFailure()) return stream << "success";
    stream << failure.identifier << " with the text of " << failure.entry << " (";
    const char* separator = "";
    for (const std::string& argument : failure.arguments)
        stream << std::exchange(separator, ", ") << argument;
    return stream << ')';
}

Failure failure(std::string identifier, std::string entry, const Texts& arguments) {
    return {std::move(identifier), std::move(entry), displayed(arguments)};
}

Failure plainFailure(const std::string& identifier, const Texts& arguments) {
    return failure(identifier, identifier, arguments);
}

Failure noFailure() { return {}; }

Failure failureOfArrays(const Command& command, const std::vector<const kxArray*>& arguments) {
    const Outcome outcome = call(command.entry, 0, arguments);
    return failure(outcome.errorIdentifier, outcome.catalogEntry, outcome.errorArguments);
}

Failure failureOf(const Command& command, const Texts& arguments) {
    std::vector<Array> arrays;
    std::vector<const kxArray*> borrowed;
    for (const std::u16string& argument : arguments) {
        arrays.push_back(text(argument));
        borrowed.push_back(arrays.back().get());
    }
    return failureOfArrays(command, borrowed);
}

std::string textOf(const resource_core::BaseMsgID& message) {
    return toDisplayBytes(fl::i18n::MessageCatalog::get_message(message, fl::i18n::KwLocale::global()));
}

void PolicyRecordingMemory::copyFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                                     ReplacementPolicy policy) {
    policies.push_back(policy);
    MemoryProvider::copyFile(source, destination, policy);
}

void PolicyRecordingMemory::moveFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                                     ReplacementPolicy policy) {
    policies.push_back(policy);
    MemoryProvider::moveFile(source, destination, policy);
}

void PolicyRecordingMemory::copyFolder(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                                       ReplacementPolicy policy) {
    policies.push_back(policy);
    MemoryProvider::copyFolder(source, destination, policy);
}

void PolicyRecordingMemory::moveFolder(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                                       ReplacementPolicy policy) {
    policies.push_back(policy);
    MemoryProvider::moveFolder(source, destination, policy);
}

EnvironmentObserver::EnvironmentObserver()
    : earlierWatcher_(
          runtime::dispatcher::watchEvents([this](const Event& event) { events_.push_back(event); })),
      earlierReceiver_(
          runtime::interpreter::setWarningReceiver([this](const runtime::interpreter::Warning& shown) {
              warnings_.push_back(shown.identifier + ' ' + toDisplayBytes(shown.text));
          })) {}

EnvironmentObserver::~EnvironmentObserver() {
    runtime::dispatcher::watchEvents(std::move(earlierWatcher_));
    runtime::interpreter::setWarningReceiver(std::move(earlierReceiver_));
}

std::vector<std::string> EnvironmentObserver::takeEvents() {
    std::vector<std::string> told;
    for (const Event& event : std::exchange(events_, {})) {
        std::string line = nameOf(event.kind);
        for (const std::u16string& text : event.texts)
            line += ' ' + toDisplayBytes(text);
        told.push_back(std::move(line));
    }
    return told;
}

std::vector<std::string> EnvironmentObserver::takeWarnings() { return std::exchange(warnings_, {}); }

std::string warning(const resource_core::BaseMsgID& message) {
    return message.identifier() + ' ' + textOf(message);
}

WatchedStorage::WatchedStorage() : scope_(systemOf(provider)) {
    memory->putFolder(at(currentFolder));
    runtime::dispatcher::setCurrentFolderPath(currentFolder);
    provider->forgetCalls();
}

WatchedStorage::~WatchedStorage() { runtime::dispatcher::setCurrentFolderPath(u"/"); }

vfs::AbsoluteIRI WatchedStorage::at(const std::u16string& text) const {
    return Velquist::PathManagement::GetIRIFromString(text);
}

void WatchedStorage::put(const std::u16string& text, std::string_view content) {
    if (text.ends_with(u'/')) {
        memory->putFolder(at(text));
    } else {
        memory->putFile(at(text), std::string(content));
    }
}

void WatchedStorage::protect(const std::u16string& text) { memory->setWritable(at(text), false); }

Tree WatchedStorage::treeOf(const std::u16string& folder) const {
    Tree tree;
    collect(tree, at(folder), "");
    return tree;
}

void WatchedStorage::collect(Tree& tree, const vfs::AbsoluteIRI& folder, const std::string& path) const {
    for (const storage::ListedEntry& entry : memory->list(folder, {})) {
        const vfs::AbsoluteIRI location(folder, entry.name);
        std::string content = memory->isWritable(location) ? "" : readOnlyMark;
        std::string name = path + toDisplayBytes(entry.name);
        if (entry.isFolder) {
            name += '/';
            collect(tree, location, name);
        } else {
            std::array<std::byte, 256> bytes{};
            const std::size_t count = memory->read(location)->read(bytes);
            content.append(reinterpret_cast<const char*>(bytes.data()), count);
        }
        tree.emplace(std::move(name), std::move(content));
    }
}

provider::ExistenceType WatchedStorage::existence(const std::u16string& text) const {
    return memory->existence(at(text));
}

std::vector<storage::Call> WatchedStorage::changes() const {
    std::vector<storage::Call> found = provider->calls();
    std::erase_if(found, [](const storage::Call& call) { return !isChange(call); });
    return found;
}

void PrintTo(const Setting& setting, std::ostream* stream) {
    *stream << setting.command.name << (setting.hasScheme() ? " with locations" : " with paths");
}

std::string nameOfSetting(const testing::TestParamInfo<Setting>& info) {
    return std::string(info.param.command.name) + (info.param.hasScheme() ? "_locations" : "_paths");
}

std::string nameOfCommand(const testing::TestParamInfo<Command>& info) { return info.param.name; }

std::vector<Setting> copySettings() { return {{copyCommand, u""}, {copyCommand, u"memory://box"}}; }
std::vector<Setting> moveSettings() { return {{moveCommand, u""}, {moveCommand, u"memory://box"}}; }

std::vector<Setting> allSettings() {
    std::vector<Setting> settings = copySettings();
    for (Setting& setting : moveSettings())
        settings.push_back(std::move(setting));
    return settings;
}

Tree TransferTest::tree() const {
    Tree tree = storage_.treeOf(path(u"/"));
    tree.erase("here/");
    return tree;
}

Failure TransferTest::run(const std::u16string& source, const std::u16string& destination,
                          const Texts& options) {
    Texts arguments{path(source), path(destination)};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return failureOf(command(), arguments);
}

std::string TransferTest::identifier(const std::string& key) const {
    return "KORVEX:" + (GetParam().hasScheme() ? "virtualfilesystem" : command().word) + ':' + key;
}

std::string TransferTest::commandIdentifier(const std::string& key) const {
    return "KORVEX:" + command().word + ':' + key;
}

Failure TransferTest::generalFailure(const std::string& key, const std::u16string& at) const {
    if (GetParam().hasScheme()) return plainFailure("KORVEX:virtualfilesystem:" + key, {path(at)});
    return failure(commandIdentifier("OSError"), "KORVEX:FileManip:OSError");
}

}  // namespace korvex::filemanip::tests
