// An engine whose inside the tests may reach.
#pragma once

#include <string>

#include "platform/filesystem_core.h"
#include "platform/user_exceptions.h"

namespace korvex::io::filesystem::core::tests {

/// An engine of the command "COPYFILE". Its vocabulary changes with `isIRI`, as that of the real one.
class EngineUnderTest : public FileManipulator {
public:
    using FileManipulator::CheckStringForPathMax;
    using FileManipulator::FilenameContainsNull;
    using FileManipulator::GetStatus;
    using FileManipulator::MarkDirOutOfDate;
    using FileManipulator::ParseOptArgs;
    using FileManipulator::RequestPathRefresh;
    using FileManipulator::SetErrorExceptionContext;
    using FileManipulator::SetErrorStatus;
    using FileManipulator::setStatusException;
    using FileManipulator::SetVFSErrorStatus;
    using FileManipulator::status_;

    void reportByKey(const char* key) override { SetErrorStatus("COPYFILE", key); }
    std::string GetErrorMsgIdPrefix() override {
        return isIRI ? "virtualfilesystem" : FileManipulator::GetErrorMsgIdPrefix();
    }
    Status Process(std::vector<std::u16string> paths, std::vector<std::u16string>) override {
        return Process(std::move(paths));
    }
    Status Process(std::vector<std::u16string>) override { return status_; }

    std::string identifier() const { return detail::GetID(status_.exception); }
    std::u16string text() const { return detail::GetUnicodeMessageTxt(status_.exception); }
    /// The catalog entry that the stored text is from; empty when nothing is stored.
    std::string entry() const {
        if (!status_.exception) return {};
        try {
            boost::rethrow_exception(status_.exception);
        } catch (const foundation::core::except::IMsgIDException& stored) {
            return stored.message().identifier();
        }
    }

    bool isIRI = false;
};

}  // namespace korvex::io::filesystem::core::tests
