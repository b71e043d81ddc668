#include "tests/media/OggStreams.h"

#include "media/AudioHeader.h"
#include "media/VorbisFilekel.h"

#include <ogg/ogg.h>
#include <vorbis/codec.h>
#include <vorbis/vorbisenc.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>

namespace kelvo::test {

namespace {

void AppendPage(Bytes& bytes, const ogg_page& page) {
    bytes.insert(bytes.end(), page.header, page.header + page.header_len);
    bytes.insert(bytes.end(), page.body, page.body + page.body_len);
}

void DrainBlocks(vorbis_dsp_state& dsp, vorbis_block& block, ogg_stream_state& stream,
                 Bytes& bytes) {
    ogg_packet packet{};
    ogg_page page{};
    while (vorbis_analysis_blockout(&dsp, &block) == 1) {
        vorbis_analysis(&block, nullptr);
        vorbis_bitrate_addblock(&block);
        while (vorbis_bitrate_flushpacket(&dsp, &packet) != 0) {
            ogg_stream_packetin(&stream, &packet);
            while (ogg_stream_pageout(&stream, &page) != 0) {
                AppendPage(bytes, page);
            }
        }
    }
}

} // namespace

Bytes EncodedStream(const std::vector<std::vector<float>>& channels, std::uint32_t sample_rate) {
    vorbis_info info{};
    vorbis_comment comment{};
    vorbis_dsp_state dsp{};
    vorbis_block block{};
    ogg_stream_state stream{};
    vorbis_info_init(&info);
    if (vorbis_encode_init_vbr(&info, static_cast<long>(channels.size()),
                               static_cast<long>(sample_rate), 0.4F) != 0) {
        throw std::runtime_error("no such stream");
    }
    vorbis_comment_init(&comment);
    vorbis_comment_add_tag(&comment, "TITLE", "a tone");
    vorbis_comment_add_tag(&comment, "ARTIST", "nobody");
    vorbis_analysis_init(&dsp, &info);
    vorbis_block_init(&dsp, &block);
    ogg_stream_init(&stream, 1);

    Bytes bytes;
    ogg_packet headers[3]{};
    ogg_page page{};
    vorbis_analysis_headerout(&dsp, &comment, &headers[0], &headers[1], &headers[2]);
    for (ogg_packet& header : headers) {
        ogg_stream_packetin(&stream, &header);
    }
    while (ogg_stream_flush(&stream, &page) != 0) {
        AppendPage(bytes, page);
    }
    const std::size_t length = channels.front().size();
    for (std::size_t start = 0; start < length; start += 1024) {
        const std::size_t count = std::min<std::size_t>(1024, length - start);
        float** const room = vorbis_analysis_buffer(&dsp, 1024);
        for (std::size_t c = 0; c < channels.size(); ++c) {
            std::copy_n(channels[c].begin() + static_cast<std::ptrdiff_t>(start), count, room[c]);
        }
        vorbis_analysis_wrote(&dsp, static_cast<int>(count));
        DrainBlocks(dsp, block, stream, bytes);
    }
    vorbis_analysis_wrote(&dsp, 0);
    DrainBlocks(dsp, block, stream, bytes);

    ogg_stream_clear(&stream);
    vorbis_block_clear(&block);
    vorbis_dsp_clear(&dsp);
    vorbis_comment_clear(&comment);
    vorbis_info_clear(&info);
    return bytes;
}

Bytes FirstPage(const Bytes& packet) {
    ogg_stream_state stream{};
    ogg_stream_init(&stream, 1);
    ogg_packet whole{};
    Bytes data = packet;
    whole.packet = data.data();
    whole.bytes = static_cast<long>(data.size());
    whole.b_o_s = 1;
    ogg_stream_packetin(&stream, &whole);
    Bytes bytes;
    ogg_page page{};
    ogg_stream_flush(&stream, &page);
    AppendPage(bytes, page);
    ogg_stream_clear(&stream);
    return bytes;
}

Bytes FirstPageWithoutEnd() {
    // Segments of 255, 255 and 0 bytes; without the last one the packet goes on.
    Bytes page = FirstPage(Bytes(510, 1));
    page.erase(page.begin() + 29);
    return WithHeaderByte(page, 26, 2);
}

Bytes WithHeaderByte(Bytes page, std::size_t offset, std::uint8_t value) {
    page.at(offset) = value;
    ogg_page parts{};
    parts.header = page.data();
    parts.header_len = 27 + page.at(26);
    parts.body = page.data() + parts.header_len;
    parts.body_len = static_cast<long>(page.size()) - parts.header_len;
    ogg_page_checksum_set(&parts);
    return page;
}

std::vector<std::size_t> PageLengths(ByteView stream) {
    std::vector<std::size_t> lengths;
    for (std::size_t at = 0; at < stream.size();) {
        const std::size_t segments = stream[at + 26];
        std::size_t length = 27 + segments;
        for (std::size_t i = 0; i < segments; ++i) {
            length += stream[at + 27 + i];
        }
        lengths.push_back(length);
        at += length;
    }
    return lengths;
}

Bytes SetupPacket(const Bytes& stream) {
    ogg_sync_state sync{};
    ogg_sync_init(&sync);
    char* const room = ogg_sync_buffer(&sync, static_cast<long>(stream.size()));
    std::copy(stream.begin(), stream.end(), reinterpret_cast<std::uint8_t*>(room));
    ogg_sync_wrote(&sync, static_cast<long>(stream.size()));
    ogg_stream_state state{};
    ogg_stream_init(&state, 1);
    ogg_page page{};
    ogg_packet packet{};
    Bytes result;
    for (int packets = 0; packets < 3 && ogg_sync_pageout(&sync, &page) == 1;) {
        ogg_stream_pagein(&state, &page);
        while (packets < 3 && ogg_stream_packetout(&state, &packet) == 1) {
            result.assign(packet.packet, packet.packet + packet.bytes);
            ++packets;
        }
    }
    ogg_stream_clear(&state);
    ogg_sync_clear(&sync);
    return result;
}

Bytes VorbisTrack::Build() const {
    Bytes bytes(kVorbisSignature.begin(), kVorbisSignature.end());
    for (const std::uint32_t field :
         {frame_count, sample_rate, channels, bytes_per_sample, frames_per_second, frame_bytes}) {
        Put32(bytes, field);
    }
    AudioHeader header = BuildWaveFormat(sample_rate, bytes_per_sample, frames_per_second);
    header.FrameBytes = frame_bytes;
    const auto header_bytes = AudioHeaderBytes(header);
    return Joined({bytes, Bytes(header_bytes.begin(), header_bytes.end()), stream});
}

std::vector<float> Tone(double seconds, std::uint32_t sample_rate, double hertz, double loudness) {
    std::vector<float> samples(static_cast<std::size_t>(seconds * sample_rate));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double phase = 2.0 * std::numbers::pi * hertz * static_cast<double>(i) / sample_rate;
        samples[i] = static_cast<float>(loudness * std::sin(phase));
    }
    return samples;
}

std::vector<float> Sweep(double seconds, std::uint32_t sample_rate) {
    std::vector<float> samples(static_cast<std::size_t>(seconds * sample_rate));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double t = static_cast<double>(i) / sample_rate;
        samples[i] =
            static_cast<float>(0.5 * std::sin(2.0 * std::numbers::pi * (200 + 20 * t) * t));
    }
    return samples;
}

VorbisTrack SweepTrack(double seconds) {
    VorbisTrack track;
    track.frame_count = static_cast<std::uint32_t>(seconds * 10);
    track.stream = EncodedStream({Sweep(seconds, 22050)}, 22050);
    return track;
}

} // namespace kelvo::test
