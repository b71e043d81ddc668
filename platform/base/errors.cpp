#include "platform/base/errors.h"

#include <cerrno>

namespace {

thread_local DWORD last_error = ERROR_SUCCESS;

} // namespace

DWORD GetLastError() {
    return last_error;
}

void SetLastError(DWORD error) {
    last_error = error;
}

namespace kelvo::platform {

DWORD ErrorFromErrno(int system_error) {
    switch (system_error) {
    case 0:
        return ERROR_SUCCESS;
    case ENOENT:
        return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
    case ELOOP:
        return ERROR_PATH_NOT_FOUND;
    case EMFILE:
    case ENFILE:
        return ERROR_TOO_MANY_OPEN_FILES;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
    case ENXIO:
        return ERROR_ACCESS_DENIED;
    case EBADF:
        return ERROR_INVALID_HANDLE;
    case ENOMEM:
        return ERROR_NOT_ENOUGH_MEMORY;
    case EXDEV:
        return ERROR_NOT_SAME_DEVICE;
    case EWOULDBLOCK:
    case EBUSY:
    case ETXTBSY:
        return ERROR_SHARING_VIOLATION;
    case EEXIST:
    case ENOTEMPTY:
        return ERROR_ALREADY_EXISTS;
    case EINVAL:
        return ERROR_INVALID_PARAMETER;
    case ENOSPC:
    case EDQUOT:
        return ERROR_DISK_FULL;
    case ENAMETOOLONG:
        return ERROR_FILENAME_EXCED_RANGE;
    case EFBIG:
    case EOVERFLOW:
        return ERROR_FILE_TOO_LARGE;
    case EIO:
        return ERROR_IO_DEVICE;
    default:
        return ERROR_GEN_FAILURE;
    }
}

} // namespace kelvo::platform
