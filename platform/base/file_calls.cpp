#include "platform/base/file_calls.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>

namespace kelvo::platform {

namespace {

static_assert(sizeof(off_t) == 8, "films reach up to 2 GiB, and offsets of a pair beyond");

int SystemOpen(const char* name, int flags, mode_t mode) {
    return ::open(name, flags, mode);
}

// A file system that cannot rename without replacing makes a second name instead, and one that
// knows no second names is asked first.
int SystemRenameNew(const char* from, const char* to) {
    if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return -1;
    if (::link(from, to) == 0) return ::unlink(from);
    if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS) return -1;
    struct stat existing = {};
    if (::lstat(to, &existing) == 0) {
        errno = EEXIST;
        return -1;
    }
    return errno == ENOENT ? ::rename(from, to) : -1;
}

constexpr FileCalls kSystemCalls{
    .open = SystemOpen,
    .read = ::read,
    .pread = ::pread,
    .write = ::write,
    .pwrite = ::pwrite,
    .lseek = ::lseek,
    .fstat = ::fstat,
    .lstat = ::lstat,
    .ftruncate = ::ftruncate,
    .fsync = ::fsync,
    .fdatasync = ::fdatasync,
    .close = ::close,
    .flock = ::flock,
    .rename = ::rename,
    .rename_new = SystemRenameNew,
    .link = ::link,
    .unlink = ::unlink,
};

std::atomic<const FileCalls*> calls_in_use{&kSystemCalls};

} // namespace

const FileCalls& SystemFileCalls() {
    return kSystemCalls;
}

const FileCalls& CurrentFileCalls() {
    return *calls_in_use.load();
}

ScopedFileCalls::ScopedFileCalls(const FileCalls& calls)
    : previous_(calls_in_use.exchange(&calls)) {}

ScopedFileCalls::~ScopedFileCalls() {
    calls_in_use = previous_;
}

} // namespace kelvo::platform
