#include "platform/base/files.h"

#include "platform/base/HandleTable.h"
#include "platform/base/file_calls.h"
#include "platform/base/file_names.h"
#include "platform/base/paths.h"
#include "platform/base/resources.h"
#include "platform/base/threads.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <mutex>
#include <string>

namespace {

using kelvo::platform::CurrentFileCalls;
using kelvo::platform::ErrorFromErrno;

constexpr int kReadOnlyAttribute = 1;
constexpr int kKnownAttributes = 1 | 2 | 4;

// Repeats a call as long as signals interrupt it.
template <class Call>
auto Uninterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

void FailAsSystem() {
    SetLastError(ErrorFromErrno(errno));
}

bool MayBeOpened(HFILE file) {
    struct stat status = {};
    if (CurrentFileCalls().fstat(file, &status) != 0) return false;
    if (S_ISREG(status.st_mode) || S_ISBLK(status.st_mode) || S_ISCHR(status.st_mode)) return true;
    errno = EACCES;
    return false;
}

// Without O_NONBLOCK a pipe of that name would hold the program up until somebody wrote to it.
HFILE OpenDescriptor(const std::string& name, int flags, mode_t mode) {
    const HFILE file = Uninterrupted([&] {
        return CurrentFileCalls().open(name.c_str(), flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK,
                                       mode);
    });
    if (file == -1) {
        FailAsSystem();
        return HFILE_ERROR;
    }
    if (MayBeOpened(file)) return file;
    FailAsSystem();
    CurrentFileCalls().close(file);
    return HFILE_ERROR;
}

HFILE Refuse(DWORD error) {
    SetLastError(error);
    return HFILE_ERROR;
}

// Goes on after short calls until all is done, nothing more comes, or a fault.
// @return the count that was done, or -1 with errno when that is 0 because of a fault.
template <class Call>
std::int64_t Continue(std::size_t count, Call call) {
    std::size_t done = 0;
    while (done < count) {
        const ssize_t part = Uninterrupted([&] { return call(done, count - done); });
        if (part < 0) {
            FailAsSystem();
            return done > 0 ? static_cast<std::int64_t>(done) : -1;
        }
        if (part == 0) break;
        done += static_cast<std::size_t>(part);
    }
    return static_cast<std::int64_t>(done);
}

// A file without sharing: locked as long as it is open.
class ExclusiveFile : public kelvo::platform::SystemObject {
public:
    explicit ExclusiveFile(int descriptor) : descriptor_(descriptor) {}
    ~ExclusiveFile() override {
        if (descriptor_ != -1) CurrentFileCalls().close(descriptor_);
    }

    std::int64_t Write(const std::uint8_t* bytes, std::size_t count) {
        const std::scoped_lock lock{mutex_};
        return Continue(count, [&](std::size_t done, std::size_t rest) {
            return CurrentFileCalls().write(descriptor_, bytes + done, rest);
        });
    }

    DWORD OnHandleClosed() override {
        const std::scoped_lock lock{mutex_};
        const int result = CurrentFileCalls().close(descriptor_);
        descriptor_ = -1;
        return result == 0 || errno == EINTR ? ERROR_SUCCESS : ErrorFromErrno(errno);
    }

private:
    std::mutex mutex_; ///< another thread may close the handle while one writes
    int descriptor_;
};

// A file system without locks has nobody who holds one.
bool LockAlone(HFILE file) {
    if (Uninterrupted([&] { return CurrentFileCalls().flock(file, LOCK_EX | LOCK_NB); }) == 0) {
        return true;
    }
    return errno == ENOLCK || errno == ENOSYS || errno == EOPNOTSUPP || errno == EINVAL;
}

} // namespace

