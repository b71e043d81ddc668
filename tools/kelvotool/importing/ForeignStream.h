#pragma once
// What kelvotool-media makes of a foreign file, checked as it comes.

#include "framework/base/Bytes.h"
#include "tools/kelvotool/files/MediaProgram.h"
#include "tools/kelvotool/report/Reporter.h"
#include "tools/media_stream/MediaStream.h"

#include <cstdint>
#include <optional>
#include <string>

namespace kelvo::tool {

class ForeignStream {
public:
    enum class Part : std::uint8_t { Images, Sound };

    explicit ForeignStream(Reporter& reporter) : reporter_(reporter) {}

    /// Starts the program and reads the description.
    /// @param part  what is asked for; the other may come all the same and is passed over
    /// @return false after it was reported why not
    [[nodiscard]] bool Open(const std::string& name, Part part);
    const std::optional<media_stream::PictureFormat>& Picture() const { return picture_; }
    const std::optional<media_stream::SoundFormat>& Sound() const { return sound_; }

    /// The next block of a kind; its bytes live until the next call.
    /// @return false at the end, or after it was reported that the stream is not whole
    bool Next(std::uint32_t tag, ByteView& bytes);

private:
    Reporter& reporter_;
    MediaProgram program_;
    std::optional<media_stream::PictureFormat> picture_ = {};
    std::optional<media_stream::SoundFormat> sound_ = {};
    bool ended_ = false;
};

} // namespace kelvo::tool
