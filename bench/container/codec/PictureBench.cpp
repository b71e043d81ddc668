// Every picture type on films of 640 x 480, as a container uses the catalogue: a key record every
// ten. Types 8 and 9 once more with the plain compressor behind the same frame coder.

#include "bench/container/codec/Films.h"
#include "container/Compressionekel.h"
#include "tests/container/codec/PlainLzss.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kKeyInterval = 10;

std::size_t Store(Compressionekel& catalogue, std::size_t number, ByteView frame, ByteSpan stored) {
    const bool key = catalogue.IsDifferential() && number % kKeyInterval == 0;
    return key ? catalogue.CompressKey(frame, stored) : catalogue.Compress(frame, stored);
}

void EncodePictures(benchmark::State& state, const std::vector<films::Frame>& film, int type) {
    Compressionekel catalogue;
    if (!catalogue.SetCompressionType(type, films::kFrameBytes)) state.SkipWithError("refused");
    Bytes stored(catalogue.StoredRoom(films::kFrameBytes));
    std::size_t bytes = 0;
    for (auto _ : state) {
        bytes = 0;
        for (std::size_t number = 0; number < film.size(); ++number) {
            bytes += Store(catalogue, number, film[number], stored);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(film.size()));
    state.counters["stored_percent"] =
        100.0 * static_cast<double>(bytes) / static_cast<double>(film.size() * films::kFrameBytes);
}

/// The frame coder of type 7 or 2, then the plain compressor: what types 8 and 9 are by
/// description.
void EncodePicturesPlain(benchmark::State& state, const std::vector<films::Frame>& film,
                         int coder) {
    Compressionekel catalogue;
    if (!catalogue.SetCompressionType(coder, films::kFrameBytes)) state.SkipWithError("refused");
    const auto plain = std::make_unique<yardstick::PlainLzss>();
    Bytes coded(catalogue.StoredRoom(films::kFrameBytes));
    Bytes stored(codec::LzssWorstCase(coded.size()));
    for (auto _ : state) {
        for (std::size_t number = 0; number < film.size(); ++number) {
            const std::size_t length = Store(catalogue, number, film[number], coded);
            benchmark::DoNotOptimize(plain->Encode(ByteView(coded).first(length), stored));
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(film.size()));
}

void DecodePictures(benchmark::State& state, const std::vector<films::Frame>& film, int type) {
    Compressionekel catalogue;
    if (!catalogue.SetCompressionType(type, films::kFrameBytes)) state.SkipWithError("refused");
    std::vector<Bytes> records;
    for (const films::Frame& frame : film) {
        Bytes stored(catalogue.StoredRoom(frame.size()));
        stored.resize(Store(catalogue, records.size(), frame, stored));
        records.push_back(std::move(stored));
    }
    Bytes frame(films::kFrameBytes);
    for (auto _ : state) {
        for (const Bytes& stored : records) {
            benchmark::DoNotOptimize(catalogue.Decompress(stored, frame));
        }
    }
    if (frame != film.back()) state.SkipWithError("the last frame came out differently");
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(film.size()));
}

[[maybe_unused]] const bool registered = [] {
    for (const auto scene : {films::Scene::Drawing, films::Scene::Camera, films::Scene::Screen}) {
        const auto film = films::Draw(scene);
        const std::string behind = std::string("/") + films::Name(scene);
        for (int type = 1; type <= 9; ++type) {
            const std::string name = "Type" + std::to_string(type) + behind;
            benchmark::RegisterBenchmark(("Encode" + name).c_str(), EncodePictures, film, type);
            benchmark::RegisterBenchmark(("Decode" + name).c_str(), DecodePictures, film, type);
        }
        benchmark::RegisterBenchmark(("EncodePlainType8" + behind).c_str(), EncodePicturesPlain,
                                     film, 7);
        benchmark::RegisterBenchmark(("EncodePlainType9" + behind).c_str(), EncodePicturesPlain,
                                     film, 2);
    }
    return true;
}();

} // namespace
} // namespace kelvo
