// The container apart from its codecs: opening a film of two million records, reading in sequence
// and by number, appending, rewriting.

#include "container/ZFilekel.h"
#include "framework/base/CString.h"

#include <benchmark/benchmark.h>

#include <malloc.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace kelvo {
namespace {

/// A file that goes with the program.
class BenchFile {
public:
    BenchFile(const char* name, std::uint32_t type, std::uint32_t record_length,
              std::uint32_t records, std::uint32_t key_interval)
        : name_((std::filesystem::temp_directory_path() /
                 ("container-bench-" + std::to_string(::getpid()) + name))
                    .string()) {
        ZFilekel file;
        bool made = file.Create(Name(), 34, record_length, 32, type, key_interval, 1);
        std::vector<std::uint8_t> record(record_length);
        const std::vector<std::uint8_t> side(32);
        std::minstd_rand random;
        for (std::uint32_t i = 0; made && i < records; ++i) {
            // A few changes from record to record, as from picture to picture.
            for (std::uint32_t k = 0; k < record_length / 100; ++k) {
                record[random() % record_length] = static_cast<std::uint8_t>(random() & 0x7FU);
            }
            made = file.AppendRecord(record, side);
        }
        if (!made || !file.Close()) std::abort();
    }
    ~BenchFile() {
        std::error_code ignored;
        std::filesystem::remove(name_, ignored);
    }
    CString Name() const { return CString(name_.c_str()); }

private:
    std::string name_;
};

const BenchFile& Millions() {
    static const BenchFile file("millions.kaf", 99, 4, 2'000'000, 999999);
    return file;
}

/// Sound at ten records a second.
const BenchFile& Sound() {
    static const BenchFile file("sound.kaf", 17, 2205, 20'000, 999999);
    return file;
}

const BenchFile& Pictures() {
    static const BenchFile file("pictures.kvf", 7, 640 * 480 * 2, 40, 10);
    return file;
}

std::size_t ResidentBytes() {
    ::malloc_trim(0); // what was freed is not ours any more
    std::ifstream pages("/proc/self/statm");
    std::size_t all = 0;
    std::size_t resident = 0;
    pages >> all >> resident;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

void OpenTwoMillionRecords(benchmark::State& state) {
    const CString name = Millions().Name();
    const std::size_t before = ResidentBytes();
    std::size_t open = before;
    for (auto _ : state) {
        ZFilekel file;
        if (!file.OpenForRead(name)) state.SkipWithError("does not open");
        state.PauseTiming();
        open = ResidentBytes();
        state.ResumeTiming();
    }
    state.counters["bytes_per_record"] = static_cast<double>(open - before) / 2'000'000;
}
BENCHMARK(OpenTwoMillionRecords)->Unit(benchmark::kMillisecond);

void ReadSoundInSequence(benchmark::State& state) {
    ZFilekel file;
    if (!file.OpenForRead(Sound().Name())) state.SkipWithError("does not open");
    for (auto _ : state) {
        if (!file.ReadNextRecord() && !file.ReadRecord(0)) state.SkipWithError("does not read");
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ReadSoundInSequence);

void ReadSoundAtRandom(benchmark::State& state) {
    ZFilekel file;
    if (!file.OpenForRead(Sound().Name())) state.SkipWithError("does not open");
    std::minstd_rand random;
    for (auto _ : state) {
        if (!file.ReadRecord(static_cast<int>(random() % file.RecordCount()))) {
            state.SkipWithError("does not read");
        }
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ReadSoundAtRandom);

void ReadPicturesInSequence(benchmark::State& state) {
    ZFilekel file;
    if (!file.OpenForRead(Pictures().Name())) state.SkipWithError("does not open");
    for (auto _ : state) {
        if (!file.ReadNextRecord() && !file.ReadRecord(0)) state.SkipWithError("does not read");
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ReadPicturesInSequence)->Unit(benchmark::kMicrosecond);

/// Time for an image that lies r records behind its key record: r + 1 decodes.
void ReadPictureBehindKeyRecord(benchmark::State& state) {
    ZFilekel file;
    if (!file.OpenForRead(Pictures().Name())) state.SkipWithError("does not open");
    const auto record = 20 + static_cast<int>(state.range(0));
    for (auto _ : state) {
        if (!file.ReadRecord(record)) state.SkipWithError("does not read");
    }
    state.counters["decodes"] = benchmark::Counter(static_cast<double>(state.range(0) + 1),
                                                   benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(ReadPictureBehindKeyRecord)->Arg(0)->Arg(4)->Arg(9)->Unit(benchmark::kMicrosecond);

void AppendRawRecords(benchmark::State& state) {
    const std::string name =
        (std::filesystem::temp_directory_path() / "container-bench-append.kaf").string();
    ZFilekel file;
    if (!file.Create(name.c_str(), 34, 400, 32, 99, 999999, 1)) state.SkipWithError("no file");
    const std::vector<std::uint8_t> record(400);
    const std::vector<std::uint8_t> side(32);
    for (auto _ : state) {
        if (!file.AppendRecord(record, side)) state.SkipWithError("does not append");
    }
    file.AbandonChanges();
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(AppendRawRecords);

void RewriteSound(benchmark::State& state) {
    const CString name = Sound().Name();
    ZFilekel file;
    for (auto _ : state) {
        if (!file.RecompressFile(name, {}, nullptr)) state.SkipWithError("does not rewrite");
    }
    state.SetItemsProcessed(state.iterations() * 20'000);
}
BENCHMARK(RewriteSound)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace kelvo
