#pragma once
// One track of a foreign file, decoded frame by frame. The file is read through our own calls
// alone: no name inside it, no play list and no address makes the libraries open anything else, and
// what they may allocate is limited.

#include "tools/media/Libraries.h"
#include "tools/media/Report.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kelvo::media_tool {

/// Limits what hostile files can make this process allocate. Call once, first.
void LimitMemory();

class ForeignFile {
public:
    explicit ForeignFile(Report& report) : report_(report) {}
    ~ForeignFile();
    ForeignFile(const ForeignFile&) = delete;
    ForeignFile& operator=(const ForeignFile&) = delete;

    /// Finds out what the file is. @return false after it was reported why it cannot be read
    bool Open(const std::string& name);
    /// Chooses the track that a person would be shown or hear.
    /// @return false when there is none, or, after it was reported, when it cannot be decoded
    bool Choose(AVMediaType type);

    /// The next frame, until the next call; null at the end. What is damaged is reported and left
    /// out. Its `pts` counts from the file's start, in the stream's time base, AV_NOPTS_VALUE when
    /// nobody knows.
    const AVFrame* NextFrame();

    const AVStream& Stream() const { return *stream_; }
    const AVDictionary* Texts() const { return context_->metadata; }
    /// In seconds, as the file claims; 0 when it does not.
    double Duration() const;
    /// The same of the chosen track alone, where the file says it in its description.
    double OwnDuration() const;

private:
    static int ReadPiece(void* self, std::uint8_t* bytes, int count);
    static std::int64_t Seek(void* self, std::int64_t offset, int whence);
    static int RefuseOpening(AVFormatContext* context, AVIOContext** io, const char* url, int flags,
                             AVDictionary** options);
    /// Gives the decoder its next packet, or tells it that there are no more.
    void Feed();
    bool ReadPacket();
    bool IsSound(const AVFrame& frame);

    Report& report_;
    int file_ = -1;
    AVFormatContext* context_ = nullptr;
    AVIOContext* io_ = nullptr;
    AVStream* stream_ = nullptr;
    CodecHandle coder_;
    PacketHandle packet_;
    FrameHandle frame_;
    std::vector<std::int64_t> durations_; ///< of the streams, in their time bases, as described
    std::int64_t start_ = 0;              ///< of the file, in the stream's time base
    bool at_end_ = false;
};

} // namespace kelvo::media_tool
