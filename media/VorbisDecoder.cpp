#include "media/VorbisDecoder.h"

#include "media/VorbisSetupLimits.h"

#include <ogg/ogg.h>
#include <vorbis/codec.h>

#include <algorithm>
#include <cassert>
#include <span>

namespace kelvo {

namespace {

/// As ogg hands it out.
ByteView PacketBytes(const ogg_packet& packet) {
    return {packet.packet, static_cast<std::size_t>(std::max(packet.bytes, 0L))};
}

/// Rounds toward zero; what does not compare (not a number) becomes the lowest value.
int Clamped(double value, double lowest, double highest) {
    if (!(value > lowest)) return static_cast<int>(lowest);
    return static_cast<int>(value < highest ? value : highest);
}

} // namespace

struct VorbisDecoder::State {
    ogg_sync_state sync{};
    ogg_stream_state stream{};
    ogg_page page{};
    ogg_packet packet{};
    vorbis_info info{};
    vorbis_comment comment{};
    vorbis_dsp_state dsp{};
    vorbis_block block{};
    bool has_sync = false;
    bool has_stream = false;
    bool has_info = false; // and the comment
    bool has_dsp = false;  // and the block
    bool page_ends_stream = false;
};

VorbisDecoder::VorbisDecoder() : state_(std::make_unique<State>()) {}
VorbisDecoder::~VorbisDecoder() {
    Clear();
}

bool VorbisDecoder::IsSetUp() const {
    return state_->has_dsp;
}

void VorbisDecoder::Clear() {
    State& s = *state_;
    if (s.has_stream) ogg_stream_clear(&s.stream);
    if (s.has_dsp) {
        vorbis_block_clear(&s.block);
        vorbis_dsp_clear(&s.dsp);
    }
    if (s.has_info) {
        vorbis_comment_clear(&s.comment);
        vorbis_info_clear(&s.info); // last: the others point into it
    }
    if (s.has_sync) ogg_sync_clear(&s.sync);
    s = State{};
}

bool VorbisDecoder::ReadStep(VorbisSource& source) {
    char* const buffer = ogg_sync_buffer(&state_->sync, kInputStep);
    if (buffer == nullptr) return false;
    const std::size_t count =
        source.Read(ByteSpan{reinterpret_cast<std::uint8_t*>(buffer), kInputStep});
    ogg_sync_wrote(&state_->sync, static_cast<long>(count));
    return count > 0;
}

VorbisFault VorbisDecoder::SetUp(VorbisSource& source) {
    Clear();
    VorbisFault fault = ReadFirstHeader(source);
    if (fault == VorbisFault::None) fault = ReadSecondaryHeaders(source);
    if (fault != VorbisFault::None) {
        Clear();
        return fault;
    }
    State& s = *state_;
    comments_.clear();
    for (int i = 0; i < s.comment.comments; ++i) {
        comments_.emplace_back(s.comment.user_comments[i],
                               static_cast<std::size_t>(s.comment.comment_lengths[i]));
    }
    vendor_ = s.comment.vendor != nullptr ? s.comment.vendor : "";
    channels_ = static_cast<unsigned>(s.info.channels);
    sample_rate_ = static_cast<std::uint32_t>(s.info.rate);
    if (vorbis_synthesis_init(&s.dsp, &s.info) != 0) {
        // It has cleared its own state; only what came before is left to clear.
        Clear();
        return VorbisFault::SecondaryHeader;
    }
    vorbis_block_init(&s.dsp, &s.block);
    s.has_dsp = true;
    return VorbisFault::None;
}

VorbisFault VorbisDecoder::ReadFirstHeader(VorbisSource& source) {
    State& s = *state_;
    ogg_sync_init(&s.sync);
    s.has_sync = true;
    char* const buffer = ogg_sync_buffer(&s.sync, kInputStep);
    if (buffer == nullptr) return VorbisFault::EmptyStream;
    const std::size_t count =
        source.Read(ByteSpan{reinterpret_cast<std::uint8_t*>(buffer), kInputStep});
    ogg_sync_wrote(&s.sync, static_cast<long>(count));
    if (ogg_sync_pageout(&s.sync, &s.page) != 1) {
        return count < kInputStep ? VorbisFault::EmptyStream : VorbisFault::NotOgg;
    }
    ogg_stream_init(&s.stream, ogg_page_serialno(&s.page));
    s.has_stream = true;
    vorbis_info_init(&s.info);
    vorbis_comment_init(&s.comment);
    s.has_info = true;
    if (ogg_stream_pagein(&s.stream, &s.page) < 0) return VorbisFault::FirstPage;
    if (ogg_stream_packetout(&s.stream, &s.packet) != 1) return VorbisFault::InitialHeader;
    if (vorbis_synthesis_headerin(&s.info, &s.comment, &s.packet) < 0) {
        return VorbisFault::NotVorbis;
    }
    return VorbisFault::None;
}

VorbisFault VorbisDecoder::ReadSecondaryHeaders(VorbisSource& source) {
    State& s = *state_;
    int packets = 0;
    while (packets < 2) {
        const int page = ogg_sync_pageout(&s.sync, &s.page);
        if (page == 0) {
            if (!ReadStep(source)) return VorbisFault::HeadersEndEarly;
            continue;
        }
        if (page < 0) continue;                // bytes between pages
        ogg_stream_pagein(&s.stream, &s.page); // a page of another stream is refused there
        while (packets < 2) {
            const int result = ogg_stream_packetout(&s.stream, &s.packet);
            if (result == 0) break;
            if (result < 0) return VorbisFault::SecondaryHeader;
            if (packets == 1 && !vorbis_setup::TablesStaySmall(PacketBytes(s.packet))) {
                return VorbisFault::SecondaryHeader;
            }
            if (vorbis_synthesis_headerin(&s.info, &s.comment, &s.packet) < 0) {
                return VorbisFault::SecondaryHeader;
            }
            ++packets;
        }
    }
    s.page_ends_stream = ogg_page_eos(&s.page) != 0;
    return VorbisFault::None;
}

VorbisDecoder::Chunk VorbisDecoder::Decode(VorbisSource& source, ByteSpan room,
                                           unsigned bytes_per_sample) {
    Chunk chunk;
    if (!IsSetUp()) return chunk;
    chunk.more = true;
    State& s = *state_;
    const std::size_t step = std::size_t{channels_} * bytes_per_sample;
    for (;;) {
        chunk.written += TakeSamples(room.subspan(chunk.written), bytes_per_sample);
        if (room.size() - chunk.written < step) return chunk;
        const int packet = ogg_stream_packetout(&s.stream, &s.packet);
        if (packet > 0) {
            DecodePacket(chunk);
            continue;
        }
        if (packet < 0) { // a gap; the packets behind it follow
            chunk.damaged = true;
            continue;
        }
        if (s.page_ends_stream) break;
        const int page = ogg_sync_pageout(&s.sync, &s.page);
        if (page < 0) chunk.out_of_step = true;
        // A page of another stream is refused and says nothing about the end of this one.
        if (page > 0 && ogg_stream_pagein(&s.stream, &s.page) == 0) {
            s.page_ends_stream = ogg_page_eos(&s.page) != 0;
        }
        if (page != 0) continue;
        if (!ReadStep(source)) break;
        return chunk;
    }
    Clear();
    chunk.more = false;
    return chunk;
}

void VorbisDecoder::DecodePacket(Chunk& chunk) {
    State& s = *state_;
    if (vorbis_synthesis(&s.block, &s.packet) == 0) {
        vorbis_synthesis_blockin(&s.dsp, &s.block);
    } else if (s.packet.bytes > 0) {
        chunk.damaged = true;
    }
}

std::size_t VorbisDecoder::TakeSamples(ByteSpan room, unsigned bytes_per_sample) {
    State& s = *state_;
    const std::size_t step = std::size_t{channels_} * bytes_per_sample;
    std::size_t written = 0;
    float** samples = nullptr;
    for (;;) {
        const int available = vorbis_synthesis_pcmout(&s.dsp, &samples);
        if (available <= 0) return written;
        const std::size_t fitting = (room.size() - written) / step;
        const std::size_t count = std::min(static_cast<std::size_t>(available), fitting);
        if (count == 0) return written;
        ConvertSamples({samples, channels_}, count, bytes_per_sample,
                       room.subspan(written, count * step));
        vorbis_synthesis_read(&s.dsp, static_cast<int>(count));
        written += count * step;
    }
}

void ConvertSamples(std::span<const float* const> channels, std::size_t count,
                    unsigned bytes_per_sample, ByteSpan pcm) {
    const std::size_t stride = channels.size();
    assert(pcm.size() >= count * stride * bytes_per_sample);
    for (std::size_t channel = 0; channel < stride; ++channel) {
        const float* const samples = channels[channel];
        if (bytes_per_sample == 2) {
            std::uint8_t* out = pcm.data() + 2 * channel;
            for (std::size_t i = 0; i < count; ++i, out += 2 * stride) {
                const int value = Clamped(double{samples[i]} * 32767.0, -32768.0, 32767.0);
                out[0] = static_cast<std::uint8_t>(value);
                out[1] = static_cast<std::uint8_t>(static_cast<unsigned>(value) >> 8U);
            }
        } else {
            std::uint8_t* out = pcm.data() + channel;
            for (std::size_t i = 0; i < count; ++i, out += stride) {
                // A sample of -128 wraps to 255, as the format has it.
                const int value = Clamped(double{samples[i]} * 127.0, -128.0, 127.0);
                *out = static_cast<std::uint8_t>(value + 127);
            }
        }
    }
}

} // namespace kelvo
