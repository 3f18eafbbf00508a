// The dispatcher: the running environment as the commands see it.
#pragma once

#include <memory>
#include <string>
#include <unordered_set>

#include "platform/message_identifiers.h"
#include "platform/path_management.h"
#include "platform/storage_vfs.h"
#include "platform/user_exceptions.h"

namespace Velquist::current_working_folder {

/// A text has no absolute form: it is empty or no location, or the current folder is needed and gone.
class FailedToAbsolutizeException
    : public foundation::core::except::Exception<KORVEX::virtualfilesystem::invalidLocation> {
public:
    explicit FailedToAbsolutizeException(const std::u16string& text)
        : Exception(KORVEX::virtualfilesystem::invalidLocation(text)) {}
    std::unique_ptr<foundation::core::except::IException> copyToHeap() const override {
        return std::make_unique<FailedToAbsolutizeException>(*this);
    }
    [[noreturn]] void throwCopy() const override { throw FailedToAbsolutizeException(*this); }
};

/// The current folder of the environment. It is not the process's working folder.
class ICurrentWorkingFolder {
public:
    virtual ~ICurrentWorkingFolder() = default;
    /// The folder, by value. Raises `fl::filesystem::PathNotFound` when it does not exist any more.
    virtual foundation::storage::vfs::Folder get() const = 0;
    /// The location of a path, taken against the current folder when it is relative, or of a text with a
    /// scheme. Dots and links stay. Raises `FailedToAbsolutizeException`.
    virtual foundation::storage::vfs::AbsoluteIRI absolutize(const std::u16string& text) const = 0;
};

}  // namespace Velquist::current_working_folder

namespace dispatcher {

/// Texts that are kept once: texts that are equal have one key, as long as the hash lives.
class ustring_namehash {
public:
    /// Null stands for no text.
    using Key = const std::u16string*;

    Key insert(const std::u16string& text) { return &*texts_.insert(text).first; }

private:
    std::unordered_set<std::u16string> texts_;  // its elements stay where they are
};

}  // namespace dispatcher

/// Its operations and fields belong to the interpreter's thread.
class Kdispatcher {
public:
    static Kdispatcher& getDispatcher();

    virtual ~Kdispatcher() = default;
    virtual Velquist::current_working_folder::ICurrentWorkingFolder& GetCurrentWorkingFolder() = 0;
    virtual Velquist::PathManagement::IMainSearchPathManager& GetMainSearchPathManager() = 0;
    /// The search path as it is asked for folders; never null.
    virtual std::shared_ptr<const Velquist::PathManagement::IPath> GetCurrentPath() = 0;
    /// The number of a file extension, which is given with its dot, among those that the interpreter
    /// executes; -1 for one that it does not. `isCaseExact` false ignores case.
    virtual int get_iExtension(dispatcher::ustring_namehash::Key extension, bool isCaseExact) const = 0;

    dispatcher::ustring_namehash namehash;
    /// Whether built-in functions that are protected may be loaded when somebody asks for them.
    bool loadLmBuiltinAllowed = true;
};

/// No protected built-in function is loaded as long as the object lives; then it is as it was before.
class kdLoadLmBuiltinAllowedProtected {
public:
    explicit kdLoadLmBuiltinAllowedProtected(Kdispatcher& dispatcher) noexcept
        : dispatcher_(dispatcher), earlier_(dispatcher.loadLmBuiltinAllowed) {
        dispatcher_.loadLmBuiltinAllowed = false;
    }
    ~kdLoadLmBuiltinAllowedProtected() { dispatcher_.loadLmBuiltinAllowed = earlier_; }
    kdLoadLmBuiltinAllowedProtected(const kdLoadLmBuiltinAllowedProtected&) = delete;
    kdLoadLmBuiltinAllowedProtected& operator=(const kdLoadLmBuiltinAllowedProtected&) = delete;

private:
    Kdispatcher& dispatcher_;
    const bool earlier_;
};

/// The event manager of the running interpreter.
Velquist::PathManagement::IPerKVMEventManager& GetPerKVMEventManager();

/// Drops the cached functions of a source file, given as a native path that ends in NUL. A file of which
/// nothing is cached changes nothing.
void kdClearFunctionsByName(const char16_t* path);
