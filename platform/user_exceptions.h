// The exceptions that a user sees: a text from the catalog and an identifier that scripts test.
//
// The identifier of an exception and the catalog entry of its text are two things. An exception built
// from a message alone carries the message's own identifier; one built with an identifier keeps that one
// and takes only the text from the message.
#pragma once

#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/message_record.h"

namespace foundation::core::except {

namespace detail {
std::u16string catalogText(const resource_core::BaseMsgID& message);
std::string toUtf8(const std::u16string& text);
std::u16string fromUtf8(const std::string& text);
}  // namespace detail

/// Root of the environment's own exceptions. The order of the virtual operations, here and below, is the
/// order of the environment's binary interface.
class IException {
public:
    /// A new copy of the same class. (Not `clone` and `rethrow`: exception pointers of Boost wrap the class
    /// in one of their own that has operations of these names.)
    virtual std::unique_ptr<IException> copyToHeap() const = 0;
    /// Throws a copy of the same class.
    [[noreturn]] virtual void throwCopy() const = 0;
    virtual ~IException() = default;
    /// The text in UTF-8; valid as long as the exception lives.
    virtual const char* what() const noexcept = 0;

    /// The text as diagnostics and traces show it.
    std::u16string ToUstring() const { return detail::fromUtf8(what()); }

protected:
    IException() = default;
    IException(const IException&) = default;
    IException& operator=(const IException&) = default;
};

/// An exception whose text is meant for the user.
class IUserException : public IException {
public:
    virtual void convert_str(std::u16string& text) const = 0;
    virtual void convert_str(std::string& text) const = 0;

    std::u16string ToUstring() const { return ToUstringImpl(); }

private:
    virtual std::u16string ToUstringImpl() const = 0;
};

/// An exception that has a message identifier.
class IMsgIDException : public IUserException {
public:
    virtual std::string get_error_id() const = 0;
    /// The catalog's text in the global locale, arguments filled in.
    virtual std::u16string GetUnicodeMessageTxt() const = 0;
    virtual const resource_core::BaseMsgID& message() const noexcept = 0;
};

/// The one exception template; `Tag` is a message class of message_identifiers.h.
template <class Tag, class StandardBase = std::exception, class Unused = void>
class Exception : public IMsgIDException, public StandardBase {
public:
    /// Carries the message's own identifier.
    explicit Exception(const Tag& message) : Exception(message, message.identifier()) {}
    /// Carries `errorIdentifier`; the text stays the message's.
    Exception(const Tag& message, std::string errorIdentifier)
        : content_(std::make_shared<const Content>(
              Content{message, std::move(errorIdentifier), detail::toUtf8(detail::catalogText(message))})) {}
    // Copies only: an exception that was moved from would have nothing left to say.
    Exception(const Exception&) noexcept = default;
    Exception& operator=(const Exception&) noexcept = default;

    std::unique_ptr<IException> copyToHeap() const override { return std::make_unique<Exception>(*this); }
    [[noreturn]] void throwCopy() const override { throw Exception(*this); }
    const char* what() const noexcept override { return content_->narrowText.c_str(); }
    void convert_str(std::u16string& text) const override { text = GetUnicodeMessageTxt(); }
    void convert_str(std::string& text) const override { text = content_->narrowText; }
    std::string get_error_id() const override { return content_->errorIdentifier; }
    std::u16string GetUnicodeMessageTxt() const override { return detail::catalogText(content_->message); }
    const resource_core::BaseMsgID& message() const noexcept override { return content_->message; }

private:
    struct Content {
        resource_core::BaseMsgID message;
        std::string errorIdentifier;
        std::string narrowText;
    };

    std::u16string ToUstringImpl() const override { return GetUnicodeMessageTxt(); }

    std::shared_ptr<const Content> content_;  // shared, so that copying an exception never throws
};

/// The warnings that an operation hands back beside its result, for the caller to show or to drop.
class Notification {
public:
    bool empty() const noexcept { return messages_.empty(); }
    void append(resource_core::BaseMsgID message) { messages_.push_back(std::move(message)); }
    const std::vector<resource_core::BaseMsgID>& messages() const noexcept { return messages_; }

private:
    std::vector<resource_core::BaseMsgID> messages_;
};

}  // namespace foundation::core::except
