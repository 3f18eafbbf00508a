// A provider that fails on demand.
#include "runtime/storage/fault_injection/fault_injecting_provider.h"

#include <algorithm>
#include <iterator>
#include <ostream>
#include <type_traits>

#include "runtime/storage/fault_injection/folder_removal.h"
#include "runtime/storage/transfers.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::storage {

namespace vfs = foundation::storage::vfs;

namespace {

/// In the order of the enumeration.
constexpr std::string_view operationNames[] = {
    "existence",
    "extendedExistence",
    "canonicalLocation",
    "isWritable",
    "setWritable",
    "list",
    "read",
    "write",
    "copyFile",
    "moveFile",
    "copyFolder",
    "moveFolder",
    "removeFile",
    "removeFolder",
    "createFolder",
    "createFolderRecursive",
    "makeDurable",
    "streamRead",
    "streamWrite",
    "streamCommit",
};
static_assert(std::size(operationNames) == static_cast<std::size_t>(Operation::streamCommit) + 1);

}  // namespace

std::string_view nameOf(Operation operation) noexcept {
    return operationNames[static_cast<std::size_t>(operation)];
}

bool Call::operator==(const Call& other) const {
    return operation == other.operation && location == other.location && destination == other.destination;
}

std::ostream& operator<<(std::ostream& stream, const Call& call) {
    stream << nameOf(call.operation) << ' ' << text::toDisplayBytes(call.location.toString());
    if (call.destination) stream << " to " << text::toDisplayBytes(call.destination->toString());
    return stream;
}

FaultInjectingProvider::FaultInjectingProvider(std::shared_ptr<Provider> wrapped)
    : wrapped_(std::move(wrapped)) {}
FaultInjectingProvider::~FaultInjectingProvider() = default;

void FaultInjectingProvider::failCall(Operation operation, std::size_t number, Fault fault) {
    const std::lock_guard lock(guard_);
    orders_.push_back({operation, number, std::nullopt, std::move(fault)});
}

void FaultInjectingProvider::failAt(const AbsoluteIRI& location, Fault fault) {
    const std::lock_guard lock(guard_);
    orders_.push_back({std::nullopt, 0, location, std::move(fault)});
}

void FaultInjectingProvider::failAt(Operation operation, const AbsoluteIRI& location, Fault fault) {
    const std::lock_guard lock(guard_);
    orders_.push_back({operation, 0, location, std::move(fault)});
}

void FaultInjectingProvider::forgetFaults() {
    const std::lock_guard lock(guard_);
    orders_.clear();
}

std::size_t FaultInjectingProvider::faultsRaised() const {
    const std::lock_guard lock(guard_);
    return faultsRaised_;
}

void FaultInjectingProvider::takeFoldersApart(bool isTakenApart) { takesFoldersApart_ = isTakenApart; }

std::vector<Call> FaultInjectingProvider::calls() const {
    const std::lock_guard lock(guard_);
    return calls_;
}

std::vector<Call> FaultInjectingProvider::callsOf(Operation operation) const {
    const std::lock_guard lock(guard_);
    std::vector<Call> found;
    std::copy_if(calls_.begin(), calls_.end(), std::back_inserter(found),
                 [=](const Call& call) { return call.operation == operation; });
    return found;
}

void FaultInjectingProvider::forgetCalls() {
    const std::lock_guard lock(guard_);
    calls_.clear();
}

std::optional<Fault> FaultInjectingProvider::meet(const Call& call) {
    const std::lock_guard lock(guard_);
    calls_.push_back(call);
    std::optional<Fault> met;
    // All of them, so that every number is counted down.
    for (Order& order : orders_) {
        if (!isMetBy(order, call) || met) continue;
        met = order.fault;
        if (!met->location) met->location = order.location.value_or(call.location);
    }
    if (met) ++faultsRaised_;
    return met;
}

bool FaultInjectingProvider::isMetBy(Order& order, const Call& call) {
    if (order.operation && *order.operation != call.operation) return false;
    if (order.location) return *order.location == call.location || order.location == call.destination;
    return order.callsToGo > 0 && --order.callsToGo == 0;
}

void FaultInjectingProvider::raise(const Fault& fault) {
    throw vfs::Exception(fault.code, fault.location.value(), fault.context, fault.systemText);
}

template <class Work>
auto FaultInjectingProvider::attempt(const Call& call, const Work& work) {
    const std::optional<Fault> fault = meet(call);
    if (fault && fault->moment == Fault::Moment::before) raise(*fault);
    if constexpr (std::is_void_v<decltype(work())>) {
        work();
        if (fault) raise(*fault);
    } else {
        auto result = work();
        if (fault) raise(*fault);
        return result;
    }
}

class FaultInjectingProvider::Input : public InputStream {
public:
    Input(FaultInjectingProvider& provider, AbsoluteIRI file, std::unique_ptr<InputStream> wrapped)
        : provider_(provider), file_(std::move(file)), wrapped_(std::move(wrapped)) {}

    std::size_t read(std::span<std::byte> buffer) override {
        return provider_.attempt({Operation::streamRead, file_}, [&] { return wrapped_->read(buffer); });
    }
    FileAttributes attributes() const override { return wrapped_->attributes(); }

private:
    FaultInjectingProvider& provider_;
    const AbsoluteIRI file_;
    const std::unique_ptr<InputStream> wrapped_;
};

