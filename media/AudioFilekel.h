#pragma once
// A sound track, whichever of its two forms the file has: a record container of audio frames, or a
// Vorbis stream. UI thread only. What opens is safe to play: its description was checked.

#include "container/ZFilekel.h"
#include "framework/base/Bytes.h"
#include "framework/base/CString.h"
#include "media/AudioHeader.h"
#include "media/DamagedFilm.h"
#include "media/VorbisFilekel.h"
#include "platform/base/wave_format.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

namespace kelvo {

/// What a failed ReadNextAudioFrame gives as frame number.
inline constexpr int NoFrameIndex = 1410065407;

class AudioFilekel : public ZFilekel {
public:
    AudioFilekel() = default;
    /// Closes.
    ~AudioFilekel() override;

    /// The file's first bytes decide the form, never its name; of a .kva it is the sound.
    [[nodiscard]] bool OpenForRead(const CString& name);
    /// Only a container of type 99 stays open; the Vorbis form is refused in a box.
    [[nodiscard]] bool OpenExisting(const CString& name);
    /// A new track in container form; type 69 is refused in a box.
    [[nodiscard]] bool Create(const CString& name, int type, std::uint32_t sample_rate,
                              std::uint32_t bytes_per_sample, std::uint32_t frames_per_second);
    bool Close();

    /// @param frame_number  one more than the number of the frame that was read; NoFrameIndex when
    ///                      there is none
    /// @param capture_time  left alone when there is no frame
    bool ReadNextAudioFrame(int& frame_number, std::uint32_t& capture_time);
    /// @param capture_time  written for the container form only
    bool ReadAudioFrame(int frame, std::uint32_t& capture_time);
    bool GoToAudioFrame(int frame);
    /// @param frame_bytes  FrameBytes of them
    [[nodiscard]] bool AppendAudioFrame(ByteView frame_bytes, std::uint32_t capture_time);
    [[nodiscard]] bool ReplaceAudioFrame(int frame, ByteView frame_bytes);

    /// The number of the frame that the next read gives.
    int CurrentAudioFrame() const;
    /// FrameBytes bytes; valid until the next read or close.
    const std::uint8_t* GetFrameData() const;
    ByteView FrameData() const;
    int FrameCount() const;
    bool IsTrackOpen() const;
    /// 0 closed, 1 reading, 3 editing, 4 new.
    int TrackMode() const;
    bool IsVorbis() const { return vorbis_ != nullptr; }
    /// Null for the container form.
    const VorbisFilekel* Vorbis() const { return vorbis_.get(); }

    std::uint32_t SampleRate() const { return header_.SampleRate; }
    std::uint32_t BytesPerSample() const { return header_.BytesPerSample; }
    /// Above 0 while the track is open.
    std::uint32_t nFramesAlSec() const { return header_.nFramesAlSec; }
    std::uint32_t FrameBytes() const { return header_.FrameBytes; }
    const WAVEFORMATEX* GetWaveFormat() const { return &header_.Format; }
    const AudioHeader& Header() const { return header_; }
    /// True when frame `frame` begins with the second byte of a 16-bit sample: frames of an odd
    /// length cut every other sample in two, and whoever starts to play there leaves that byte out.
    bool StartsInsideSample(int frame) const;
    /// What keeps a file from being a sound track, with the offset in the user header of a
    /// container or in the Vorbis track; none after an opening that succeeded.
    const Error& HeaderError() const { return header_error_; }

private:
    bool TakeHeader();
    bool OpenContainer(const CString& name);
    bool OpenDamaged(const CString& name);
    bool OpenVorbis(const CString& name, const std::optional<TrackWindow>& window);
    void SilenceLostFrame();
    Error TakeVorbisHeader(const VorbisFilekel& vorbis);
    bool RefusedForVorbis() const;
    std::uint32_t SideCaptureTime() const;

    AudioHeader header_;
    std::array<std::uint8_t, kAudioSideLength> side_{}; // composed for appending
    std::shared_ptr<VorbisFilekel> vorbis_;             // null for the container form; shared only
                                                        // with an operation that is going on
    Error header_error_;
    DamagedFilmNotice notice_;
};

} // namespace kelvo
