// The lossy sound types without their cmprs stage, on records of a tenth of a second at 22050 Hz:
// plain and fast, which give the same bytes. Bytes are those of the record.

#include "container/codec/BlockTransform.h"
#include "tests/container/codec/PlainSoundCodecs.h"
#include "tests/container/codec/SoundSignals.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace {

using namespace kelvo;
using yardstick::Bytes;

constexpr std::size_t kRecord = 2205;

struct SoundType {
    int id;
    codec::TransformBlocks rule; ///< of types 20 to 25
};

constexpr SoundType kTypes[] = {{19, {}},
                                {20, {512, 10.0, true}},
                                {21, {512, 5.0, true}},
                                {22, {512, 2.5, true}},
                                {23, {512, 1.25, true}},
                                {24, {1024, 1.25, false}},
                                {25, {256, 5.0, false}},
                                {30, {}}};

Bytes PlainEncode(const SoundType& type, const Bytes& record) {
    if (type.id == 19) return yardstick::PlainEncodeWhole(record);
    if (type.id == 30) return yardstick::PlainEncodeVariable(record);
    const codec::TransformBlocks& rule = type.rule;
    return yardstick::PlainEncodeBlocks(record, rule.block, rule.divisor, rule.two_pass);
}

Bytes PlainDecode(const SoundType& type, const Bytes& coded) {
    if (type.id == 19) return yardstick::PlainDecodeWhole(coded, kRecord);
    if (type.id == 30) return yardstick::PlainDecodeVariable(coded);
    return yardstick::PlainDecodeBlocks(coded, type.rule.block);
}

std::size_t Encode(const SoundType& type, ByteView record, ByteSpan coded, std::span<float> array) {
    if (type.id == 19) return codec::EncodeWholeTransform(record, coded, array);
    if (type.id == 30) return codec::EncodeVariableBlocks(record, coded, array);
    return codec::EncodeTransformBlocks(record, coded, array, type.rule);
}

Decoded Decode(const SoundType& type, ByteView coded, ByteSpan record, std::span<float> array) {
    if (type.id == 19) return codec::DecodeWholeTransform(coded, record, array);
    if (type.id == 30) return codec::DecodeVariableBlocks(coded, record, array);
    return codec::DecodeTransformBlocks(coded, record, array, type.rule);
}

std::vector<Bytes> Records() {
    const Bytes sound = sound::Make(sound::Signal::Speech, 40 * kRecord);
    std::vector<Bytes> records;
    for (std::size_t at = 0; at < sound.size(); at += kRecord) {
        const auto begin = sound.begin() + static_cast<std::ptrdiff_t>(at);
        records.emplace_back(begin, begin + static_cast<std::ptrdiff_t>(kRecord));
    }
    return records;
}

template <class Work>
void EachRecord(benchmark::State& state, const std::vector<Bytes>& records, Work work) {
    for (auto _ : state) {
        for (const Bytes& record : records) {
            work(record);
        }
    }
    const auto bytes = static_cast<std::int64_t>(records.size() * kRecord);
    state.SetBytesProcessed(state.iterations() * bytes);
}

std::vector<Bytes> Coded(const SoundType& type) {
    std::vector<Bytes> coded;
    for (const Bytes& record : Records()) {
        coded.push_back(PlainEncode(type, record));
    }
    return coded;
}

void Register(const SoundType& type) {
    const std::string name = "Type" + std::to_string(type.id);
    benchmark::RegisterBenchmark((name + "/encode/plain").c_str(),
                                 [&type](benchmark::State& state) {
                                     EachRecord(state, Records(), [&](const Bytes& record) {
                                         benchmark::DoNotOptimize(PlainEncode(type, record).size());
                                     });
                                 });
    benchmark::RegisterBenchmark((name + "/encode/fast").c_str(), [&type](benchmark::State& state) {
        Bytes coded(4 * kRecord);
        std::vector<float> array(codec::VariableBlocksArray(kRecord));
        EachRecord(state, Records(), [&](const Bytes& record) {
            benchmark::DoNotOptimize(Encode(type, record, coded, array));
        });
    });
    benchmark::RegisterBenchmark((name + "/decode/plain").c_str(),
                                 [&type](benchmark::State& state) {
                                     EachRecord(state, Coded(type), [&](const Bytes& coded) {
                                         benchmark::DoNotOptimize(PlainDecode(type, coded).size());
                                     });
                                 });
    benchmark::RegisterBenchmark((name + "/decode/fast").c_str(), [&type](benchmark::State& state) {
        Bytes record(kRecord);
        std::vector<float> array(codec::VariableBlocksArray(kRecord));
        EachRecord(state, Coded(type), [&](const Bytes& coded) {
            benchmark::DoNotOptimize(Decode(type, coded, record, array).written);
        });
    });
}

const bool kRegistered = [] {
    for (const SoundType& type : kTypes) {
        Register(type);
    }
    return true;
}();

} // namespace
