// What a player pays for a track: Vorbis sound against the plain use of the library, positioning in
// it, and the conversion of its samples.

#include "media/AudioFilekel.h"
#include "media/VorbisDecoder.h"
#include "media/VorbisTrackWriter.h"

#include <benchmark/benchmark.h>
#include <vorbis/codec.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numbers>
#include <stdexcept>
#include <string>
#include <vector>

namespace kelvo {

namespace {

constexpr std::uint32_t kSampleRate = 44100;
constexpr std::uint32_t kSeconds = 120;
constexpr std::size_t kStreamOffset = 88;

/// Two minutes of 16-bit sound with some life in it: chords that change, and noise.
class Track {
public:
    Track() {
        std::string pattern = (std::filesystem::temp_directory_path() / "kelvo-bench-XXXXXX");
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
        folder_ = pattern;
        const AudioHeader header = BuildWaveFormat(kSampleRate, 2, 10);
        std::vector<std::uint8_t> pcm;
        unsigned noise = 1;
        for (std::uint32_t i = 0; i < kSampleRate * kSeconds; ++i) {
            const double t = static_cast<double>(i) / kSampleRate;
            const double base = 110.0 * (1 + i / (kSampleRate / 2) % 7);
            double value = 0;
            for (const double factor : {1.0, 1.25, 1.5, 3.0}) {
                value += 0.15 * std::sin(2 * std::numbers::pi * base * factor * t);
            }
            noise = noise * 1664525U + 1013904223U;
            value += 0.02 * (static_cast<double>(noise >> 16U) / 32768.0 - 1.0);
            const auto sample =
                static_cast<std::uint16_t>(static_cast<std::int16_t>(value * 32767));
            pcm.push_back(static_cast<std::uint8_t>(sample));
            pcm.push_back(static_cast<std::uint8_t>(sample >> 8U));
        }
        VorbisTrackWriter writer;
        if (writer.Begin(Name(), header) != Error{} || writer.Append(pcm) != Error{} ||
            writer.Finish() != Error{}) {
            throw std::runtime_error("cannot write the track");
        }
    }
    ~Track() { std::filesystem::remove_all(folder_); }
    Track(const Track&) = delete;
    Track& operator=(const Track&) = delete;

    CString Name() const { return CString{std::string_view{folder_ + "/track.kaf"}}; }
    std::vector<std::uint8_t> Stream() const {
        std::ifstream file(folder_ + "/track.kaf", std::ios::binary);
        std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file),
                                        std::istreambuf_iterator<char>()};
        bytes.erase(bytes.begin(), bytes.begin() + kStreamOffset);
        return bytes;
    }

private:
    std::string folder_;
};

const Track& TheTrack() {
    static const Track track;
    return track;
}

void VorbisTrackInOrder(benchmark::State& state) {
    AudioFilekel track;
    if (!track.OpenForRead(TheTrack().Name())) throw std::runtime_error("cannot open");
    int next = 0;
    std::uint32_t time = 0;
    for (auto _ : state) {
        track.GoToAudioFrame(0);
        while (track.ReadNextAudioFrame(next, time)) {
            benchmark::DoNotOptimize(track.GetFrameData());
        }
    }
    state.counters["times_real_time"] =
        benchmark::Counter(kSeconds, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(VorbisTrackInOrder)->Unit(benchmark::kMillisecond);

/// The decoding loop that every player of such streams has: whole pages in memory, the samples
/// rounded and clamped one by one.
void VorbisLibraryAlone(benchmark::State& state) {
    std::vector<std::uint8_t> stream = TheTrack().Stream();
    std::vector<std::int16_t> pcm(4096);
    for (auto _ : state) {
        ogg_sync_state sync{};
        ogg_stream_state pages{};
        ogg_page page{};
        ogg_packet packet{};
        vorbis_info info{};
        vorbis_comment comment{};
        vorbis_dsp_state dsp{};
        vorbis_block block{};
        ogg_sync_init(&sync);
        vorbis_info_init(&info);
        vorbis_comment_init(&comment);
        std::size_t at = 0;
        int headers = 0;
        bool begun = false;
        for (;;) {
            const int result = ogg_sync_pageout(&sync, &page);
            if (result == 0) {
                const std::size_t step = std::min<std::size_t>(4096, stream.size() - at);
                if (step == 0) break;
                std::copy_n(stream.begin() + static_cast<std::ptrdiff_t>(at), step,
                            ogg_sync_buffer(&sync, 4096));
                ogg_sync_wrote(&sync, static_cast<long>(step));
                at += step;
                continue;
            }
            if (!begun) ogg_stream_init(&pages, ogg_page_serialno(&page));
            begun = true;
            ogg_stream_pagein(&pages, &page);
            while (ogg_stream_packetout(&pages, &packet) == 1) {
                if (headers < 3) {
                    vorbis_synthesis_headerin(&info, &comment, &packet);
                    if (++headers == 3) {
                        vorbis_synthesis_init(&dsp, &info);
                        vorbis_block_init(&dsp, &block);
                    }
                    continue;
                }
                if (vorbis_synthesis(&block, &packet) == 0) vorbis_synthesis_blockin(&dsp, &block);
                float** samples = nullptr;
                for (int count = 0; (count = vorbis_synthesis_pcmout(&dsp, &samples)) > 0;) {
                    count = std::min(count, 4096);
                    for (int i = 0; i < count; ++i) {
                        const long value = std::lrint(samples[0][i] * 32767.0F);
                        pcm[static_cast<std::size_t>(i)] =
                            static_cast<std::int16_t>(std::clamp(value, -32768L, 32767L));
                    }
                    benchmark::DoNotOptimize(pcm.data());
                    vorbis_synthesis_read(&dsp, count);
                }
            }
        }
        ogg_stream_clear(&pages);
        vorbis_block_clear(&block);
        vorbis_dsp_clear(&dsp);
        vorbis_comment_clear(&comment);
        vorbis_info_clear(&info);
        ogg_sync_clear(&sync);
    }
    state.counters["times_real_time"] =
        benchmark::Counter(kSeconds, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(VorbisLibraryAlone)->Unit(benchmark::kMillisecond);

void VorbisTrackBackToItsMiddle(benchmark::State& state) {
    AudioFilekel track;
    if (!track.OpenForRead(TheTrack().Name())) throw std::runtime_error("cannot open");
    for (auto _ : state) {
        track.GoToAudioFrame(static_cast<int>(kSeconds * 5));
        state.PauseTiming();
        track.GoToAudioFrame(static_cast<int>(kSeconds * 10));
        state.ResumeTiming();
    }
}
BENCHMARK(VorbisTrackBackToItsMiddle)->Unit(benchmark::kMillisecond)->Iterations(10);

void SamplesToPcm(benchmark::State& state) {
    const auto width = static_cast<unsigned>(state.range(0));
    std::vector<float> samples(4096);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<float>(std::sin(static_cast<double>(i)) * 1.1);
    }
    std::vector<std::uint8_t> pcm(samples.size() * width);
    const float* const channel = samples.data();
    for (auto _ : state) {
        ConvertSamples({&channel, 1}, samples.size(), width, pcm);
        benchmark::DoNotOptimize(pcm.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(samples.size()));
}
BENCHMARK(SamplesToPcm)->Arg(1)->Arg(2);

} // namespace

} // namespace kelvo