class FaultInjectingProvider::Output : public OutputStream {
public:
    Output(FaultInjectingProvider& provider, AbsoluteIRI file, std::unique_ptr<OutputStream> wrapped)
        : provider_(provider), file_(std::move(file)), wrapped_(std::move(wrapped)) {}

    void write(std::span<const std::byte> bytes) override {
        provider_.attempt({Operation::streamWrite, file_}, [&] { wrapped_->write(bytes); });
    }
    void setAttributes(const FileAttributes& attributes) override { wrapped_->setAttributes(attributes); }
    void commit() override {
        provider_.attempt({Operation::streamCommit, file_}, [&] { wrapped_->commit(); });
    }

private:
    FaultInjectingProvider& provider_;
    const AbsoluteIRI file_;
    const std::unique_ptr<OutputStream> wrapped_;
};

bool FaultInjectingProvider::onlyReads() const noexcept { return wrapped_->onlyReads(); }

ExistenceType FaultInjectingProvider::existence(const AbsoluteIRI& location) {
    return attempt({Operation::existence, location}, [&] { return wrapped_->existence(location); });
}

ExistenceTypeExtended FaultInjectingProvider::extendedExistence(const AbsoluteIRI& location) {
    return attempt({Operation::extendedExistence, location},
                   [&] { return wrapped_->extendedExistence(location); });
}

CanonicalAbsoluteIRI FaultInjectingProvider::canonicalLocation(const AbsoluteIRI& location) {
    return attempt({Operation::canonicalLocation, location},
                   [&] { return wrapped_->canonicalLocation(location); });
}

bool FaultInjectingProvider::isWritable(const AbsoluteIRI& location) {
    return attempt({Operation::isWritable, location}, [&] { return wrapped_->isWritable(location); });
}

void FaultInjectingProvider::setWritable(const AbsoluteIRI& location, bool isWritable) {
    attempt({Operation::setWritable, location}, [&] { wrapped_->setWritable(location, isWritable); });
}

std::vector<ListedEntry> FaultInjectingProvider::list(const AbsoluteIRI& folder,
                                                      std::u16string_view pattern) {
    return attempt({Operation::list, folder}, [&] { return wrapped_->list(folder, pattern); });
}

std::unique_ptr<InputStream> FaultInjectingProvider::read(const AbsoluteIRI& file) {
    return attempt({Operation::read, file},
                   [&] { return std::make_unique<Input>(*this, file, wrapped_->read(file)); });
}

std::unique_ptr<OutputStream> FaultInjectingProvider::write(const AbsoluteIRI& file,
                                                            ReplacementPolicy policy) {
    return attempt({Operation::write, file},
                   [&] { return std::make_unique<Output>(*this, file, wrapped_->write(file, policy)); });
}

void FaultInjectingProvider::copyFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                                      ReplacementPolicy policy) {
    attempt({Operation::copyFile, source, destination},
            [&] { wrapped_->copyFile(source, destination, policy); });
}

void FaultInjectingProvider::moveFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                                      ReplacementPolicy policy) {
    attempt({Operation::moveFile, source, destination},
            [&] { wrapped_->moveFile(source, destination, policy); });
}

void FaultInjectingProvider::copyFolder(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                                        ReplacementPolicy policy) {
    attempt({Operation::copyFolder, source, destination}, [&] {
        if (!takesFoldersApart_) return wrapped_->copyFolder(source, destination, policy);
        copyFolderBetween({*this, source}, {*this, destination}, policy);
    });
}

void FaultInjectingProvider::moveFolder(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                                        ReplacementPolicy policy) {
    attempt({Operation::moveFolder, source, destination}, [&] {
        if (!takesFoldersApart_) return wrapped_->moveFolder(source, destination, policy);
        moveFolderBetween({*this, source}, {*this, destination}, policy);
    });
}

void FaultInjectingProvider::removeFile(const AbsoluteIRI& file) {
    attempt({Operation::removeFile, file}, [&] { wrapped_->removeFile(file); });
}

void FaultInjectingProvider::removeFolder(const AbsoluteIRI& folder, FolderRemovalPolicy policy) {
    attempt({Operation::removeFolder, folder}, [&] {
        const bool isByItems = takesFoldersApart_ && policy == vfs::RemoveWithContents;
        if (!isByItems) return wrapped_->removeFolder(folder, policy);
        removeFolderByItems(*this, folder);
    });
}

void FaultInjectingProvider::createFolder(const AbsoluteIRI& folder) {
    attempt({Operation::createFolder, folder}, [&] { wrapped_->createFolder(folder); });
}

void FaultInjectingProvider::createFolderRecursive(const AbsoluteIRI& folder) {
    attempt({Operation::createFolderRecursive, folder}, [&] { wrapped_->createFolderRecursive(folder); });
}

void FaultInjectingProvider::makeDurable(const AbsoluteIRI& location) {
    attempt({Operation::makeDurable, location}, [&] { wrapped_->makeDurable(location); });
}

}  // namespace korvex::runtime::storage
