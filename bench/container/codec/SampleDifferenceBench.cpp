// The lossless sound types without their cmprs stage. A record of half a minute, more than a branch
// predictor learns by heart; bytes are those of the record.

#include "container/codec/SampleDifference.h"
#include "tests/container/codec/PlainSoundCodecs.h"
#include "tests/container/codec/SoundSignals.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

using namespace kelvo;
using yardstick::Bytes;

constexpr std::size_t kRecord = 300 * 2205;

template <class Work>
void Repeat(benchmark::State& state, Work work) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(work());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kRecord));
}

Bytes Speech() {
    return sound::Make(sound::Signal::Speech, kRecord);
}

Bytes Differences() {
    const Bytes samples = Speech();
    Bytes differences(samples.size());
    codec::EncodeDifferences(samples, differences);
    return differences;
}

void MakeDifferences(benchmark::State& state) {
    const Bytes samples = Speech();
    Bytes differences(kRecord);
    Repeat(state, [&] {
        codec::EncodeDifferences(samples, differences);
        return differences.data();
    });
}
BENCHMARK(MakeDifferences)->Name("Differences/encode/fast");

void SumDifferences(benchmark::State& state) {
    const Bytes differences = Differences();
    Bytes samples(kRecord);
    Repeat(state, [&] {
        codec::DecodeDifferences(differences, samples);
        return samples.data();
    });
}
BENCHMARK(SumDifferences)->Name("Differences/decode/fast");

void PackPlain(benchmark::State& state) {
    const Bytes differences = Differences();
    Repeat(state, [&] { return yardstick::PlainPackNibbles(differences).size(); });
}
BENCHMARK(PackPlain)->Name("Nibbles/encode/plain");

void Pack(benchmark::State& state) {
    const Bytes differences = Differences();
    Bytes packed(codec::LargestNibbles(kRecord));
    Repeat(state, [&] { return codec::PackNibbles(differences, packed); });
}
BENCHMARK(Pack)->Name("Nibbles/encode/fast");

void UnpackPlain(benchmark::State& state) {
    const Bytes packed = yardstick::PlainPackNibbles(Differences());
    Repeat(state, [&] { return yardstick::PlainUnpackNibbles(packed).size(); });
}
BENCHMARK(UnpackPlain)->Name("Nibbles/decode/plain");

void Unpack(benchmark::State& state) {
    const Bytes packed = yardstick::PlainPackNibbles(Differences());
    Bytes samples(kRecord);
    Repeat(state, [&] { return codec::UnpackNibblesToSamples(packed, samples).written; });
}
BENCHMARK(Unpack)->Name("Nibbles/decode/fast");

} // namespace
