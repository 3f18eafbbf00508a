// The registry as the environment's interfaces give it.
#pragma once

#include <memory>

#include "platform/packages.h"

namespace korvex::runtime::packages {

/// Each of its answers is about what is registered when it is asked.
std::shared_ptr<Velquist::KorvexComponents::IPackageRegistry> packageRegistry();

}  // namespace korvex::runtime::packages