HFILE _lopen(LPCSTR name, int mode) {
    kelvo::platform::ThreadCheckpoint();
    if (name == nullptr || mode < OF_READ || mode > OF_READWRITE) {
        return Refuse(ERROR_INVALID_PARAMETER);
    }
    const auto existing = kelvo::platform::ExistingFileName(name);
    if (!existing) {
        FailAsSystem();
        return HFILE_ERROR;
    }
    constexpr int kFlags[] = {O_RDONLY, O_WRONLY, O_RDWR};
    return OpenDescriptor(*existing, kFlags[mode], 0);
}

HFILE _lcreat(LPCSTR name, int attributes) {
    kelvo::platform::ThreadCheckpoint();
    if (name == nullptr || (attributes & ~kKnownAttributes) != 0) {
        return Refuse(ERROR_INVALID_PARAMETER);
    }
    const auto native = kelvo::platform::NewFileName(name);
    if (!native) {
        FailAsSystem();
        return HFILE_ERROR;
    }
    const mode_t mode = (attributes & kReadOnlyAttribute) != 0 ? 0444 : 0666;
    return OpenDescriptor(*native, O_RDWR | O_CREAT | O_TRUNC, mode);
}

UINT _lread(HFILE file, LPVOID bytes, UINT count) {
    kelvo::platform::ThreadCheckpoint();
    auto* const target = static_cast<std::uint8_t*>(bytes);
    return static_cast<UINT>(Continue(count, [&](std::size_t done, std::size_t rest) {
        return CurrentFileCalls().read(file, target + done, rest);
    }));
}

UINT _lwrite(HFILE file, LPCSTR bytes, UINT count) {
    kelvo::platform::ThreadCheckpoint();
    return static_cast<UINT>(Continue(count, [&](std::size_t done, std::size_t rest) {
        return CurrentFileCalls().write(file, bytes + done, rest);
    }));
}

LONG _llseek(HFILE file, LONG offset, int origin) {
    using kelvo::platform::SeekFile;
    const bool from_end = origin == FILE_END;
    const std::int64_t before = from_end ? SeekFile(file, 0, FILE_CURRENT) : 0;
    const std::int64_t position = before == -1 ? -1 : SeekFile(file, offset, origin);
    if (position <= std::numeric_limits<LONG>::max()) return static_cast<LONG>(position);
    SeekFile(file, from_end ? before : position - offset, FILE_BEGIN);
    return Refuse(ERROR_FILE_TOO_LARGE);
}

HFILE _lclose(HFILE file) {
    kelvo::platform::SuspensionPoint();
    // An interrupted close has closed the descriptor; a second one could hit another thread's file.
    if (CurrentFileCalls().close(file) == 0 || errno == EINTR) return 0;
    FailAsSystem();
    return HFILE_ERROR;
}

HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                   DWORD disposition, DWORD flags, HANDLE template_file) {
    kelvo::platform::ThreadCheckpoint();
    if (name == nullptr || access != GENERIC_WRITE || share != 0 || security != nullptr ||
        disposition != CREATE_ALWAYS || flags != FILE_ATTRIBUTE_NORMAL ||
        template_file != nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    const auto native = kelvo::platform::NewFileName(name);
    if (!native) {
        FailAsSystem();
        return INVALID_HANDLE_VALUE;
    }
    // Emptied only once it is locked: what another holder writes is not ours to cut.
    const HFILE file = OpenDescriptor(*native, O_WRONLY | O_CREAT, 0666);
    if (file == HFILE_ERROR) return INVALID_HANDLE_VALUE;
    const auto object = std::make_shared<ExclusiveFile>(file);
    if (!LockAlone(file)) {
        FailAsSystem();
        return INVALID_HANDLE_VALUE;
    }
    if (Uninterrupted([&] { return CurrentFileCalls().ftruncate(file, 0); }) == -1 &&
        errno != EINVAL) { // a device has no length to cut
        FailAsSystem();
        return INVALID_HANDLE_VALUE;
    }
    return kelvo::platform::AddHandle(object);
}

BOOL WriteFile(HANDLE file, LPCVOID bytes, DWORD count, LPDWORD written, OVERLAPPED* overlapped) {
    kelvo::platform::ThreadCheckpoint();
    if (written != nullptr) *written = 0;
    if (overlapped != nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const auto object = kelvo::platform::FindObject<ExclusiveFile>(file);
    if (!object) return FALSE;
    const std::int64_t done = object->Write(static_cast<const std::uint8_t*>(bytes), count);
    if (written != nullptr) *written = static_cast<DWORD>(std::max<std::int64_t>(done, 0));
    return done == count ? TRUE : FALSE;
}

BOOL DeleteFileA(LPCSTR name) {
    kelvo::platform::ThreadCheckpoint();
    const auto existing = kelvo::platform::ExistingFileName(name == nullptr ? "" : name);
    if (existing && CurrentFileCalls().unlink(existing->c_str()) == 0) return TRUE;
    FailAsSystem();
    return FALSE;
}

BOOL MoveFileA(LPCSTR from, LPCSTR to) {
    kelvo::platform::ThreadCheckpoint();
    const auto existing = kelvo::platform::ExistingFileName(from == nullptr ? "" : from);
    if (existing) {
        const auto target = kelvo::platform::NewFileName(to == nullptr ? "" : to);
        if (target && CurrentFileCalls().rename_new(existing->c_str(), target->c_str()) == 0) {
            return TRUE;
        }
    }
    FailAsSystem();
    return FALSE;
}

DWORD GetModuleFileNameA(HMODULE module, LPSTR name, DWORD size) {
    if (module != nullptr && module != GetModuleHandleA(nullptr)) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return 0;
    }
    const std::string& file = kelvo::platform::ProgramFile();
    if (name == nullptr || size == 0 || file.empty()) {
        SetLastError(file.empty() ? ERROR_GEN_FAILURE : ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    const std::size_t copied = file.copy(name, size - 1);
    name[copied] = '\0';
    if (copied == file.size()) return static_cast<DWORD>(copied);
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return size;
}

namespace kelvo::platform {

std::int64_t SeekFile(HFILE file, std::int64_t offset, int origin) {
    ThreadCheckpoint();
    constexpr int kOrigins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    if (origin < FILE_BEGIN || origin > FILE_END) return Refuse(ERROR_INVALID_PARAMETER);
    const off_t position = CurrentFileCalls().lseek(file, offset, kOrigins[origin]);
    if (position != -1) return position;
    FailAsSystem();
    if (GetLastError() == ERROR_INVALID_PARAMETER) SetLastError(ERROR_NEGATIVE_SEEK);
    return -1;
}

std::int64_t FileSize(HFILE file) {
    ThreadCheckpoint();
    struct stat status = {};
    if (CurrentFileCalls().fstat(file, &status) == 0) return status.st_size;
    FailAsSystem();
    return -1;
}

std::int64_t ReadFileAt(HFILE file, std::uint64_t offset, void* bytes, std::size_t count) {
    ThreadCheckpoint();
    auto* const target = static_cast<std::uint8_t*>(bytes);
    return Continue(count, [&](std::size_t done, std::size_t rest) {
        return CurrentFileCalls().pread(file, target + done, rest,
                                        static_cast<off_t>(offset + done));
    });
}

std::int64_t WriteFileAt(HFILE file, std::uint64_t offset, const void* bytes, std::size_t count) {
    ThreadCheckpoint();
    const auto* const source = static_cast<const std::uint8_t*>(bytes);
    return Continue(count, [&](std::size_t done, std::size_t rest) {
        return CurrentFileCalls().pwrite(file, source + done, rest,
                                         static_cast<off_t>(offset + done));
    });
}

bool SetFileSize(HFILE file, std::uint64_t length) {
    ThreadCheckpoint();
    const auto cut = [&] { return CurrentFileCalls().ftruncate(file, static_cast<off_t>(length)); };
    if (Uninterrupted(cut) == 0) return true;
    FailAsSystem();
    return false;
}

} // namespace kelvo::platform
