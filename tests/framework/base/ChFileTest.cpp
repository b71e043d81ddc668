#include "framework/base/ChFile.h"

#include "platform/base/file_calls.h"
#include "platform/base/files.h"
#include "tests/framework/base/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using platform::FileCalls;
using platform::ScopedFileCalls;
using platform::SystemFileCalls;

std::string Counting(std::size_t bytes) {
    std::string content(bytes, '\0');
    std::iota(content.begin(), content.end(), '\0');
    return content;
}

TEST(FileModes, OpenCreateAndRefuse) {
    const TemporaryFolder folder;
    const CString path = folder.File("film");
    ChFile file;
    EXPECT_FALSE(file.OpenReadOnly(path));
    EXPECT_FALSE(file.OpenReadWrite(path));
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.Handle(), ChFile::kNoHandle);
    EXPECT_TRUE(file.OpenReadWriteOrCreate(path));
    EXPECT_TRUE(file.IsWritable());
    EXPECT_EQ(file.Write("abc", 3), 3);
    EXPECT_FALSE(file.OpenReadOnly(path)); // open already
    EXPECT_FALSE(file.CreateFresh(path));
    EXPECT_TRUE(file.CloseFile());
    EXPECT_TRUE(file.CloseFile());
    EXPECT_EQ(file.FileName(), path);

    EXPECT_TRUE(file.OpenReadWriteOrCreate(path)); // keeps what is there
    EXPECT_EQ(file.Size(), 3);
    EXPECT_TRUE(file.CloseFile());
    EXPECT_TRUE(file.OpenReadOnly(path));
    EXPECT_FALSE(file.IsWritable());
    EXPECT_EQ(file.Write("x", 1), 0);
    EXPECT_TRUE(file.CloseFile());
    EXPECT_TRUE(file.CreateFresh(path));
    EXPECT_EQ(file.Size(), 0);
}

TEST(FileModes, TakeOverAHandle) {
    const TemporaryFolder folder;
    const CString path = folder.Write("film", "0123456789");
    const HFILE handle = _lopen(path.c_str(), OF_READ);
    ASSERT_NE(handle, HFILE_ERROR);
    _llseek(handle, 4, FILE_BEGIN);
    ChFile file;
    EXPECT_FALSE(file.Attach(ChFile::kNoHandle, path, ChFile::Access::ReadOnly));
    ASSERT_TRUE(file.Attach(handle, path, ChFile::Access::ReadOnly));
    EXPECT_EQ(file.Position(), 4);
    EXPECT_EQ(file.Handle(), handle);
    EXPECT_FALSE(file.IsWritable());
    EXPECT_TRUE(file.CloseFile());
    EXPECT_EQ(_lclose(handle), HFILE_ERROR); // it was the file's
}

TEST(FilePosition, IsTheRunningPosition) {
    const TemporaryFolder folder;
    ChFile file;
    char byte = 0;
    EXPECT_EQ(file.Read(&byte, 1), 0); // closed: nothing happens
    EXPECT_EQ(file.Write("x", 1), 0);
    ASSERT_TRUE(file.CreateFresh(folder.File("film")));
    EXPECT_EQ(file.Write("0123456789", 10), 10);
    EXPECT_EQ(file.Write("", 0), 10);
    EXPECT_EQ(file.Skip(-4), 6);
    EXPECT_EQ(file.Read(&byte, 1), 7);
    EXPECT_EQ(byte, '6');
    EXPECT_EQ(file.SkipForward(1), 8);
    EXPECT_EQ(file.Skip(-9), 8); // before the start
    EXPECT_TRUE(file.Seek(2));
    EXPECT_FALSE(file.Seek(-1));
    EXPECT_EQ(file.Position(), 2);
    EXPECT_EQ(file.Remaining(), 8);
    EXPECT_EQ(file.SeekToEnd(), 10);
    EXPECT_EQ(file.Remaining(), 0);
    char rest[10] = {};
    EXPECT_EQ(file.Read(rest, 10), 10); // at the end
    EXPECT_EQ(file.Size(), 10);
    EXPECT_EQ(file.Position(), 10);
}

TEST(FilePosition, ReachesBeyondTwoGibibytes) {
    const TemporaryFolder folder;
    ChFile file;
    ASSERT_TRUE(file.CreateFresh(folder.File("sparse")));
    EXPECT_TRUE(file.Seek(2147483648));
    EXPECT_EQ(file.Write("end", 3), 2147483651);
    EXPECT_EQ(file.Size(), 2147483651);
    EXPECT_EQ(file.Skip(-2), 2147483649);
    char byte = 0;
    EXPECT_EQ(file.Read(&byte, 1), 2147483650);
    EXPECT_EQ(byte, 'n');
}

