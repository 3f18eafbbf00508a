// The provider of the scheme "file": the file systems of this machine.
//
// Paths may be longer than the system's own limit, and names may be any bytes. A location with a host names
// nothing on a platform that has no network paths.
#pragma once

#include "runtime/storage/provider.h"

namespace korvex::runtime::storage {

class LocalProvider : public Provider {
public:
    ExistenceType existence(const AbsoluteIRI& location) override;
    ExistenceTypeExtended extendedExistence(const AbsoluteIRI& location) override;
    CanonicalAbsoluteIRI canonicalLocation(const AbsoluteIRI& location) override;
};

}  // namespace korvex::runtime::storage
