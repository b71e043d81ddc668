#include "framework/base/ChFile.h"

#include "framework/base/ByteReader.h"
#include "framework/base/ByteWriter.h"
#include "platform/base/files.h"

#include <algorithm>
#include <bit>
#include <cstdarg>
#include <cstdio>
#include <tuple>

namespace kelvo {
namespace {

constexpr std::size_t kFormattedWriteBytes = 4096;
/// What one call of the system's 32-bit read and write takes.
constexpr std::size_t kLargestTransfer = 0x40000000;
constexpr UINT kTransferFailed = static_cast<UINT>(HFILE_ERROR);

constexpr int kNormalAttributes = 0;

/// Values converted at a time where memory and file differ in byte order.
constexpr std::size_t kSwapBlock = 256;

} // namespace

ChFile::~ChFile() {
    CloseFile();
}

bool ChFile::Open(HINSTANCE module, const CString& name, const char* directory, OpenMode mode) {
    if (open_) return false;
    name_ = ResolvePath(module, name, directory);
    position_ = 0;
    ClearWindow();
    const bool read_only = mode == OpenMode::ReadOnly;
    HFILE handle = _lopen(name_.Text(), read_only ? OF_READ : OF_READWRITE);
    if (handle == HFILE_ERROR && mode == OpenMode::ReadWriteOrCreate) {
        handle = _lcreat(name_.Text(), kNormalAttributes);
    }
    if (handle == HFILE_ERROR) return false;
    SetOpen(handle, read_only ? Access::ReadOnly : Access::ReadWrite);
    return true;
}

bool ChFile::OpenReadWriteOrCreate(const CString& name, const char* directory) {
    return Open(nullptr, name, directory, OpenMode::ReadWriteOrCreate);
}

bool ChFile::OpenReadWrite(const CString& name, const char* directory) {
    return Open(nullptr, name, directory, OpenMode::ReadWrite);
}

bool ChFile::OpenReadOnly(const CString& name, const char* directory) {
    return Open(nullptr, name, directory, OpenMode::ReadOnly);
}

bool ChFile::CreateFresh(HINSTANCE module, const CString& name, const char* directory) {
    if (open_) return false;
    name_ = ResolvePath(module, name, directory);
    position_ = 0;
    ClearWindow();
    const HFILE handle = _lcreat(name_.Text(), kNormalAttributes);
    if (handle == HFILE_ERROR) return false;
    SetOpen(handle, Access::ReadWrite);
    return true;
}

bool ChFile::Attach(HFILE handle, const CString& path, Access access) {
    if (open_ || handle == kNoHandle) return false;
    const std::int64_t position = kelvo::platform::SeekFile(handle, 0, FILE_CURRENT);
    if (position < 0) return false;
    name_ = path;
    position_ = position;
    ClearWindow();
    SetOpen(handle, access);
    return true;
}

void ChFile::SetOpen(HFILE handle, Access access) {
    handle_ = handle;
    open_ = true;
    writable_ = access == Access::ReadWrite;
    read_failed_ = false;
}

bool ChFile::CloseFile() {
    const bool closed = !open_ || _lclose(handle_) != HFILE_ERROR;
    handle_ = kNoHandle;
    position_ = 0;
    ClearWindow();
    open_ = false;
    writable_ = false;
    return closed;
}

bool ChFile::SetWindow(std::int64_t base, std::int64_t limit) {
    ClearWindow();
    if (!open_ || base < 0 || limit < 0 || (limit > 0 && limit < base)) return false;
    if (!SeekAbsolute(base)) return false;
    window_base_ = base;
    window_limit_ = limit;
    position_ = 0;
    return true;
}

bool ChFile::SeekAbsolute(std::int64_t offset) {
    return open_ && offset >= 0 && kelvo::platform::SeekFile(handle_, offset, FILE_BEGIN) == offset;
}

std::int64_t ChFile::Write(const void* bytes, std::uint32_t count) {
    std::ignore = WriteAll({static_cast<const std::uint8_t*>(bytes), count}); // the position tells
    return position_;
}

std::int64_t ChFile::Read(void* bytes, std::uint32_t count) {
    std::ignore = ReadSome({static_cast<std::uint8_t*>(bytes), count}); // the position tells
    return position_;
}

std::int64_t ChFile::Skip(std::int64_t count) {
    if (open_ && kelvo::platform::SeekFile(handle_, count, FILE_CURRENT) >= 0) position_ += count;
    return position_;
}

std::int64_t ChFile::SkipForward(std::uint32_t count) {
    return Skip(count);
}

std::int64_t ChFile::WriteFormatted(const char* format, ...) {
    char text[kFormattedWriteBytes];
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    if (length < 0) return position_;
    return Write(text, static_cast<std::uint32_t>(
                           std::min(static_cast<std::size_t>(length), sizeof text - 1)));
}

std::int64_t ChFile::Remaining() {
    std::int64_t end = FileLength();
    if (window_limit_ > 0) end = std::min(end, window_limit_);
    return std::max<std::int64_t>(end - window_base_ - position_, 0);
}

std::int64_t ChFile::Size() {
    return window_limit_ > 0 ? window_limit_ - window_base_ : FileLength();
}

std::int64_t ChFile::FileLength() {
    return open_ ? kelvo::platform::FileSize(handle_) : -1;
}

std::int64_t ChFile::SeekToEnd() {
    if (!open_) return position_;
    const std::int64_t end = kelvo::platform::SeekFile(handle_, 0, FILE_END);
    if (end >= 0) position_ = end;
    return position_;
}

bool ChFile::Seek(std::int64_t position) {
    if (position < 0 || !SeekAbsolute(window_base_ + position)) return false;
    position_ = position;
    return true;
}

std::int64_t ChFile::WindowRest() const {
    return window_limit_ - window_base_ - position_;
}

std::size_t ChFile::ReadSome(ByteSpan bytes) {
    read_failed_ = false;
    if (!open_) return 0;
    if (window_limit_ > 0) {
        if (WindowRest() < 0) {
            read_failed_ = !Seek(window_limit_ - window_base_);
            return 0;
        }
        bytes = bytes.first(std::min(bytes.size(), static_cast<std::size_t>(WindowRest())));
    }
    std::size_t done = 0;
    while (done < bytes.size()) {
        const auto wanted = static_cast<UINT>(std::min(bytes.size() - done, kLargestTransfer));
        const UINT read = _lread(handle_, bytes.data() + done, wanted);
        if (read == 0 || read == kTransferFailed) {
            read_failed_ = read != 0;
            break;
        }
        done += read;
    }
    position_ += static_cast<std::int64_t>(done);
    return done;
}

bool ChFile::ReadAll(ByteSpan bytes) {
    return open_ && ReadSome(bytes) == bytes.size();
}

bool ChFile::WriteAll(ByteView bytes) {
    if (!open_) return false;
    while (!bytes.empty()) {
        const auto wanted = static_cast<UINT>(std::min(bytes.size(), kLargestTransfer));
        const UINT written = _lwrite(handle_, reinterpret_cast<const char*>(bytes.data()), wanted);
        if (written == kTransferFailed) return false;
        position_ += written;
        if (written < wanted) return false; // a full disk
        bytes = bytes.subspan(written);
    }
    return true;
}

bool ChFile::ReadU32(std::uint32_t& value) {
    std::uint8_t bytes[4];
    if (!ReadAll(bytes)) return false;
    value = ByteReader(bytes).ReadU32();
    return true;
}

bool ChFile::WriteU32(std::uint32_t value) {
    std::uint8_t bytes[4];
    ByteWriter(bytes).WriteU32(value);
    return WriteAll(bytes);
}

bool ChFile::ReadU32Array(std::span<std::uint32_t> values) {
    const ByteSpan bytes{reinterpret_cast<std::uint8_t*>(values.data()), values.size_bytes()};
    if (!ReadAll(bytes)) return false;
    if constexpr (std::endian::native != std::endian::little) {
        for (std::uint32_t& value : values) {
            const auto* stored = reinterpret_cast<const std::uint8_t*>(&value);
            value = ByteReader({stored, sizeof value}).ReadU32();
        }
    }
    return true;
}

bool ChFile::WriteU32Array(std::span<const std::uint32_t> values) {
    if constexpr (std::endian::native == std::endian::little) {
        return WriteAll(
            {reinterpret_cast<const std::uint8_t*>(values.data()), values.size_bytes()});
    }
    std::uint8_t block[kSwapBlock * 4];
    while (!values.empty()) {
        const std::size_t count = std::min(values.size(), kSwapBlock);
        ByteWriter writer(block);
        for (const std::uint32_t value : values.first(count)) {
            writer.WriteU32(value);
        }
        if (!WriteAll(writer.Written())) return false;
        values = values.subspan(count);
    }
    return true;
}

} // namespace kelvo
