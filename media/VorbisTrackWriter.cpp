#include "media/VorbisTrackWriter.h"

#include "container/ContainerHeader.h"
#include "framework/base/ByteWriter.h"
#include "media/VorbisTrackHeader.h"

#include <ogg/ogg.h>
#include <vorbis/codec.h>
#include <vorbis/vorbisenc.h>

#include <algorithm>
#include <array>
#include <vector>

namespace kelvo {

namespace {

constexpr int kStreamSerial = 1; // a file holds one stream, and the same sound gives the same file
constexpr std::size_t kSamplesAtOnce = 1024;
constexpr std::size_t kTrackHeaderSize =
    static_cast<std::size_t>(kVorbisHeaderOffset) + kAudioHeaderSize;
constexpr std::uint8_t kCentre8 = 127;

float SampleAt(ByteView pcm, std::size_t index, std::uint32_t bytes_per_sample) {
    if (bytes_per_sample == 1) return static_cast<float>(pcm[index] - kCentre8) / 127.0F;
    const unsigned value = pcm[2 * index] | static_cast<unsigned>(pcm[2 * index + 1]) << 8U;
    return static_cast<float>(static_cast<std::int16_t>(value)) / 32767.0F;
}

} // namespace

struct VorbisTrackWriter::Encoder {
    vorbis_info info{};
    vorbis_comment comment{};
    vorbis_dsp_state dsp{};
    vorbis_block block{};
    ogg_stream_state stream{};
    bool running = false; // all but the info and the comment

