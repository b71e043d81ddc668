#pragma once
// Turns the stream of bytes that a microphone gives into frames of a track that is open for
// editing. Frames are written over those that stand there, one after the other; of a frame that is
// only begun when the recording ends, the rest stays as it was.

#include "framework/base/Bytes.h"
#include "media/AudioFilekel.h"

#include <cstdint>
#include <vector>

namespace kelvo {

class CapturedFrames {
public:
    /// Begins at the track's current frame.
    /// @param end  number of the frame before which the recording ends, at the latest where the
    ///             track does
    void Begin(AudioFilekel& track, int end);
    /// Takes what was recorded and writes every frame that is whole; what comes after the end is
    /// left out. @return false when the track could not be written
    [[nodiscard]] bool Take(ByteView recorded);
    /// Writes the beginning of the last frame; harmless when there is none.
    [[nodiscard]] bool Finish();
    /// Whether every frame before the end is written, or none was begun.
    bool IsAtEnd() const;
    /// Number of the frame that was written last; that of the first one before.
    int LastWritten() const { return last_written_; }

private:
    bool ReadOldFrame(int frame);
    bool WriteFrame();

    AudioFilekel* track_ = nullptr; ///< none while nothing is recorded
    int end_ = 0;
    int last_written_ = 0;
    std::vector<std::uint8_t> frame_; ///< the frame in the making
    std::size_t filled_ = 0;
    std::vector<std::uint8_t> old_frame_; ///< what stands in its place
};

} // namespace kelvo
