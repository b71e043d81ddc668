#pragma once
// The framework's file object. Positions are relative to an optional window inside the file, whose
// limit no read passes. It shows no messages; the operations that return a position have a checked
// form beside them for callers who must know that every byte went through. Not for two threads at
// once.

#include "framework/base/Bytes.h"
#include "framework/base/CString.h"
#include "framework/base/FilePaths.h"
#include "framework/base/Stream.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvo {

class ChFile : public Stream {
public:
    static constexpr std::uint32_t kClassId = 4040105;
    static constexpr HFILE kNoHandle = -1;

    enum class OpenMode : std::uint8_t {
        ReadWriteOrCreate = 0, ///< made when it cannot be opened
        ReadWrite = 1,         ///< must exist
        ReadOnly = 2,          ///< must exist
    };
    enum class Access : std::uint8_t { ReadOnly, ReadWrite };

    explicit ChFile(std::uint32_t class_id = kClassId) : Stream(class_id) {}
    ChFile(const ChFile&) = delete;
    ChFile& operator=(const ChFile&) = delete;
    /// Closes.
    ~ChFile() override;

    /// A bare name is resolved against the directory, or without one against the program's.
    /// @param module     whose directory that is; null is the program
    /// @param directory  ends with a separator; null or empty for the program's
    /// @return false when already open or when the system refuses
    [[nodiscard]] bool Open(HINSTANCE module, const CString& name, const char* directory,
                            OpenMode mode);
    [[nodiscard]] bool OpenReadWriteOrCreate(const CString& name, const char* directory = nullptr);
    [[nodiscard]] bool OpenReadWrite(const CString& name, const char* directory = nullptr);
    [[nodiscard]] bool OpenReadOnly(const CString& name, const char* directory = nullptr);
    /// Makes the file or cuts it to nothing; open for reading and writing.
    [[nodiscard]] bool CreateFresh(HINSTANCE module, const CString& name, const char* directory);
    [[nodiscard]] bool CreateFresh(const CString& name, const char* directory = nullptr) {
        return CreateFresh(nullptr, name, directory);
    }
    /// Takes over a handle that was opened elsewhere (a file created exclusively or locked); ChFile
    /// closes it from now on. False when already open or when the handle is none.
    [[nodiscard]] bool Attach(HFILE handle, const CString& path, Access access);
    /// Forgets the window, too. @return false when closing reports that data did not reach the
    /// file; true for a file that is not open
    bool CloseFile();

    bool IsOpen() const { return open_; }
    bool IsWritable() const { return writable_; }
    /// For syncing and locking; kNoHandle when closed.
    HFILE Handle() const { return handle_; }
    /// The full path; kept after closing.
    const CString& FileName() const { return name_; }

    /// From now on positions count from `base` and reads stop at `limit` (both absolute; limit 0:
    /// none; a limit beyond the file's end is allowed, a damaged file may claim it). The position
    /// becomes 0 and the file seeks there.
    /// @return false when the file is closed, or for a limit below the base; there is no window
    /// then
    [[nodiscard]] bool SetWindow(std::int64_t base, std::int64_t limit);
    void ClearWindow() { window_base_ = window_limit_ = 0; }
    std::int64_t WindowBase() const { return window_base_; }
    std::int64_t WindowLimit() const { return window_limit_; }

    // The slots of the stream.
    std::int64_t Write(const void* bytes, std::uint32_t count) override;
    std::int64_t Read(void* bytes, std::uint32_t count) override;
    std::int64_t Skip(std::int64_t count) override;
    std::int64_t SkipForward(std::uint32_t count) override;
    [[gnu::format(printf, 2, 3)]] std::int64_t WriteFormatted(const char* format, ...) override;
    std::int64_t Remaining() override;
    std::int64_t Position() const override { return position_; }

    /// Length of the window, or of the file.
    std::int64_t Size();
    /// Length of the file, whatever the window; -1 when it cannot be told.
    std::int64_t FileLength();
    /// The position becomes the absolute length of the file.
    std::int64_t SeekToEnd();
    /// To an absolute position, the window's base added.
    [[nodiscard]] bool Seek(std::int64_t position);

    /// Fills as much of the span as there is before the end (or the limit): one call, any size.
    /// @return bytes read; fewer than asked also when the system fails, see ReadFailed()
    [[nodiscard]] std::size_t ReadSome(ByteSpan bytes);
    /// True when the last read was cut by an error of the system rather than by the end.
    bool ReadFailed() const { return read_failed_; }
    /// True when every byte of the span was filled.
    [[nodiscard]] bool ReadAll(ByteSpan bytes);
    /// True when every byte reached the file.
    [[nodiscard]] bool WriteAll(ByteView bytes);

    // Little-endian 32-bit values, whole or not at all.
    [[nodiscard]] bool ReadU32(std::uint32_t& value);
    [[nodiscard]] bool WriteU32(std::uint32_t value);
    /// Reads straight into the span.
    [[nodiscard]] bool ReadU32Array(std::span<std::uint32_t> values);
    [[nodiscard]] bool WriteU32Array(std::span<const std::uint32_t> values);

private:
    void SetOpen(HFILE handle, Access access);
    bool SeekAbsolute(std::int64_t offset);
    std::int64_t WindowRest() const;

    HFILE handle_ = kNoHandle;
    std::int64_t position_ = 0; // relative to the window base
    CString name_;
    std::int64_t window_base_ = 0;
    std::int64_t window_limit_ = 0;
    bool open_ = false;
    bool writable_ = false;
    bool read_failed_ = false;
};

} // namespace kelvo