    Encoder() {
        vorbis_info_init(&info);
        vorbis_comment_init(&comment);
    }
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;
    ~Encoder() {
        if (running) {
            ogg_stream_clear(&stream);
            vorbis_block_clear(&block);
            vorbis_dsp_clear(&dsp);
        }
        vorbis_comment_clear(&comment);
        vorbis_info_clear(&info);
    }
    bool Start(std::uint32_t sample_rate, float quality) {
        if (vorbis_encode_init_vbr(&info, 1, static_cast<long>(sample_rate), quality) != 0) {
            return false;
        }
        vorbis_analysis_init(&dsp, &info);
        vorbis_block_init(&dsp, &block);
        ogg_stream_init(&stream, kStreamSerial);
        running = true;
        return true;
    }
};

VorbisTrackWriter::VorbisTrackWriter() = default;

VorbisTrackWriter::~VorbisTrackWriter() {
    file_.Discard();
}

Error VorbisTrackWriter::Begin(const CString& name, const AudioHeader& header, Existing existing,
                               float quality) {
    Error error = CheckAudioHeader(header);
    if (error.fault != Fault::None) return error;
    if (header.FrameBytes > kLargestVorbisFrame) return {Fault::TooLarge, 12};
    header_ = header;
    pcm_bytes_ = 0;
    has_half_sample_ = false;
    encoder_ = std::make_unique<Encoder>();
    if (!encoder_->Start(header.SampleRate, quality)) {
        encoder_.reset();
        return {Fault::BadValue, 0};
    }
    error = file_.Begin(name, existing);
    if (error.fault == Fault::None) error = WriteTrackHeader(0);
    if (error.fault == Fault::None) error = WriteStreamHeaders();
    if (error.fault != Fault::None) {
        file_.Discard();
        encoder_.reset();
    }
    return error;
}

Error VorbisTrackWriter::WriteTrackHeader(std::uint32_t frame_count) {
    std::array<std::uint8_t, kTrackHeaderSize> bytes{};
    ByteWriter writer{bytes};
    for (const char letter : kVorbisSignature) {
        writer.WriteU8(static_cast<std::uint8_t>(letter));
    }
    writer.WriteBytes(VorbisDescriptionBytes({.frame_count = frame_count,
                                              .SampleRate = header_.SampleRate,
                                              .channels = 1,
                                              .BytesPerSample = header_.BytesPerSample,
                                              .nFramesAlSec = header_.nFramesAlSec,
                                              .FrameBytes = header_.FrameBytes}));
    writer.WriteBytes(AudioHeaderBytes(header_));
    return file_.WriteAt(0, bytes);
}

Error VorbisTrackWriter::WriteStreamHeaders() {
    offset_ = kTrackHeaderSize;
    ogg_packet first{};
    ogg_packet comment{};
    ogg_packet setup{};
    vorbis_analysis_headerout(&encoder_->dsp, &encoder_->comment, &first, &comment, &setup);
    for (ogg_packet* const packet : {&first, &comment, &setup}) {
        ogg_stream_packetin(&encoder_->stream, packet);
    }
    ogg_page page{};
    // Sound begins on a page of its own.
    while (ogg_stream_flush(&encoder_->stream, &page) != 0) {
        const Error error = WritePage({page.header, static_cast<std::size_t>(page.header_len)},
                                      {page.body, static_cast<std::size_t>(page.body_len)});
        if (error.fault != Fault::None) return error;
    }
    return {};
}

Error VorbisTrackWriter::Append(ByteView pcm) {
    if (encoder_ == nullptr) return {Fault::Missing, 0};
    pcm_bytes_ += pcm.size();
    if (header_.BytesPerSample == 2 && has_half_sample_ && !pcm.empty()) {
        const std::array<std::uint8_t, 2> sample{half_sample_, pcm[0]};
        has_half_sample_ = false;
        pcm = pcm.subspan(1);
        const Error error = Encode(sample);
        if (error.fault != Fault::None) return error;
    }
    if (header_.BytesPerSample == 2 && pcm.size() % 2 != 0) {
        half_sample_ = pcm.back();
        has_half_sample_ = true;
        pcm = pcm.first(pcm.size() - 1);
    }
    return Encode(pcm);
}

// Whole samples.
Error VorbisTrackWriter::Encode(ByteView samples) {
    const std::uint32_t width = header_.BytesPerSample;
    while (!samples.empty()) {
        const std::size_t count = std::min(samples.size() / width, kSamplesAtOnce);
        float* const room =
            vorbis_analysis_buffer(&encoder_->dsp, static_cast<int>(kSamplesAtOnce))[0];
        for (std::size_t i = 0; i < count; ++i) {
            room[i] = SampleAt(samples, i, width);
        }
        vorbis_analysis_wrote(&encoder_->dsp, static_cast<int>(count));
        samples = samples.subspan(count * width);
        const Error error = WritePackets();
        if (error.fault != Fault::None) return error;
    }
    return {};
}

Error VorbisTrackWriter::WritePackets() {
    Encoder& e = *encoder_;
    while (vorbis_analysis_blockout(&e.dsp, &e.block) == 1) {
        vorbis_analysis(&e.block, nullptr);
        vorbis_bitrate_addblock(&e.block);
        ogg_packet packet{};
        while (vorbis_bitrate_flushpacket(&e.dsp, &packet) != 0) {
            ogg_stream_packetin(&e.stream, &packet);
            ogg_page page{};
            while (ogg_stream_pageout(&e.stream, &page) != 0) {
                const Error error =
                    WritePage({page.header, static_cast<std::size_t>(page.header_len)},
                              {page.body, static_cast<std::size_t>(page.body_len)});
                if (error.fault != Fault::None) return error;
            }
        }
    }
    return {};
}

Error VorbisTrackWriter::WritePage(ByteView head, ByteView body) {
    if (offset_ + head.size() + body.size() > kLargestContainer) return {Fault::TooLarge, offset_};
    for (const ByteView part : {head, body}) {
        const Error error = file_.WriteAt(offset_, part);
        if (error.fault != Fault::None) return error;
        offset_ += part.size();
    }
    return {};
}

Error VorbisTrackWriter::Finish() {
    if (encoder_ == nullptr) return {Fault::Missing, 0};
    const std::uint64_t frame_count = (pcm_bytes_ + header_.FrameBytes - 1) / header_.FrameBytes;
    std::uint64_t missing = frame_count * header_.FrameBytes - pcm_bytes_;
    // A last frame of odd length ends inside a sample, whose second byte belongs to it, too.
    if ((pcm_bytes_ + missing) % header_.BytesPerSample != 0) ++missing;
    const std::uint8_t silence = header_.BytesPerSample == 1 ? kCentre8 : std::uint8_t{0};
    Error error = Append(std::vector<std::uint8_t>(static_cast<std::size_t>(missing), silence));
    if (error.fault == Fault::None) {
        vorbis_analysis_wrote(&encoder_->dsp, 0); // the end
        error = WritePackets();
    }
    if (error.fault == Fault::None) {
        error = WriteTrackHeader(static_cast<std::uint32_t>(frame_count));
    }
    if (error.fault == Fault::None) error = file_.Finish();
    if (error.fault != Fault::None) file_.Discard();
    encoder_.reset();
    return error;
}

} // namespace kelvo
