#pragma once
// Files by the documented calls, on top of the replaceable table of file_calls.h. A name is found
// as file_names.h says. Interrupted calls are repeated and short ones continued in here. Any
// thread; one file belongs to one thread at a time, except for the calls that take an offset.

#include "platform/base/errors.h"
#include "platform/base/types.h"

#include <cstddef>
#include <cstdint>

/// What a call gives instead of a file, a count (as UINT) or a position when it failed.
inline constexpr HFILE HFILE_ERROR = -1;

inline constexpr int OF_READ = 0;
inline constexpr int OF_WRITE = 1;
inline constexpr int OF_READWRITE = 2;

inline constexpr int FILE_BEGIN = 0;
inline constexpr int FILE_CURRENT = 1;
inline constexpr int FILE_END = 2;

/// Opens an existing file. The HFILE is the system's descriptor, so further table calls may use it.
/// @param mode OF_READ, OF_WRITE or OF_READWRITE; anything else is ERROR_INVALID_PARAMETER
/// @return HFILE_ERROR when there is no such file, when it may not be opened so, or when it is a
///         folder, a pipe or a socket (ERROR_ACCESS_DENIED).
HFILE _lopen(LPCSTR name, int mode);

/// Makes the file, or empties the one of exactly this name, open for reading and writing.
/// @param attributes 0 normal, 1 read-only (for later opens); hidden (2) and system (4) mean
/// nothing
HFILE _lcreat(LPCSTR name, int attributes);

/// @return the count that was read: less than asked only at the end of the file or before a fault
///         (the next call then gives it); 0 at the end; HFILE_ERROR (as UINT) when nothing could
///         be.
UINT _lread(HFILE file, LPVOID bytes, UINT count);

/// @return the count that was written; less than asked when the disk is full or a fault came after
///         some of it; HFILE_ERROR (as UINT) when nothing could be. A count of 0 writes nothing and
///         leaves the file's length alone.
UINT _lwrite(HFILE file, LPCSTR bytes, UINT count);

/// Moves the position; behind the end is allowed, before the start is ERROR_NEGATIVE_SEEK.
/// @return the new position from the start. One above 2147483647 does not fit: then HFILE_ERROR,
///         ERROR_FILE_TOO_LARGE, and the position stays (SeekFile knows such positions).
LONG _llseek(HFILE file, LONG offset, int origin);

/// @return 0, or HFILE_ERROR when it was not open or the system reports a late write error; the
/// file
///         is closed in either case.
HFILE _lclose(HFILE file);

inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD CREATE_ALWAYS = 2;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;

struct SECURITY_ATTRIBUTES;
struct OVERLAPPED;

/// Makes the file, or empties the one of exactly this name, for writing only. Without sharing
/// (share 0): as long as it is open, a second CreateFileA of it fails with ERROR_SHARING_VIOLATION,
/// and one that another holder has locked is left as it is.
/// @return INVALID_HANDLE_VALUE on failure; close it by CloseHandle (handles.h). Other arguments
/// than
///         GENERIC_WRITE, 0, null, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, null give
///         ERROR_INVALID_PARAMETER.
HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                   DWORD disposition, DWORD flags, HANDLE template_file);

/// Writes all of it or fails; `written` then says how much came first. `overlapped` must be null.
BOOL WriteFile(HANDLE file, LPCVOID bytes, DWORD count, LPDWORD written, OVERLAPPED* overlapped);

/// FALSE when there is no such file (ERROR_FILE_NOT_FOUND) or it is a folder or held by the
/// folder's rights (ERROR_ACCESS_DENIED).
BOOL DeleteFileA(LPCSTR name);

/// Renames within one file system; never replaces: ERROR_ALREADY_EXISTS when `to` is there.
BOOL MoveFileA(LPCSTR from, LPCSTR to);

/// The full name of the program's file, `/` between its components.
/// @param module of this program or null; anything else is ERROR_MOD_NOT_FOUND
/// @return the length without the final 0; `size` when it did not fit (then cut, and
///         ERROR_INSUFFICIENT_BUFFER); 0 on failure.
DWORD GetModuleFileNameA(HMODULE module, LPSTR name, DWORD size);

// What the documented calls cannot say, because their numbers have 32 bits. All of these fail with
// -1 and the last error.
namespace kelvo::platform {

/// As _llseek, for every position.
std::int64_t SeekFile(HFILE file, std::int64_t offset, int origin);

/// The file's length; the position stays.
std::int64_t FileSize(HFILE file);

/// Reads at an offset, with one system call where the system gives all at once; the position stays.
/// @return the count that was read; less than asked at the end of the file or before a fault.
std::int64_t ReadFileAt(HFILE file, std::uint64_t offset, void* bytes, std::size_t count);

/// Writes at an offset; the position stays.
/// @return the count that was written; less than asked when a fault came after some of it.
std::int64_t WriteFileAt(HFILE file, std::uint64_t offset, const void* bytes, std::size_t count);

/// Cuts or extends the file to this length.
bool SetFileSize(HFILE file, std::uint64_t length);

} // namespace kelvo::platform
