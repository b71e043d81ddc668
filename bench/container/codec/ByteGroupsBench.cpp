// Type 15 on speech and on silence: bytes are those of the record.

#include "container/codec/ByteGroups.h"
#include "tests/container/codec/PlainSoundCodecs.h"
#include "tests/container/codec/SoundSignals.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

using namespace kelvo;
using yardstick::Bytes;

constexpr std::size_t kRecord = 2205;

const sound::Signal kTried[] = {sound::Signal::Silence, sound::Signal::Speech};

Bytes Record(const benchmark::State& state) {
    return sound::Make(kTried[state.range(0)], kRecord);
}

void CountBytes(benchmark::State& state) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kRecord));
}

void EncodePlain(benchmark::State& state) {
    const Bytes record = Record(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(yardstick::PlainByteGroups(record).size());
    }
    CountBytes(state);
}
BENCHMARK(EncodePlain)->Name("ByteGroups/encode/plain")->Arg(0)->Arg(1);

void Encode(benchmark::State& state) {
    const Bytes record = Record(state);
    Bytes stream(codec::LargestByteGroups(kRecord));
    for (auto _ : state) {
        benchmark::DoNotOptimize(codec::EncodeByteGroups(record, stream));
    }
    CountBytes(state);
}
BENCHMARK(Encode)->Name("ByteGroups/encode/fast")->Arg(0)->Arg(1);

void Decode(benchmark::State& state) {
    const Bytes stream = yardstick::PlainByteGroups(Record(state));
    Bytes record(kRecord);
    for (auto _ : state) {
        benchmark::DoNotOptimize(codec::DecodeByteGroups(stream, record).written);
    }
    CountBytes(state);
}
BENCHMARK(Decode)->Name("ByteGroups/decode/fast")->Arg(0)->Arg(1);

} // namespace
