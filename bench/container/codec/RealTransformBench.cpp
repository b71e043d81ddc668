// The transform there and back: the textbook form, the tables, the tables with AVX2. Bytes are
// those of the array.

#include "container/codec/RealTransformKernels.h"
#include "tests/container/codec/PlainRealTransform.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

namespace {

using namespace kelvo;

template <class Forward, class Inverse>
void ThereAndBack(benchmark::State& state, Forward forward, Inverse inverse) {
    std::mt19937 random{1};
    std::vector<float> values(static_cast<std::size_t>(state.range(0)));
    for (float& value : values) {
        value = static_cast<float>(static_cast<int>(random() % 256) - 127);
    }
    std::vector<float> array = values;
    for (auto _ : state) {
        array = values;
        forward(array);
        inverse(array);
        benchmark::DoNotOptimize(array.data());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * 4);
}

void Textbook(benchmark::State& state) {
    ThereAndBack(
        state, [](std::span<float> array) { yardstick::PlainRealTransform(array, 1); },
        [](std::span<float> array) { yardstick::PlainRealTransform(array, -1); });
}

void WithKernels(benchmark::State& state, const codec::TransformKernels* kernels) {
    if (kernels == nullptr) {
        state.SkipWithError("this processor does not know it");
        return;
    }
    ThereAndBack(
        state, [kernels](std::span<float> array) { codec::ForwardTransform(array, *kernels); },
        [kernels](std::span<float> array) { codec::InverseTransform(array, *kernels); });
}

void Portable(benchmark::State& state) {
    WithKernels(state, &codec::kPortableKernels);
}

void Avx2(benchmark::State& state) {
    WithKernels(state, codec::Avx2Kernels());
}

BENCHMARK(Textbook)->Name("RealTransform/textbook")->RangeMultiplier(4)->Range(64, 16384);
BENCHMARK(Portable)->Name("RealTransform/portable")->RangeMultiplier(4)->Range(64, 16384);
BENCHMARK(Avx2)->Name("RealTransform/avx2")->RangeMultiplier(4)->Range(64, 16384);

} // namespace