TEST(FileWindow, HidesWhatLiesOutside) {
    const TemporaryFolder folder;
    ChFile file;
    ASSERT_TRUE(file.OpenReadOnly(folder.Write("pair", Counting(400))));
    ASSERT_TRUE(file.SetWindow(100, 300));
    EXPECT_EQ(file.Size(), 200);
    EXPECT_EQ(file.Position(), 0);
    EXPECT_EQ(file.Remaining(), 200);
    std::vector<std::uint8_t> bytes(250, 0xEE);
    EXPECT_EQ(file.ReadSome(bytes), 200U);
    EXPECT_EQ(bytes[0], 100);
    EXPECT_EQ(bytes[199], 299 % 256);
    EXPECT_EQ(bytes[200], 0xEE);
    EXPECT_EQ(file.Position(), 200);

    EXPECT_TRUE(file.Seek(190));
    EXPECT_EQ(file.Read(bytes.data(), 20), 200);
    EXPECT_TRUE(file.Seek(250)); // beyond the limit: the next read comes back to it
    EXPECT_EQ(file.Read(bytes.data(), 20), 200);
    EXPECT_TRUE(file.Seek(0));
    EXPECT_TRUE(file.ReadAll(ByteSpan(bytes).first(1)));
    EXPECT_EQ(bytes[0], 100);
    EXPECT_EQ(file.SeekToEnd(), 400); // the absolute length

    EXPECT_FALSE(file.SetWindow(300, 100));
    EXPECT_EQ(file.Size(), 400);            // no window
    EXPECT_TRUE(file.SetWindow(100, 5000)); // a claim beyond the end
    EXPECT_EQ(file.Size(), 4900);
    EXPECT_EQ(file.Remaining(), 300);
    EXPECT_TRUE(file.CloseFile());
    EXPECT_EQ(file.WindowLimit(), 0);
}

TEST(FileNumbers, AreLittleEndianAndWholeOrRefused) {
    const TemporaryFolder folder;
    ChFile file;
    ASSERT_TRUE(file.CreateFresh(folder.File("index")));
    const std::uint32_t values[] = {0x04030201, 0xFFFFFFFF, 1052};
    EXPECT_TRUE(file.WriteU32(0xA0B0C0D0));
    EXPECT_TRUE(file.WriteU32Array(values));
    EXPECT_EQ(TemporaryFolder::Content(file.FileName()),
              std::string("\xD0\xC0\xB0\xA0\1\2\3\4\xFF\xFF\xFF\xFF\x1C\4\0\0", 16));
    std::uint32_t read[3] = {};
    std::uint32_t one = 77;
    EXPECT_TRUE(file.Seek(4));
    EXPECT_TRUE(file.ReadU32Array(read));
    EXPECT_THAT(read, testing::ElementsAreArray(values));
    EXPECT_TRUE(file.Seek(14));
    EXPECT_FALSE(file.ReadU32(one));
    EXPECT_EQ(one, 77U);
    EXPECT_TRUE(file.Seek(8));
    EXPECT_FALSE(file.ReadU32Array(read));
}

TEST(FileText, IsFormattedAndCutAt4095Bytes) {
    const TemporaryFolder folder;
    ChFile file;
    ASSERT_TRUE(file.CreateFresh(folder.File("text")));
    EXPECT_EQ(file.WriteFormatted("%s=%d\r\n", "a", 5), 5);
    EXPECT_EQ(file.WriteFormatted("%s", std::string(9000, 'x').c_str()), 5 + 4095);
    EXPECT_EQ(TemporaryFolder::Content(file.FileName()), "a=5\r\n" + std::string(4095, 'x'));
}

TEST(FailingFile, TellsAShortWriteAFailedReadAndALateError) {
    const TemporaryFolder folder;
    ChFile file;
    ASSERT_TRUE(file.CreateFresh(folder.File("film")));
    const std::vector<std::uint8_t> bytes(100, 7);
    FileCalls calls = SystemFileCalls();
    {
        calls.write = [](int descriptor, const void* data, std::size_t count) -> ssize_t {
            static bool full = false;
            if (full) {
                errno = ENOSPC;
                return -1;
            }
            full = true;
            return SystemFileCalls().write(descriptor, data, count / 2);
        };
        const ScopedFileCalls scope(calls);
        EXPECT_FALSE(file.WriteAll(bytes));
        EXPECT_EQ(file.Position(), 50); // what did reach the file
        EXPECT_EQ(file.Write(bytes.data(), 100), 50);
    }
    calls = SystemFileCalls();
    calls.read = [](int, void*, std::size_t) -> ssize_t {
        errno = EIO;
        return -1;
    };
    calls.close = [](int descriptor) {
        SystemFileCalls().close(descriptor);
        errno = EIO;
        return -1;
    };
    const ScopedFileCalls scope(calls);
    ASSERT_TRUE(file.Seek(0));
    std::vector<std::uint8_t> read(10);
    EXPECT_EQ(file.ReadSome(read), 0U);
    EXPECT_TRUE(file.ReadFailed());
    EXPECT_EQ(file.Position(), 0);
    EXPECT_FALSE(file.CloseFile());
    EXPECT_FALSE(file.IsOpen());
}

} // namespace
} // namespace kelvo
