// What the removals of files and of folders have in common: how a failure is told, and the write bits.
#pragma once

#include <string>

#include "io/filesystem/filemanip/command_frame_trace.h"
#include "platform/message_record.h"
#include "platform/storage_vfs.h"

namespace korvex::filemanip {

/// Something could not be removed; its message is added to the list as far as the text of limited length
/// takes it in.
void recordFailure(const resource_core::BaseMsgID& message, std::u16string& failedList, bool& limitReached,
                   bool& somethingFailed);

/// The same for a failure of the storage, which is traced. Of an item on a local path most error codes are
/// dropped, and do not even count as a failure.
void reportItemError(const foundation::storage::vfs::Exception& failure, bool isIRI,
                     std::u16string& failedList, bool& limitReached, bool& somethingFailed);

/// What cannot be made writable may go all the same.
template <class Handle>
void makeWritable(const Handle& item) {
    try {
        item.setWritable(true);
    } catch (const foundation::storage::vfs::Exception&) {
        traceCurrentException();
    }
}

}  // namespace korvex::filemanip
