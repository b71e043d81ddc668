// cmprs against the plain coder of its description, on what the types really hand it: the streams
// of type 7 frames, the index runs of type 2, and the differences of sound records.

#include "bench/container/codec/Films.h"
#include "container/codec/FrameDifference.h"
#include "container/codec/Lzss.h"
#include "container/codec/SampleDifference.h"
#include "tests/container/codec/PlainLzss.h"
#include "tests/container/codec/SoundSignals.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Material = std::vector<Bytes>;

Material DifferenceStreams(films::Scene scene) {
    const auto map = std::make_unique<codec::ColourMap>();
    Material streams;
    Bytes previous(films::kFrameBytes);
    for (const films::Frame& frame : films::Draw(scene)) {
        const auto kind = streams.size() % 10 == 0 ? codec::CodeAs::Key : codec::CodeAs::Difference;
        Bytes stream(codec::GroupDifferenceWorstCase(frame.size()));
        stream.resize(codec::EncodeGroupDifference(frame, previous, stream, kind, *map));
        streams.push_back(std::move(stream));
    }
    return streams;
}

Material RunStreams(films::Scene scene) {
    const auto map = std::make_unique<codec::ColourMap>();
    Material streams;
    for (const films::Frame& frame : films::Draw(scene)) {
        Bytes stream(codec::IndexedRunsWorstCase(frame.size(), codec::kShortRuns));
        stream.resize(codec::EncodeIndexedRuns(frame, stream, codec::kShortRuns, *map));
        streams.push_back(std::move(stream));
    }
    return streams;
}

Material SoundDifferences(std::size_t record_length) {
    Material records;
    const Bytes samples = sound::Make(sound::Signal::Speech, record_length * 40);
    for (std::size_t at = 0; at < samples.size(); at += record_length) {
        Bytes record(record_length);
        codec::EncodeDifferences(ByteView(samples).subspan(at, record_length), record);
        records.push_back(std::move(record));
    }
    return records;
}

struct Plain {
    std::unique_ptr<yardstick::PlainLzss> coder = std::make_unique<yardstick::PlainLzss>();
    std::size_t Encode(ByteView input, ByteSpan stream) { return coder->Encode(input, stream); }
    std::size_t Decode(ByteView stream, ByteSpan output) { return coder->Decode(stream, output); }
};
struct Fast {
    codec::LzssEncoder encoder;
    std::size_t Encode(ByteView input, ByteSpan stream) { return encoder.Encode(input, stream); }
    std::size_t Decode(ByteView stream, ByteSpan output) {
        return codec::DecodeLzss(stream, output).written;
    }
};

std::int64_t TotalBytes(const Material& material) {
    std::size_t total = 0;
    for (const Bytes& bytes : material) {
        total += bytes.size();
    }
    return static_cast<std::int64_t>(total);
}

template <class Coder>
void BenchEncode(benchmark::State& state, const Material& material) {
    Coder coder;
    Bytes stream(codec::LzssWorstCase(2 * films::kFrameBytes));
    for (auto _ : state) {
        for (const Bytes& input : material) {
            benchmark::DoNotOptimize(coder.Encode(input, stream));
        }
    }
    state.SetBytesProcessed(state.iterations() * TotalBytes(material));
}

template <class Coder>
void BenchDecode(benchmark::State& state, const Material& material) {
    Material streams;
    Fast encoder;
    for (const Bytes& input : material) {
        Bytes stream(codec::LzssWorstCase(input.size()));
        stream.resize(encoder.Encode(input, stream));
        streams.push_back(std::move(stream));
    }
    Coder coder;
    Bytes output(2 * films::kFrameBytes);
    for (auto _ : state) {
        for (std::size_t i = 0; i < streams.size(); ++i) {
            benchmark::DoNotOptimize(
                coder.Decode(streams[i], ByteSpan(output).first(material[i].size())));
        }
    }
    state.SetBytesProcessed(state.iterations() * TotalBytes(material));
}

void Register(const std::string& name, const Material& material) {
    benchmark::RegisterBenchmark(("LzssEncode/" + name).c_str(), BenchEncode<Fast>, material);
    benchmark::RegisterBenchmark(("LzssEncodePlain/" + name).c_str(), BenchEncode<Plain>, material);
    benchmark::RegisterBenchmark(("LzssDecode/" + name).c_str(), BenchDecode<Fast>, material);
    benchmark::RegisterBenchmark(("LzssDecodePlain/" + name).c_str(), BenchDecode<Plain>, material);
}

[[maybe_unused]] const bool registered = [] {
    for (const auto scene : {films::Scene::Drawing, films::Scene::Camera, films::Scene::Screen}) {
        Register(std::string("differences-") + films::Name(scene), DifferenceStreams(scene));
        Register(std::string("runs-") + films::Name(scene), RunStreams(scene));
    }
    Register("sound-800", SoundDifferences(800));
    Register("sound-2205", SoundDifferences(2205));
    Register("sound-11025", SoundDifferences(11025));
    return true;
}();

} // namespace
} // namespace kelvo
