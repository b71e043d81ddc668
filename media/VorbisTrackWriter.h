#pragma once
// Makes the Vorbis form of a sound track from PCM: the signature, the description, the track's own
// header and an Ogg Vorbis stream. The file has its name only once it is whole.

#include "framework/base/Bytes.h"
#include "framework/base/CString.h"
#include "framework/base/Result.h"
#include "media/AudioHeader.h"
#include "media/NewFile.h"

#include <cstdint>
#include <memory>

namespace kelvo {

class VorbisTrackWriter {
public:
    /// -0.1 (smallest) to 1 (best), as the encoder has it.
    static constexpr float kUsualQuality = 0.4F;

    VorbisTrackWriter();
    VorbisTrackWriter(const VorbisTrackWriter&) = delete;
    VorbisTrackWriter& operator=(const VorbisTrackWriter&) = delete;
    /// Without Finish nothing is left behind.
    ~VorbisTrackWriter();

    /// @param header  of the PCM that follows; it is stored in the track as it is
    /// @return what CheckAudioHeader says of it, BadValue when the encoder knows no such rate,
    ///         or why the file cannot be made
    [[nodiscard]] Error Begin(const CString& name, const AudioHeader& header,
                              Existing existing = Existing::Refuse, float quality = kUsualQuality);
    /// @param pcm  any number of bytes; frames and even samples may be cut anywhere
    [[nodiscard]] Error Append(ByteView pcm);
    /// Fills the last frame up with silence, ends the stream and gives the file its name.
    [[nodiscard]] Error Finish();

private:
    struct Encoder;

    Error WriteTrackHeader(std::uint32_t frame_count);
    Error WriteStreamHeaders();
    Error Encode(ByteView samples);
    Error WritePackets();
    Error WritePage(ByteView head, ByteView body);

    NewFile file_;
    AudioHeader header_;
    std::unique_ptr<Encoder> encoder_; // null while nothing is being written
    std::uint64_t offset_ = 0;         // of the next page
    std::uint64_t pcm_bytes_ = 0;      // appended so far
    std::uint8_t half_sample_ = 0;     // first byte of a sample that was cut
    bool has_half_sample_ = false;
};

} // namespace kelvo
