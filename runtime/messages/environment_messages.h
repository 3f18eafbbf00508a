// The messages of the environment itself: those that the interpreter and its host raise, not the commands.
//
// As in message_identifiers.h the name of a class is the key of its catalog entry, and its namespaces spell
// the component. `EnvironmentVocabulary` lists all of them.
#pragma once

#include "platform/message_identifiers.h"

namespace KORVEX {
struct UndefinedFunction : resource_core::Message<"KORVEX:UndefinedFunction", 1> {
    using Message::Message;
};
struct maxlhs : resource_core::Message<"KORVEX:maxlhs", 0> {
    using Message::Message;
};
struct maxrhs : resource_core::Message<"KORVEX:maxrhs", 0> {
    using Message::Message;
};
struct minrhs : resource_core::Message<"KORVEX:minrhs", 0> {
    using Message::Message;
};
}  // namespace KORVEX

namespace KORVEX::host {
struct configurationNotRead : resource_core::Message<"KORVEX:host:configurationNotRead", 2> {
    using Message::Message;
};
struct configurationNotSetAside : resource_core::Message<"KORVEX:host:configurationNotSetAside", 2> {
    using Message::Message;
};
struct configurationNotWritten : resource_core::Message<"KORVEX:host:configurationNotWritten", 2> {
    using Message::Message;
};
struct damagedConfiguration : resource_core::Message<"KORVEX:host:damagedConfiguration", 2> {
    using Message::Message;
};
struct interrupted : resource_core::Message<"KORVEX:host:interrupted", 0> {
    using Message::Message;
};
struct noGraphics : resource_core::Message<"KORVEX:host:noGraphics", 0> {
    using Message::Message;
};
struct notOnSearchPath : resource_core::Message<"KORVEX:host:notOnSearchPath", 0> {
    using Message::Message;
};
struct searchPathNotRead : resource_core::Message<"KORVEX:host:searchPathNotRead", 1> {
    using Message::Message;
};
struct searchPathNotWritten : resource_core::Message<"KORVEX:host:searchPathNotWritten", 1> {
    using Message::Message;
};
struct shellStatus : resource_core::Message<"KORVEX:host:shellStatus", 1> {
    using Message::Message;
};
}  // namespace KORVEX::host

namespace KORVEX::FileManip {
struct OSError : resource_core::Message<"KORVEX:FileManip:OSError", 0> {
    using Message::Message;
};
struct OSErrorWithReason : resource_core::Message<"KORVEX:FileManip:OSErrorWithReason", 1> {
    using Message::Message;
};
}  // namespace KORVEX::FileManip

namespace KORVEX::FILEATTRIB {
struct CouldNotSetAttributes : resource_core::Message<"KORVEX:FILEATTRIB:CouldNotSetAttributes", 0> {
    using Message::Message;
};
}  // namespace KORVEX::FILEATTRIB

namespace KORVEX {

/// Every message class above.
using EnvironmentVocabulary =
    std::tuple<UndefinedFunction, maxlhs, maxrhs, minrhs, host::configurationNotRead,
               host::configurationNotSetAside, host::configurationNotWritten, host::damagedConfiguration,
               host::interrupted, host::noGraphics, host::notOnSearchPath, host::searchPathNotRead,
               host::searchPathNotWritten, host::shellStatus, FileManip::OSError,
               FileManip::OSErrorWithReason, FILEATTRIB::CouldNotSetAttributes>;

}  // namespace KORVEX
