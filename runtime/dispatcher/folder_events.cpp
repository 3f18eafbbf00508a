// What commands tell the environment about folders.
#include "runtime/dispatcher/folder_events.h"

#include <utility>

namespace korvex::runtime::dispatcher {

namespace {

FolderEventReceiver& currentReceiver() {
    static FolderEventReceiver receiver;
    return receiver;
}

void send(const FolderEvent& event) {
    if (currentReceiver()) currentReceiver()(event);
}

}  // namespace

void markFolderOutOfDate(const std::u16string& folder) { send({FolderEvent::Kind::folderOutOfDate, folder}); }

void requestPathRefresh() { send({FolderEvent::Kind::pathRefresh, {}}); }

FolderEventReceiver setFolderEventReceiver(FolderEventReceiver receiver) {
    return std::exchange(currentReceiver(), std::move(receiver));
}

}  // namespace korvex::runtime::dispatcher
