// A storage provider: what serves the locations of one scheme.
//
// A further provider is one class and one line in provider_registry.cpp. Every provider passes the contract
// tests in tests/contract, the parts left out that it declares it does not have. Providers may be called from
// several threads at once.
#pragma once

#include "platform/storage_vfs.h"

namespace korvex::runtime::storage {

using foundation::storage::provider::ExistenceType;
using foundation::storage::provider::ExistenceTypeExtended;
using foundation::storage::vfs::AbsoluteIRI;
using foundation::storage::vfs::CanonicalAbsoluteIRI;

class Provider {
public:
    virtual ~Provider() = default;

    /// What is there, links followed: a folder, nothing, or else a file. A name that the storage cannot hold,
    /// or a component on the way that is a file, is nothing there. Raises `vfs::Exception` when the storage
    /// cannot answer: `permissionDenied`, `ioError`, ...
    virtual ExistenceType existence(const AbsoluteIRI& location) = 0;

    /// The same, links told apart.
    virtual ExistenceTypeExtended extendedExistence(const AbsoluteIRI& location) = 0;

    /// The location with its links resolved and its dots gone. Raises `vfs::Exception`: `resourceNotFound`
    /// when nothing is there.
    virtual CanonicalAbsoluteIRI canonicalLocation(const AbsoluteIRI& location) = 0;
};

}  // namespace korvex::runtime::storage
