#pragma once
// The one table through which this layer (and whoever builds on it) reaches the file system, so
// that a test can make any single call fail, come short or be interrupted. Not for callers above
// the file layer: they use files.h.

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>

namespace kelvo::platform {

/// Each member has the arguments, results and errno of the system call of its name; none of them is
/// wrapped: an interrupted call gives EINTR here and is repeated by whoever called it.
struct FileCalls {
    int (*open)(const char* name, int flags, mode_t mode);
    ssize_t (*read)(int file, void* bytes, std::size_t count);
    ssize_t (*pread)(int file, void* bytes, std::size_t count, off_t offset);
    ssize_t (*write)(int file, const void* bytes, std::size_t count);
    ssize_t (*pwrite)(int file, const void* bytes, std::size_t count, off_t offset);
    off_t (*lseek)(int file, off_t offset, int origin);
    int (*fstat)(int file, struct stat* result);
    int (*lstat)(const char* name, struct stat* result);
    int (*ftruncate)(int file, off_t size);
    int (*fsync)(int file);
    int (*fdatasync)(int file);
    int (*close)(int file);
    int (*flock)(int file, int operation);
    int (*rename)(const char* from, const char* to);     ///< replaces what is at `to`
    int (*rename_new)(const char* from, const char* to); ///< EEXIST when something is at `to`
    int (*link)(const char* from, const char* to);
    int (*unlink)(const char* name);
};

/// The system's own calls.
[[nodiscard]] const FileCalls& SystemFileCalls();

/// The calls in use now. Any thread.
[[nodiscard]] const FileCalls& CurrentFileCalls();

/// Puts `calls` in use until the object goes; they nest. The table must live as long. For tests:
///
///     FileCalls calls = SystemFileCalls();
///     calls.fsync = [](int) { errno = EIO; return -1; };
///     const ScopedFileCalls scope{calls};
class ScopedFileCalls {
public:
    explicit ScopedFileCalls(const FileCalls& calls);
    ~ScopedFileCalls();
    ScopedFileCalls(const ScopedFileCalls&) = delete;
    ScopedFileCalls& operator=(const ScopedFileCalls&) = delete;

private:
    const FileCalls* previous_;
};

} // namespace kelvo::platform
