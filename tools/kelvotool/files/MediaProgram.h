#pragma once
// The separate program that knows foreign formats, kelvotool-media: finds it, runs it, and speaks
// the stream of MediaStream.h with it.

#include "framework/base/Bytes.h"
#include "tools/kelvotool/report/Reporter.h"
#include "tools/media_stream/MediaStream.h"

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kelvo::tool {

class MediaProgram {
public:
    enum class Task : std::uint8_t {
        Encode, ///< we write the stream
        Decode, ///< we read it
    };

    MediaProgram() = default;
    /// Ends the program, if it runs.
    ~MediaProgram();
    MediaProgram(const MediaProgram&) = delete;
    MediaProgram& operator=(const MediaProgram&) = delete;

    /// Starts it: the one beside this program, else the one on PATH.
    /// @param arguments  behind "encode" or "decode"
    /// @return false after it was reported that there is none
    [[nodiscard]] bool Start(Task task, const std::vector<std::string>& arguments,
                             Reporter& reporter);

    // Encode.

    void WriteBlock(std::uint32_t tag, ByteView head, ByteView rest = {});
    bool Failed() const { return failed_; }

    // Decode.

    /// The next block; its bytes live until the next call.
    /// @return false at the end, and where the stream is cut off or broken
    bool ReadBlock(std::uint32_t& tag, ByteView& bytes);

    /// Closes the pipe and waits. @return its exit code; kNotDone when a signal ended it
    int Finish();

private:
    bool WriteAll(ByteView bytes);
    bool ReadAll(ByteSpan bytes);

    pid_t process_ = -1;
    int pipe_ = -1;
    bool failed_ = false;
    std::vector<std::uint8_t> block_;
};

} // namespace kelvo::tool
