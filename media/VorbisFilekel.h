#pragma once
// The Vorbis form of a sound track: a short fixed header and an Ogg Vorbis stream, decoded into PCM
// and cut into audio frames. One track decodes at a time in the whole process; when another one
// reads, it takes the decoder over, and the first finds its place again at its next read.

#include "container/AVDirectory.h"
#include "framework/base/Bytes.h"
#include "framework/base/CObj.h"
#include "framework/base/CString.h"
#include "framework/base/ChFile.h"
#include "framework/base/Result.h"
#include "media/VorbisDecoder.h"
#include "media/VorbisTrackHeader.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace kelvo {

class VorbisFilekel : public CObj {
public:
    /// Each of the two buffers that PCM gathers in.
    static constexpr std::size_t kPcmBufferSize = 0x80000;
    /// A read offset beyond this moves the pending bytes to the other buffer.
    static constexpr std::size_t kSwitchOffset = 400000;

    VorbisFilekel();
    VorbisFilekel(const VorbisFilekel&) = delete;
    VorbisFilekel& operator=(const VorbisFilekel&) = delete;
    /// Closes.
    ~VorbisFilekel() override;

    /// True when the file (of a .kva: its sound) begins with the signature.
    [[nodiscard]] static bool IsVorbisFile(const CString& name);
    /// The same of a track that was found elsewhere than the film's directory says.
    [[nodiscard]] static bool IsVorbisTrack(const CString& name, const TrackWindow& window);

    /// A stream that cannot be set up is reported in a box; the track is then open and silent.
    /// @param header_length  of the track header behind the description
    /// @return false when there is no such file, no signature, or a description that contradicts
    ///         itself (LastError() tells)
    /// @param window  where the track lies; none: where the directory of a .kva says, or the file
    [[nodiscard]] bool OpenForRead(const CString& name, std::uint32_t header_length,
                                   const std::optional<TrackWindow>& window = {});
    bool Close();

    /// Fills the frame buffer with the next FrameBytes bytes of PCM. Where the stream is shorter
    /// than the frame count says, the rest of the buffer keeps its older bytes.
    /// @return false when all frames of the track have been delivered, and while a positioning that
    ///         shows its progress goes on
    bool ReadNextFrame();
    /// The next frame read will be `frame`, taken into 0 to the frame count. Long ways show the
    /// progress "Attendere..."; when it is cancelled the track is at frame 0.
    bool GoToFrame(int frame);

    bool IsOpen() const { return file_.IsOpen(); }
    int FrameCount() const;
    /// Frames delivered since the start of the stream: the number of the next one.
    int CurrentFrame() const;
    /// FrameBytes bytes; valid until the track is read or closed.
    ByteView FrameBuffer() const { return frame_buffer_; }
    ByteView HeaderBuffer() const { return header_buffer_; }
    const VorbisDescription& Description() const { return description_; }
    /// False when the stream ended before it filled the last frame that was read.
    bool LastFrameComplete() const { return last_frame_complete_; }
    /// True once bytes of the stream were lost or broken since the track was opened. The box that
    /// says so is shown by the next read, once for each opening.
    bool StreamDamaged() const { return stream_damaged_; }
    /// False when the stream could not be set up.
    bool HasStream() const { return setup_fault_ == VorbisFault::None; }
    const CString& FileName() const { return file_.FileName(); }

    // As the stream itself reports them.
    const CString& Comments() const { return comments_; }
    const CString& Vendor() const { return vendor_; }
    unsigned StreamChannels() const { return stream_channels_; }
    std::uint32_t StreamSampleRate() const { return stream_sample_rate_; }

    /// Why the last opening failed, with the offset in the track.
    const Error& LastError() const { return last_error_; }

private:
    struct PcmBuffer {
        std::vector<std::uint8_t> bytes;
        std::size_t read_offset = 0;
    };
    Error ReadDescription(std::uint32_t header_length);
    void StartDecoder();
    void StopDecoder();
    VorbisFault TakeDecoder();
    std::size_t DecodeChunk(PcmBuffer& buffer, std::size_t destination);
    bool DecodeMore();
    void ShowDamageOnce();
    void FillFrame();
    bool SkipBytes(std::uint64_t count);
    void ResetPcm();
    PcmBuffer& InUse() { return pcm_[in_use_]; }

    std::uint32_t header_length_ = 0;
    VorbisDescription description_;
    std::uint32_t current_frame_ = 0;
    std::vector<std::uint8_t> frame_buffer_;
    std::vector<std::uint8_t> header_buffer_;
    ChFile file_;
    std::array<PcmBuffer, 2> pcm_;
    std::size_t in_use_ = 0;
    std::size_t pending_ = 0;         // decoded bytes not yet delivered, from the read offset on
    std::uint64_t decoded_bytes_ = 0; // PCM taken from the decoder since the stream's start
    bool end_of_stream_ = true;
    bool positioning_ = false; // a long way is going on, and windows may answer
    bool last_frame_complete_ = true;
    bool stream_damaged_ = false;
    bool out_of_step_ = false;  // bytes lay between the pages, or a page was broken
    bool damage_shown_ = false; // once for each opening
    VorbisFault setup_fault_ = VorbisFault::EmptyStream;
    Error last_error_;
    CString comments_;
    CString vendor_;
    unsigned stream_channels_ = 0;
    std::uint32_t stream_sample_rate_ = 0;
};

} // namespace kelvo
