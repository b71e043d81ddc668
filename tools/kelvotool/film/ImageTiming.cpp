#include "tools/kelvotool/film/ImageTiming.h"

#include "framework/base/ByteReader.h"
#include "media/VideoHeader.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <algorithm>

namespace kelvo::tool {

namespace {

// A damaged number may lie years ahead: whoever repeated an image so long would fill the disk.
constexpr std::uint64_t kMostRepeats = 100'000;
constexpr std::uint64_t kMilliseconds = 1000;

struct SideNumbers {
    std::vector<std::uint32_t> sync = {};
    std::vector<std::uint32_t> capture = {};
};

/// What the side blocks of the images say; nothing after it was reported that one cannot be read.
std::optional<SideNumbers> ReadSides(TrackReader& reader, const Span& span, Reporter& reporter) {
    SideNumbers numbers;
    for (std::uint64_t n = span.first; n < span.end && !StopRequested(); ++n) {
        std::uint32_t length = 0;
        if (reader.Container().ReadRawRecord(static_cast<int>(n), length) == nullptr) {
            reporter.Report(reader.Make(ProblemCode::RecordDamaged, "the record cannot be read",
                                        static_cast<std::uint32_t>(n), {}, kNotDone));
            return std::nullopt;
        }
        ByteReader side{reader.Side()};
        numbers.sync.push_back(side.ReadU32());
        side.Skip(4);
        numbers.capture.push_back(side.ReadU32());
    }
    return numbers;
}

std::uint32_t ImagesPerSecond(const TrackReader& reader) {
    return static_cast<std::uint32_t>(std::max<int>(reader.Track().video->nImgAlSec, 1));
}

void Append(ImageTiming& whole, const ImageTiming& part) {
    whole.repeats.insert(whole.repeats.end(), part.repeats.begin(), part.repeats.end());
    whole.shown += part.shown;
    whole.repeated += part.repeated;
    whole.dropped += part.dropped;
}

bool IsNeverLinked(const std::vector<std::uint32_t>& numbers) {
    return !numbers.empty() && std::ranges::all_of(numbers, [](std::uint32_t number) {
        return number == kNeverLinked;
    });
}

/// The timing of one span; nothing after it was reported why there is none.
std::optional<ImageTiming> TimeSpan(const TrackReader& reader, const SideNumbers& numbers,
                                    TimingRule rule, std::uint32_t frames_per_second,
                                    Reporter& reporter) {
    const std::uint32_t rate = ImagesPerSecond(reader);
    if (rule == TimingRule::Sync) {
        if (IsNeverLinked(numbers.sync)) {
            ImageTiming timing = ImageTiming::Constant(numbers.sync.size());
            timing.note = "it was never tied to a sound: every image is shown once";
            return timing;
        }
        if (frames_per_second == 0) {
            reporter.NotDone("--timing sync needs the sound that it is tied to",
                             ProblemCode::NotPossible);
            return std::nullopt;
        }
        return TimingFrom(SyncStarts(numbers.sync, rate, frames_per_second));
    }
    if (std::ranges::all_of(numbers.capture, [](std::uint32_t time) { return time == 0; })) {
        reporter.NotDone("it has no capture times: it was not scanned", ProblemCode::NotPossible);
        return std::nullopt;
    }
    return TimingFrom(CaptureStarts(numbers.capture, rate));
}

} // namespace

ImageTiming ImageTiming::Constant(std::uint64_t count) {
    ImageTiming timing;
    timing.repeats.assign(count, 1);
    timing.shown = count;
    return timing;
}

std::vector<std::uint64_t> SyncStarts(const std::vector<std::uint32_t>& numbers,
                                      std::uint32_t images_per_second,
                                      std::uint32_t frames_per_second) {
    std::vector<std::uint64_t> starts;
    std::uint64_t latest = 0;
    const std::uint64_t base = numbers.empty() ? 0 : numbers.front();
    for (std::size_t first = 0; first < numbers.size();) {
        std::size_t end = first;
        while (end < numbers.size() && numbers[end] == numbers[first])
            ++end;
        const std::uint64_t group = end - first;
        const std::uint64_t frame = numbers[first] > base ? numbers[first] - base : 0;
        for (std::uint64_t i = 0; i < group; ++i) {
            const std::uint64_t divisor = group * frames_per_second;
            const std::uint64_t start =
                ((frame * group + i) * images_per_second + divisor - 1) / divisor;
            latest = std::max(latest, start);
            starts.push_back(latest);
        }
        first = end;
    }
    return starts;
}

std::vector<std::uint64_t> CaptureStarts(const std::vector<std::uint32_t>& times,
                                         std::uint32_t images_per_second) {
    std::vector<std::uint64_t> starts;
    std::uint64_t elapsed_ms = 0;
    for (std::size_t i = 0; i < times.size(); ++i) {
        if (i > 0) {
            const std::uint32_t step = (times[i] - times[i - 1]) & kCaptureTimeMask;
            // More than half of the clock's way on is a step back.
            if (step <= kCaptureTimeMask / 2) elapsed_ms += step;
        }
        starts.push_back((elapsed_ms * images_per_second + kMilliseconds / 2) / kMilliseconds);
    }
    return starts;
}

ImageTiming TimingFrom(const std::vector<std::uint64_t>& starts) {
    ImageTiming timing;
    for (std::size_t i = 0; i < starts.size(); ++i) {
        const std::uint64_t lasts = i + 1 < starts.size() ? starts[i + 1] - starts[i] : 1;
        const auto repeats = static_cast<std::uint32_t>(std::min(lasts, kMostRepeats));
        if (repeats < lasts) timing.note = "an image that would be shown for ages was shortened";
        timing.repeats.push_back(repeats);
        timing.shown += repeats;
        timing.repeated += repeats > 1 ? repeats - 1 : 0;
        timing.dropped += repeats == 0 ? 1 : 0;
    }
    return timing;
}

std::optional<ImageTiming> TimeImages(TrackReader& reader, const std::vector<Span>& spans,
                                      TimingRule rule, std::uint32_t frames_per_second,
                                      Reporter& reporter) {
    ImageTiming whole;
    for (const Span& span : spans) {
        std::optional<ImageTiming> part = ImageTiming::Constant(span.Count());
        if (rule != TimingRule::Constant && span.Count() > 0) {
            const auto numbers = ReadSides(reader, span, reporter);
            if (!numbers || StopRequested()) return std::nullopt;
            part = TimeSpan(reader, *numbers, rule, frames_per_second, reporter);
            if (!part) return std::nullopt;
        }
        Append(whole, *part);
        if (!part->note.empty()) whole.note = part->note;
    }
    return whole;
}

} // namespace kelvo::tool
