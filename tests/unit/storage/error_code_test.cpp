// Each errno that the storage layer knows, and the code that it raises for it.
#include "runtime/storage/providers/local/posix/error_code.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "runtime/storage/transfer_progress.h"

namespace korvex::runtime::storage::posix {
namespace {

namespace vfs = foundation::storage::vfs;

struct Row {
    int systemError;
    vfs::ErrorCode code;
};

class ErrorCodeTest : public testing::TestWithParam<Row> {};

TEST_P(ErrorCodeTest, BecomesTheCodeThatItsNameSays) {
    EXPECT_EQ(errorCodeOf(GetParam().systemError), GetParam().code);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ErrorCodeTest,
    testing::Values(
        Row{ENOTEMPTY, vfs::folderNotEmpty}, Row{ENAMETOOLONG, vfs::invalidLocation},
        Row{EINVAL, vfs::invalidLocation}, Row{EILSEQ, vfs::invalidLocation},
        Row{ELOOP, vfs::invalidLocation}, Row{EISDIR, vfs::invalidLocation},
        Row{EACCES, vfs::permissionDenied}, Row{EPERM, vfs::permissionDenied},
        Row{EEXIST, vfs::resourceAlreadyExists}, Row{ENOENT, vfs::resourceNotFound},
        Row{ENOTDIR, vfs::resourceNotFound}, Row{ENODEV, vfs::resourceNotFound},
        Row{ENXIO, vfs::resourceNotFound}, Row{EROFS, vfs::readOnlyProvider}, Row{EFBIG, vfs::fileTooLarge},
        Row{EOVERFLOW, vfs::fileTooLarge}, Row{EBUSY, vfs::resourceInUse}, Row{ETXTBSY, vfs::resourceInUse},
        Row{EAGAIN, vfs::resourceInUse}, Row{ENOLCK, vfs::resourceInUse}, Row{ENOSPC, vfs::noSpaceLeft},
        Row{EDQUOT, vfs::noSpaceLeft}, Row{EMLINK, vfs::noSpaceLeft}, Row{EIO, vfs::ioError},
        Row{ENETDOWN, vfs::ioError}, Row{EHOSTDOWN, vfs::ioError}, Row{ETIMEDOUT, vfs::ioError},
        Row{ESTALE, vfs::ioError}, Row{EREMOTEIO, vfs::ioError}, Row{ECANCELED, vfs::ioError},
        Row{ENOMEM, vfs::internalError}, Row{EMFILE, vfs::internalError}, Row{ENFILE, vfs::internalError},
        Row{EBADF, vfs::internalError}, Row{EFAULT, vfs::internalError},
        Row{ENOSYS, vfs::unsupportedOperation}, Row{EOPNOTSUPP, vfs::unsupportedOperation},
        Row{EXDEV, vfs::unsupportedOperation}, Row{EUCLEAN, vfs::ioError}, Row{EBADMSG, vfs::ioError},
        Row{ENOKEY, vfs::permissionDenied}, Row{EKEYREJECTED, vfs::permissionDenied},
        Row{EKEYEXPIRED, vfs::permissionDenied}, Row{ENOMEDIUM, vfs::ioError}, Row{EMEDIUMTYPE, vfs::ioError},
        Row{ENETUNREACH, vfs::ioError}, Row{EHOSTUNREACH, vfs::ioError}, Row{ENETRESET, vfs::ioError},
        Row{ECONNRESET, vfs::ioError}, Row{ECONNREFUSED, vfs::ioError}, Row{ECONNABORTED, vfs::ioError},
        Row{ENOTCONN, vfs::ioError}, Row{ESHUTDOWN, vfs::ioError}, Row{EPIPE, vfs::ioError},
        Row{ECOMM, vfs::ioError}, Row{ENOLINK, vfs::ioError}, Row{EPROTO, vfs::ioError},
        Row{ENOBUFS, vfs::internalError}, Row{EDEADLK, vfs::resourceInUse},
        Row{E2BIG, vfs::unsupportedOperation}, Row{ERANGE, vfs::unsupportedOperation},
        Row{ECHILD, vfs::unknownError}, Row{0, vfs::unknownError}));

TEST(SystemErrorTest, RaisesWithLocationContextAndTheSystemsWords) {
    const vfs::AbsoluteIRI location(u"file:///a");
    try {
        raiseSystemError(ENOSPC, location, u"copy");
    } catch (const vfs::Exception& error) {
        EXPECT_EQ(error.getErrorCode(), vfs::noSpaceLeft);
        EXPECT_EQ(error.getLocation(), location);
        EXPECT_EQ(error.getExceptionContextsString(), u"copy");
        EXPECT_EQ(error.getSystemText(), "No space left on device");
    }
}

TEST(SystemErrorTest, ACallThatTheSystemCancelledIsNoInterrupt) {
    const vfs::AbsoluteIRI location(u"file:///a");
    try {
        raiseSystemError(ECANCELED, location, u"copy");
        FAIL() << "no exception";
    } catch (const vfs::Exception& error) {
        EXPECT_EQ(error.getErrorCode(), vfs::ioError);
        EXPECT_EQ(error.getExceptionContextsString(), u"copy");
    }
}

TEST(SystemErrorTest, InterruptReadsAsAnywhereElse) {
    const vfs::AbsoluteIRI location(u"file:///a");
    try {
        raiseSystemError(interruptedError, location, u"copy");
        FAIL() << "no exception";
    } catch (const vfs::Exception& error) {
        EXPECT_EQ(error.getErrorCode(), vfs::unknownError);
        EXPECT_EQ(error.getLocation(), location);
        EXPECT_EQ(error.getExceptionContextsString(), interruptedContext);
    }
}

}  // namespace
}  // namespace korvex::runtime::storage::posix
