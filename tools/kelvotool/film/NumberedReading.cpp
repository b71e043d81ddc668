#include "tools/kelvotool/film/NumberedReading.h"

#include "framework/base/ProgressDisplay.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace kelvo::tool {

namespace {

// Reading every record of a long group by its number would decode each of them once for each one
// behind it.
constexpr std::uint32_t kShortGroup = 32;
// Records that stand by themselves are taken in runs of so many.
constexpr std::uint32_t kRun = 32;
// Going back in a Vorbis stream decodes it from its start.
constexpr std::uint32_t kVorbisPlaces = 4;

struct Difference {
    std::uint32_t record = 0;
    bool readable = false;
};

class Comparison {
public:
    Comparison(TrackReader& reader, std::span<const Fingerprint> fingerprints)
        : reader_(reader), fingerprints_(fingerprints),
          end_(static_cast<std::uint32_t>(fingerprints.size())) {}

    void Run(unsigned jobs) {
        if (reader_.IsVorbis()) return RunVorbis();
        std::vector<std::thread> threads;
        const unsigned useful = std::min<unsigned>(jobs, end_ / kRun + 1);
        threads.reserve(useful);
        try {
            for (unsigned i = 1; i < useful; ++i)
                threads.emplace_back([this] { WorkBesides(); });
        } catch (const std::system_error&) { // no more threads: those that there are do the work
        }
        const auto progress = ShowProgress({});
        try {
            Work(reader_, progress.get());
        } catch (...) {
            memory_ran_out_ = true;
        }
        for (std::thread& thread : threads)
            thread.join();
    }

    /// Something was not compared.
    bool MemoryRanOut() const { return memory_ran_out_; }
    std::vector<Difference> Differences() {
        std::ranges::sort(differences_, std::greater{}, &Difference::record);
        return std::move(differences_);
    }

private:
    void RunVorbis() {
        Sha256 sha256;
        for (std::uint32_t i = kVorbisPlaces; i-- > 0 && end_ > 0 && !StopRequested();) {
            Compare(reader_, sha256,
                    static_cast<std::uint32_t>(std::uint64_t{end_ - 1} * i / kVorbisPlaces));
        }
    }

    /// On a thread of its own, which must not end with an exception.
    void WorkBesides() {
        try {
            TrackReader own(reader_.Film(), reader_.Track());
            if (!own.Open()) Work(own, nullptr);
        } catch (...) {
            memory_ran_out_ = true;
        }
    }

    void Work(TrackReader& reader, ProgressDisplay* progress) {
        Sha256 sha256;
        while (!StopRequested()) {
            std::uint32_t key = 0;
            std::uint32_t end = 0;
            {
                const std::lock_guard lock(mutex_);
                end = end_;
                if (end == 0) return;
                key = reader.IsDifferential() ? reader.Container().Header().KeyRecordOf(end - 1)
                                              : (end - 1) / kRun * kRun;
                end_ = key;
            }
            if (progress != nullptr) {
                const auto total =
                    static_cast<std::int32_t>(std::min<std::size_t>(fingerprints_.size(), INT_MAX));
                progress->Update(total - static_cast<std::int32_t>(end / 2), total);
            }
            CompareGroup(reader, sha256, key, end);
        }
    }

    void CompareGroup(TrackReader& reader, Sha256& sha256, std::uint32_t key, std::uint32_t end) {
        if (end - key <= kShortGroup) {
            for (std::uint32_t n = end; n-- > key && !StopRequested();)
                Compare(reader, sha256, n);
            return;
        }
        for (const std::uint32_t n : {end - 1, key + (end - 1 - key) / 2, key})
            Compare(reader, sha256, n);
    }

    void Compare(TrackReader& reader, Sha256& sha256, std::uint32_t n) {
        if (fingerprints_[n] == kNotComparable || StopRequested()) return;
        const bool readable = reader.ReadByNumber(n);
        if (StopRequested()) return;
        if (readable && FingerprintOf(sha256, reader.Record(), reader.Side()) == fingerprints_[n]) {
            return;
        }
        const std::lock_guard lock(mutex_);
        differences_.push_back({n, readable});
    }

    TrackReader& reader_;
    std::span<const Fingerprint> fingerprints_;
    std::atomic<bool> memory_ran_out_ = false;
    std::mutex mutex_;
    // Under the lock while there are threads.
    std::uint32_t end_; ///< of what nobody has taken yet
    std::vector<Difference> differences_;
};

} // namespace

void CompareByNumber(TrackReader& reader, std::span<const Fingerprint> fingerprints, unsigned jobs,
                     Reporter& reporter) {
    Comparison comparison(reader, fingerprints);
    comparison.Run(jobs);
    if (comparison.MemoryRanOut()) {
        reporter.NotDone("there is not enough memory to read it by number");
    }
    for (const Difference& difference : comparison.Differences()) {
        if (!difference.readable) {
            reporter.Report(reader.Make(ProblemCode::RecordDiffers,
                                        "the record cannot be read by its number",
                                        difference.record));
            continue;
        }
        std::optional<std::uint64_t> offset;
        if (!reader.IsVorbis()) offset = reader.Container().RecordFileOffset(difference.record);
        reporter.Report(reader.Make(ProblemCode::RecordDiffers,
                                    "the record is another one when it is read by its number",
                                    difference.record, offset));
    }
}

} // namespace kelvo::tool
