// The search path and the event manager as the module reaches them.
#pragma once

#include "platform/path_management.h"

namespace korvex::runtime::dispatcher {

class MainSearchPathManager : public Velquist::PathManagement::IMainSearchPathManager {
public:
    void refresh(bool isForced) override;
    void removeEntries(
        Velquist::PathManagement::LocationRange<foundation::storage::vfs::CanonicalAbsoluteIRI> entries,
        foundation::core::except::Notification& notification) override;
    std::vector<foundation::storage::vfs::CanonicalAbsoluteIRI> getPathEntries() const override;
    void restorePathEntries(const std::vector<foundation::storage::vfs::CanonicalAbsoluteIRI>& entries,
                            foundation::core::except::Notification& notification) override;
};

class PerKVMEventManager : public Velquist::PathManagement::IPerKVMEventManager {
public:
    void notifySpecialSubfolderChange(const foundation::storage::vfs::AbsoluteIRI& location) override;
};

}  // namespace korvex::runtime::dispatcher
