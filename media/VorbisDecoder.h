#pragma once
// Decodes one logical Ogg Vorbis stream into interleaved PCM of 1 or 2 bytes a sample. It holds the
// state of libogg and libvorbis and nothing of a track: where the bytes come from, how they are cut
// into audio frames and who may use the decoder is VorbisFilekel's affair.

#include "framework/base/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kelvo {

/// Why a stream could not be set up. Each but the first two has its text in VorbisFilekel.
enum class VorbisFault : std::uint8_t {
    None,
    EmptyStream,     ///< less than one input step, and no page in it
    NotOgg,          ///< no page in the first input step
    FirstPage,       ///< the first page does not enter a stream
    InitialHeader,   ///< the first page holds no packet
    NotVorbis,       ///< the first packet is no Vorbis header
    SecondaryHeader, ///< the comment or set-up packet is broken or asks for absurd tables
    HeadersEndEarly, ///< the stream ends before three header packets
};

/// Where a decoder gets its bytes, in order.
class VorbisSource {
public:
    virtual ~VorbisSource() = default;
    /// Fills as much of `room` as there is; 0 at the end.
    virtual std::size_t Read(ByteSpan room) = 0;
};

class VorbisDecoder {
public:
    /// Bytes of the file that are taken at once.
    static constexpr std::size_t kInputStep = 4096;

    /// What one step of decoding gave.
    struct Chunk {
        std::size_t written = 0;  ///< bytes of PCM
        bool more = false;        ///< false: the stream has ended and the decoder is cleared
        bool out_of_step = false; ///< bytes lay between the pages, or a page was broken
        bool damaged = false;     ///< packets were lost or broken
    };

    VorbisDecoder();
    ~VorbisDecoder();
    VorbisDecoder(const VorbisDecoder&) = delete;
    VorbisDecoder& operator=(const VorbisDecoder&) = delete;

    /// Starts on a stream: reads its three header packets. Clears what was there before.
    [[nodiscard]] VorbisFault SetUp(VorbisSource& source);
    /// Decodes on; what a hole in the stream took away is silence, so that everything behind it
    /// keeps its place in time. What is decoded is what is still in the decoder and in its pages,
    /// then one input step is read. Stops early when `room` cannot take one more sample of all
    /// channels; nothing is lost then.
    [[nodiscard]] Chunk Decode(VorbisSource& source, ByteSpan room, unsigned bytes_per_sample);
    void Clear();

    bool IsSetUp() const;
    unsigned Channels() const { return channels_; }
    std::uint32_t SampleRate() const { return sample_rate_; }
    /// The stream's comments, in order.
    const std::vector<std::string>& Comments() const { return comments_; }
    const std::string& Vendor() const { return vendor_; }

private:
    struct State;

    VorbisFault ReadFirstHeader(VorbisSource& source);
    VorbisFault ReadSecondaryHeaders(VorbisSource& source);
    bool ReadStep(VorbisSource& source);
    std::size_t TakeSamples(ByteSpan room, unsigned bytes_per_sample);
    std::size_t TakeSilence(ByteSpan room, unsigned bytes_per_sample);
    bool NextPacket(Chunk& chunk);
    bool NextPage(VorbisSource& source, Chunk& chunk, bool& read);
    void DecodePacket(Chunk& chunk);
    void BridgeGap();

    std::unique_ptr<State> state_;
    unsigned channels_ = 0;
    std::uint32_t sample_rate_ = 0;
    std::vector<std::string> comments_;
    std::string vendor_;
};

/// The PCM of decoded samples: interleaved, per sample trunc(f * 32767) in 2 bytes, or
/// trunc(f * 127) + 127 in 1, clamped before the offset is added.
/// @param channels  one array of `count` samples each
/// @param pcm       count x channels x bytes_per_sample bytes
void ConvertSamples(std::span<const float* const> channels, std::size_t count,
                    unsigned bytes_per_sample, ByteSpan pcm);

} // namespace kelvo
