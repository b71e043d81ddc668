#include "platform/base/files.h"

#include "tests/platform/base/TempFolder.h"

#include "platform/base/file_calls.h"
#include "platform/base/handles.h"
#include "platform/base/resources.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string>

using namespace kelvo::platform;

namespace {

constexpr UINT kFailed = static_cast<UINT>(HFILE_ERROR);
constexpr std::uint64_t kThreeGiB = 3ULL << 30U;

class Files : public TempFolder {
protected:
    Files() { SetLastError(ERROR_SUCCESS); }

    static std::string ReadUpTo(HFILE file, UINT count) {
        std::string bytes(count, '\0');
        const UINT read = _lread(file, bytes.data(), count);
        if (read == kFailed) return "failed";
        bytes.resize(read);
        return bytes;
    }
    static HANDLE CreateForWriting(const std::string& path) {
        return CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    }
};

// What the calls in the table shall do next, in order; afterwards they do what they always do.
struct Step {
    int error;         ///< fails with it; 0 does not
    std::size_t limit; ///< does at most so much
};
std::vector<Step> script;

std::size_t LimitNow(std::size_t count, int& error) {
    error = 0;
    if (script.empty()) return count;
    const Step step = script.front();
    script.erase(script.begin());
    error = step.error;
    return std::min(count, step.limit);
}

FileCalls ScriptedCalls() {
    FileCalls calls = SystemFileCalls();
    calls.read = [](int file, void* bytes, std::size_t count) -> ssize_t {
        const std::size_t limit = LimitNow(count, errno);
        return errno != 0 ? -1 : SystemFileCalls().read(file, bytes, limit);
    };
    calls.pread = [](int file, void* bytes, std::size_t count, off_t offset) -> ssize_t {
        const std::size_t limit = LimitNow(count, errno);
        return errno != 0 ? -1 : SystemFileCalls().pread(file, bytes, limit, offset);
    };
    calls.write = [](int file, const void* bytes, std::size_t count) -> ssize_t {
        const std::size_t limit = LimitNow(count, errno);
        return errno != 0 ? -1 : SystemFileCalls().write(file, bytes, limit);
    };
    calls.pwrite = [](int file, const void* bytes, std::size_t count, off_t offset) -> ssize_t {
        const std::size_t limit = LimitNow(count, errno);
        return errno != 0 ? -1 : SystemFileCalls().pwrite(file, bytes, limit, offset);
    };
    calls.close = [](int file) {
        LimitNow(0, errno);
        const int error = errno;
        const int result = SystemFileCalls().close(file);
        if (error != 0) errno = error;
        return error != 0 ? -1 : result;
    };
    return calls;
}

TEST_F(Files, OpenAsTheirModeSays) {
    const std::string path = Make("film", "abc");
    const struct {
        int mode;
        bool reads;
        bool writes;
    } kModes[] = {{OF_READ, true, false}, {OF_WRITE, false, true}, {OF_READWRITE, true, true}};
    for (const auto& row : kModes) {
        const HFILE file = _lopen(path.c_str(), row.mode);
        ASSERT_NE(file, HFILE_ERROR) << row.mode;
        char byte = 0;
        EXPECT_EQ(_lread(file, &byte, 1), row.reads ? 1U : kFailed) << row.mode;
        EXPECT_EQ(_lwrite(file, "x", 1), row.writes ? 1U : kFailed) << row.mode;
        EXPECT_EQ(_lclose(file), 0);
    }
}

TEST_F(Files, RefuseToOpenWhatIsNoFileOfTheirs) {
    Make("folder/film");
    mkfifo(Path("pipe").c_str(), 0666);
    const struct {
        std::string name;
        int mode;
        DWORD error;
    } kCases[] = {
        {Path("nothing"), OF_READ, ERROR_FILE_NOT_FOUND},
        {Path("nothing/film"), OF_READWRITE, ERROR_FILE_NOT_FOUND},
        {Path("folder/film/deeper"), OF_READ, ERROR_PATH_NOT_FOUND},
        {Path("folder"), OF_READ, ERROR_ACCESS_DENIED},
        {Path("folder"), OF_READWRITE, ERROR_ACCESS_DENIED},
        {Path("pipe"), OF_READ, ERROR_ACCESS_DENIED}, // and without waiting for a writer
        {Path("folder/film"), 3, ERROR_INVALID_PARAMETER},
        {Path("folder/film"), -1, ERROR_INVALID_PARAMETER},
        {std::string(5000, 'x'), OF_READ, ERROR_FILENAME_EXCED_RANGE},
    };
    for (const auto& row : kCases) {
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(_lopen(row.name.c_str(), row.mode), HFILE_ERROR) << row.name;
        EXPECT_EQ(GetLastError(), row.error) << row.name;
    }
    EXPECT_EQ(_lopen(nullptr, OF_READ), HFILE_ERROR);
    EXPECT_EQ(_lcreat(nullptr, 0), HFILE_ERROR);
}

TEST_F(Files, AreCreatedEmptyForReadingAndWriting) {
    const std::string path = Make("film", "old content");
    const HFILE file = _lcreat(path.c_str(), 0);
    ASSERT_NE(file, HFILE_ERROR);
    EXPECT_EQ(FileSize(file), 0);
    EXPECT_EQ(_lwrite(file, "new", 3), 3U);
    EXPECT_EQ(_llseek(file, 0, FILE_BEGIN), 0);
    EXPECT_EQ(ReadUpTo(file, 10), "new");
    EXPECT_EQ(_lclose(file), 0);

    const HFILE guarded = _lcreat(Path("guarded").c_str(), 1);
    ASSERT_NE(guarded, HFILE_ERROR);
    EXPECT_EQ(_lwrite(guarded, "x", 1), 1U);
    EXPECT_EQ(_lclose(guarded), 0);
    struct stat status = {};
    EXPECT_EQ(stat(Path("guarded").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0222U, 0U);
    EXPECT_EQ(_lcreat(Path("x").c_str(), 0x100), HFILE_ERROR);
    EXPECT_EQ(_lcreat(Path("nowhere/x").c_str(), 0), HFILE_ERROR);
}

TEST_F(Files, NeverReplaceAFileOfAnotherCaseWhenTheyCreate) {
    const std::string other = Make("FILM.KVA", "precious");
    EXPECT_EQ(_lclose(_lcreat(Path("film.kva").c_str(), 0)), 0);
    EXPECT_TRUE(CloseHandle(CreateForWriting(Path("Film.kva"))));
    EXPECT_EQ(Content(other), "precious");
}

TEST_F(Files, ReadsGoOnAfterSignalsAndShortCounts) {
    const HFILE file = _lopen(Make("film", "0123456789").c_str(), OF_READ);
    const FileCalls calls = ScriptedCalls();
    const ScopedFileCalls scope{calls};
    script = {{EINTR, 0}, {0, 3}, {EINTR, 0}, {0, 1}};
    EXPECT_EQ(ReadUpTo(file, 8), "01234567");
    EXPECT_EQ(ReadUpTo(file, 8), "89");
    EXPECT_EQ(ReadUpTo(file, 8), "");
    script = {{0, 2}, {EINTR, 0}};
    std::array<char, 20> bytes{};
    EXPECT_EQ(ReadFileAt(file, 4, bytes.data(), bytes.size()), 6);
    EXPECT_STREQ(bytes.data(), "456789");
    EXPECT_EQ(_lclose(file), 0);
}

TEST_F(Files, AReadThatFailsGivesWhatCameBeforeThenTheFault) {
    const HFILE file = _lopen(Make("film", "0123456789").c_str(), OF_READ);
    const FileCalls calls = ScriptedCalls();
    const ScopedFileCalls scope{calls};
    script = {{0, 4}, {EIO, 0}, {EIO, 0}};
    EXPECT_EQ(ReadUpTo(file, 8), "0123");
    EXPECT_EQ(GetLastError(), ERROR_IO_DEVICE);
    EXPECT_EQ(ReadUpTo(file, 8), "failed");
    EXPECT_EQ(ReadUpTo(file, 8), "456789"); // the position is where it was
    EXPECT_EQ(_lclose(file), 0);
}

TEST_F(Files, WritesGoOnAfterSignalsAndShortCounts) {
    const std::string path = Path("film");
    const HFILE file = _lcreat(path.c_str(), 0);
    const FileCalls calls = ScriptedCalls();
    const ScopedFileCalls scope{calls};
    script = {{EINTR, 0}, {0, 3}, {0, 1}};
    EXPECT_EQ(_lwrite(file, "0123456789", 10), 10U);
    script = {{EINTR, 0}, {0, 1}};
    EXPECT_EQ(WriteFileAt(file, 8, "abc", 3), 3);
    EXPECT_EQ(_lwrite(file, nullptr, 0), 0U); // and leaves the length alone
    EXPECT_EQ(Content(path), "01234567abc");
    EXPECT_EQ(_lclose(file), 0);
}

TEST_F(Files, AFullDiskGivesAShortCountThenAFailure) {
    const HFILE file = _lcreat(Path("film").c_str(), 0);
    const FileCalls calls = ScriptedCalls();
    const ScopedFileCalls scope{calls};
    script = {{0, 4}, {ENOSPC, 0}, {ENOSPC, 0}};
    EXPECT_EQ(_lwrite(file, "0123456789", 10), 4U);
    EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
    EXPECT_EQ(_lwrite(file, "456789", 6), kFailed);
    EXPECT_EQ(_lclose(file), 0);
}

TEST_F(Files, SeekFromEveryOriginAndNoFartherThanALongSays) {
    const HFILE file = _lcreat(Path("film").c_str(), 0);
    ASSERT_TRUE(SetFileSize(file, 1000));
    EXPECT_EQ(_llseek(file, 100, FILE_BEGIN), 100);
    EXPECT_EQ(_llseek(file, -40, FILE_CURRENT), 60);
    EXPECT_EQ(_llseek(file, -1, FILE_END), 999);
    EXPECT_EQ(_llseek(file, 5, FILE_END), 1005);
    EXPECT_EQ(_llseek(file, -1, FILE_BEGIN), HFILE_ERROR);
    EXPECT_EQ(GetLastError(), ERROR_NEGATIVE_SEEK);
    EXPECT_EQ(_llseek(file, 0, 3), HFILE_ERROR);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(_llseek(file, 0, FILE_CURRENT), 1005);

    ASSERT_TRUE(SetFileSize(file, kThreeGiB));
    EXPECT_EQ(_llseek(file, 0x7FFFFFFF, FILE_BEGIN), 0x7FFFFFFF);
    EXPECT_EQ(_llseek(file, 1, FILE_CURRENT), HFILE_ERROR);
    EXPECT_EQ(GetLastError(), ERROR_FILE_TOO_LARGE);
    EXPECT_EQ(_llseek(file, 0, FILE_END), HFILE_ERROR);
    EXPECT_EQ(_llseek(file, 0, FILE_CURRENT), 0x7FFFFFFF); // the position has stayed
    EXPECT_EQ(_lclose(file), 0);
}

TEST_F(Files, ReachBeyondTwoGiBByTheCallsOfOurOwn) {
    const HFILE file = _lcreat(Path("film").c_str(), 0);
    EXPECT_EQ(WriteFileAt(file, kThreeGiB, "far", 3), 3);
    EXPECT_EQ(FileSize(file), static_cast<std::int64_t>(kThreeGiB) + 3);
    EXPECT_EQ(SeekFile(file, 0, FILE_CURRENT), 0);
    EXPECT_EQ(SeekFile(file, -3, FILE_END), static_cast<std::int64_t>(kThreeGiB));
    EXPECT_EQ(ReadUpTo(file, 10), "far");
    char byte = 0;
    EXPECT_EQ(ReadFileAt(file, kThreeGiB + 1, &byte, 1), 1);
    EXPECT_EQ(byte, 'a');
    EXPECT_EQ(_lclose(file), 0);
}

TEST_F(Files, ACloseReportsTheLateFaultAndForgetsTheSignal) {
    const FileCalls calls = ScriptedCalls();
    const ScopedFileCalls scope{calls};
    HFILE file = _lcreat(Path("film").c_str(), 0);
    script = {{EIO, 0}};
    EXPECT_EQ(_lclose(file), HFILE_ERROR);
    EXPECT_EQ(GetLastError(), ERROR_IO_DEVICE);
    file = _lcreat(Path("film").c_str(), 0);
    script = {{EINTR, 0}};
    EXPECT_EQ(_lclose(file), 0);
    EXPECT_EQ(_lclose(file), HFILE_ERROR);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST_F(Files, WithoutSharingBelongToOneWriter) {
    const std::string path = Make("picture.bmp", "old");
    const HANDLE first = CreateForWriting(path);
    ASSERT_NE(first, INVALID_HANDLE_VALUE);
    EXPECT_EQ(Content(path), "");
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(first, "pixels", 6, &written, nullptr));
    EXPECT_EQ(written, 6U);
    EXPECT_EQ(CreateForWriting(path), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    EXPECT_EQ(Content(path), "pixels"); // the refused call has not emptied it
    EXPECT_TRUE(CloseHandle(first));
    EXPECT_FALSE(WriteFile(first, "x", 1, &written, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(written, 0U);
    EXPECT_TRUE(CloseHandle(CreateForWriting(path)));
}

TEST_F(Files, AWriteByHandleIsWholeOrFails) {
    const HANDLE file = CreateForWriting(Path("picture.bmp"));
    const FileCalls calls = ScriptedCalls();
    const ScopedFileCalls scope{calls};
    DWORD written = 99;
    script = {{0, 2}, {ENOSPC, 0}};
    EXPECT_FALSE(WriteFile(file, "pixels", 6, &written, nullptr));
    EXPECT_EQ(written, 2U);
    EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
    script = {{ENOSPC, 0}};
    EXPECT_FALSE(WriteFile(file, "xels", 4, &written, nullptr));
    EXPECT_EQ(written, 0U);
    int no_overlap = 0;
    EXPECT_FALSE(WriteFile(file, "x", 1, &written, reinterpret_cast<OVERLAPPED*>(&no_overlap)));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    script = {{ENOSPC, 0}}; // as a network folder does it: the fault shows at the close
    EXPECT_FALSE(CloseHandle(file));
    EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
    EXPECT_FALSE(CloseHandle(file)); // closed all the same
}

TEST_F(Files, CreateByHandleTakesNoOtherArgumentsThanItKnows) {
    const std::string path = Make("film", "kept");
    int something = 0;
    auto* const security = reinterpret_cast<SECURITY_ATTRIBUTES*>(&something);
    const struct {
        DWORD access, share;
        SECURITY_ATTRIBUTES* security;
        DWORD disposition, flags;
        HANDLE template_file;
    } kCases[] = {
        {0x80000000, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr},
        {GENERIC_WRITE, 1, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr},
        {GENERIC_WRITE, 0, security, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr},
        {GENERIC_WRITE, 0, nullptr, 3, FILE_ATTRIBUTE_NORMAL, nullptr},
        {GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr},
        {GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, &something},
    };
    for (const auto& row : kCases) {
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(CreateFileA(path.c_str(), row.access, row.share, row.security, row.disposition,
                              row.flags, row.template_file),
                  INVALID_HANDLE_VALUE);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
    EXPECT_EQ(CreateForWriting(Path("nowhere/film")), INVALID_HANDLE_VALUE);
    EXPECT_EQ(CreateForWriting(folder_), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Content(path), "kept");
}

TEST_F(Files, AreDeletedAndMovedButNeverReplaced) {
    Make("Film.kva", "film");
    Make("film.tmp", "rewritten");
    EXPECT_FALSE(MoveFileA(Path("film.tmp").c_str(), Path("Film.kva").c_str()));
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    EXPECT_EQ(Content(Path("Film.kva")), "film");
    EXPECT_TRUE(DeleteFileA(Path("FILM.KVA").c_str())); // the one that _lopen opens by this name
    EXPECT_TRUE(MoveFileA(Path("FILM.TMP").c_str(), Path("FILM.KVA").c_str()));
    EXPECT_EQ(Content(Path("FILM.KVA")), "rewritten");
    EXPECT_FALSE(std::filesystem::exists(Path("film.tmp")));

    EXPECT_FALSE(DeleteFileA(Path("nothing").c_str()));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(DeleteFileA(folder_.c_str()));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_FALSE(MoveFileA(Path("nothing").c_str(), Path("x").c_str()));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(MoveFileA(Path("FILM.KVA").c_str(), Path("nowhere/x").c_str()));
    EXPECT_FALSE(DeleteFileA(nullptr));
    EXPECT_FALSE(MoveFileA(Path("FILM.KVA").c_str(), nullptr));
}

TEST_F(Files, TheProgramFileIsGivenAsFarAsItFits) {
    std::array<char, 4096> name{};
    const DWORD length = GetModuleFileNameA(nullptr, name.data(), 4096);
    ASSERT_GT(length, 0U);
    EXPECT_EQ(length, std::strlen(name.data()));
    EXPECT_TRUE(std::string{name.data()}.ends_with("platform_base_tests"));
    EXPECT_EQ(GetModuleFileNameA(GetModuleHandleA(nullptr), name.data(), length + 1), length);
    EXPECT_EQ(GetModuleFileNameA(nullptr, name.data(), length), length);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(std::strlen(name.data()), length - 1);
    EXPECT_EQ(GetModuleFileNameA(AddModule(), name.data(), 4096), 0U);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
}

} // namespace
