#include "media/VorbisDecoder.h"

#include "media/VorbisSetupLimits.h"

#include <ogg/ogg.h>
#include <vorbis/codec.h>

#include <algorithm>
#include <cassert>
#include <deque>
#include <span>

namespace kelvo {

namespace {

/// As ogg hands it out.
ByteView PacketBytes(const ogg_packet& packet) {
    return {packet.packet, static_cast<std::size_t>(std::max(packet.bytes, 0L))};
}

/// A packet that was taken out of its page.
struct HeldPacket {
    std::vector<std::uint8_t> bytes;
    ogg_packet packet{};
};

/// A place in time that a page claims is believed up to so much silence in all, in bytes.
constexpr std::uint64_t kMostSilence = std::uint64_t{1} << 31U;
constexpr std::uint8_t kCentre8 = 127;

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

    // Where in time the stream is, in samples.
    std::int64_t page_position = -1; ///< at the end of the page, as it says; -1: it does not
    std::int64_t produced = 0;       ///< since the start, silence included
    std::int64_t origin = 0;         ///< position of the first sample, as the first page has it
    bool has_origin = false;
    bool has_gap = false; ///< something is missing since the last position that was sure
    std::uint64_t silence_left = 0;
    std::uint64_t silence_allowed = kMostSilence;
    long last_block = 0; ///< of the packet decoded last; 0: nothing to overlap with
    std::deque<HeldPacket> held;
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
        chunk.written += TakeSilence(room.subspan(chunk.written), bytes_per_sample);
        if (room.size() - chunk.written < step) return chunk;
        if (NextPacket(chunk)) continue;
        if (s.page_ends_stream) break;
        bool read = false;
        if (!NextPage(source, chunk, read)) break;
        if (read) return chunk;
    }
    Clear();
    chunk.more = false;
    return chunk;
}

/// @return false when there is no packet left in the pages so far
bool VorbisDecoder::NextPacket(Chunk& chunk) {
    State& s = *state_;
    if (!s.held.empty()) {
        HeldPacket& held = s.held.front();
        s.packet = held.packet;
        s.packet.packet = held.bytes.data();
        DecodePacket(chunk);
        s.held.pop_front();
        return true;
    }
    const int packet = ogg_stream_packetout(&s.stream, &s.packet);
    if (packet > 0) DecodePacket(chunk);
    if (packet < 0) { // a gap; the packets behind it follow
        chunk.damaged = true;
        s.has_gap = true;
        vorbis_synthesis_restart(&s.dsp); // what comes does not overlap with what was
        s.last_block = 0;
        BridgeGap();
    }
    return packet != 0;
}

/// @param read  out: no page was there, and more of the file was taken
/// @return false at the end of the file
bool VorbisDecoder::NextPage(VorbisSource& source, Chunk& chunk, bool& read) {
    State& s = *state_;
    if (!s.has_origin && !s.has_gap && s.page_position >= 0 && s.produced > 0) {
        s.origin = std::max<std::int64_t>(s.page_position - s.produced, 0);
        s.has_origin = true;
    }
    const int page = ogg_sync_pageout(&s.sync, &s.page);
    if (page < 0) chunk.out_of_step = true;
    // A page of another stream is refused and says nothing about the end of this one.
    if (page > 0 && ogg_stream_pagein(&s.stream, &s.page) == 0) {
        s.page_ends_stream = ogg_page_eos(&s.page) != 0;
        s.page_position = ogg_page_granulepos(&s.page);
        if (s.has_gap) BridgeGap();
    }
    if (page != 0) return true;
    read = true;
    return ReadStep(source);
}

/// Where the page says at which time it ends, its packets tell at which time it begins: until then
/// there is silence.
void VorbisDecoder::BridgeGap() {
    State& s = *state_;
    if (s.page_position < 0) return; // a later page will tell
    std::int64_t samples = 0;
    long last_block = s.last_block;
    for (int packet = ogg_stream_packetout(&s.stream, &s.packet); packet != 0;
         packet = ogg_stream_packetout(&s.stream, &s.packet)) {
        if (packet < 0) continue;
        const ByteView bytes = PacketBytes(s.packet);
        s.held.push_back({{bytes.begin(), bytes.end()}, s.packet});
        const long block = vorbis_packet_blocksize(&s.info, &s.packet);
        if (block <= 0) continue;
        if (last_block > 0) samples += (last_block + block) / 4;
        last_block = block;
    }
    s.has_gap = false;
    const std::int64_t expected = s.produced + samples;
    if (s.page_position - s.origin <= expected) return;
    const auto missing = static_cast<std::uint64_t>(s.page_position - s.origin - expected);
    s.silence_left = std::min(missing, s.silence_allowed / std::max(channels_, 1U) / 2);
    s.silence_allowed -= s.silence_left * channels_ * 2;
}

std::size_t VorbisDecoder::TakeSilence(ByteSpan room, unsigned bytes_per_sample) {
    State& s = *state_;
    if (s.silence_left == 0) return 0;
    const std::size_t step = std::size_t{channels_} * bytes_per_sample;
    const auto count =
        static_cast<std::size_t>(std::min<std::uint64_t>(s.silence_left, room.size() / step));
    std::ranges::fill(room.first(count * step), bytes_per_sample == 1 ? kCentre8 : std::uint8_t{0});
    s.silence_left -= count;
    s.produced += static_cast<std::int64_t>(count);
    return count * step;
}

void VorbisDecoder::DecodePacket(Chunk& chunk) {
    State& s = *state_;
    if (vorbis_synthesis(&s.block, &s.packet) == 0) {
        vorbis_synthesis_blockin(&s.dsp, &s.block);
        s.last_block = std::max(vorbis_packet_blocksize(&s.info, &s.packet), 0L);
    } else if (s.packet.bytes > 0) {
        chunk.damaged = true;
        s.has_gap = true;
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
        s.produced += static_cast<std::int64_t>(count);
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
