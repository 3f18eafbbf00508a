// The table from errno to error code. What it does not name is an unknown error.
#include "runtime/storage/providers/local/posix/error_code.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "runtime/storage/transfer_progress.h"

namespace korvex::runtime::storage::posix {

namespace vfs = foundation::storage::vfs;

namespace {

constexpr std::pair<int, vfs::ErrorCode> codeOfError[] = {
    {ENOTEMPTY, vfs::folderNotEmpty},
    {ENAMETOOLONG, vfs::invalidLocation},
    {EINVAL, vfs::invalidLocation},
    {EILSEQ, vfs::invalidLocation},
    {ELOOP, vfs::invalidLocation},
    {EISDIR, vfs::invalidLocation},
    {EACCES, vfs::permissionDenied},
    {EPERM, vfs::permissionDenied},
    {ENOKEY, vfs::permissionDenied},
    {EKEYREJECTED, vfs::permissionDenied},
    {EKEYEXPIRED, vfs::permissionDenied},
    {EEXIST, vfs::resourceAlreadyExists},
    {ENOENT, vfs::resourceNotFound},
    {ENOTDIR, vfs::resourceNotFound},
    {ENODEV, vfs::resourceNotFound},
    {ENXIO, vfs::resourceNotFound},
    {EROFS, vfs::readOnlyProvider},
    {EFBIG, vfs::fileTooLarge},
    {EOVERFLOW, vfs::fileTooLarge},
    {EBUSY, vfs::resourceInUse},
    {EDEADLK, vfs::resourceInUse},
    {ETXTBSY, vfs::resourceInUse},
    {EAGAIN, vfs::resourceInUse},
    {ENOLCK, vfs::resourceInUse},
    {ENOSPC, vfs::noSpaceLeft},
    {EDQUOT, vfs::noSpaceLeft},
    {EMLINK, vfs::noSpaceLeft},
    {EIO, vfs::ioError},
    {EUCLEAN, vfs::ioError},
    {EBADMSG, vfs::ioError},
    {ENOMEDIUM, vfs::ioError},
    {EMEDIUMTYPE, vfs::ioError},
    {ENETDOWN, vfs::ioError},
    {ENETUNREACH, vfs::ioError},
    {ENETRESET, vfs::ioError},
    {EHOSTUNREACH, vfs::ioError},
    {ECONNREFUSED, vfs::ioError},
    {ECONNRESET, vfs::ioError},
    {ECONNABORTED, vfs::ioError},
    {ENOTCONN, vfs::ioError},
    {ESHUTDOWN, vfs::ioError},
    {EPIPE, vfs::ioError},
    {ECOMM, vfs::ioError},
    {ENOLINK, vfs::ioError},
    {EPROTO, vfs::ioError},
    {EHOSTDOWN, vfs::ioError},
    {ETIMEDOUT, vfs::ioError},
    {ESTALE, vfs::ioError},
    {EREMOTEIO, vfs::ioError},
    {ECANCELED, vfs::ioError},
    {ENOMEM, vfs::internalError},
    {ENOBUFS, vfs::internalError},
    {EMFILE, vfs::internalError},
    {ENFILE, vfs::internalError},
    {EBADF, vfs::internalError},
    {EFAULT, vfs::internalError},
    {ENOSYS, vfs::unsupportedOperation},
    {EOPNOTSUPP, vfs::unsupportedOperation},
    {EXDEV, vfs::unsupportedOperation},
    {E2BIG, vfs::unsupportedOperation},
    {ERANGE, vfs::unsupportedOperation},
};

}  // namespace

vfs::ErrorCode errorCodeOf(int systemError) noexcept {
    const auto row = std::find_if(std::begin(codeOfError), std::end(codeOfError),
                                  [&](const auto& candidate) { return candidate.first == systemError; });
    return row == std::end(codeOfError) ? vfs::unknownError : row->second;
}

std::string systemTextOf(int systemError) { return std::generic_category().message(systemError); }

void raiseSystemError(int systemError, const vfs::AbsoluteIRI& location, std::u16string context) {
    if (systemError == interruptedError)
        throw vfs::Exception(vfs::unknownError, location, std::u16string(interruptedContext));
    throw vfs::Exception(errorCodeOf(systemError), location, std::move(context), systemTextOf(systemError));
}

}  // namespace korvex::runtime::storage::posix
