#include "tests/e2e/SyncMeasurement.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

namespace kelvo::test {
namespace {

constexpr std::chrono::microseconds kLook{300};
/// Farther away the audio frame belongs to another turn of the film.
constexpr double kNearMs = 700;

double MedianOf(std::vector<double> values) {
    if (values.empty()) return 0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace

ImageWatcher::ImageWatcher(const VirtualScreen& screen, int left, int top)
    : screen_(screen), thread_(&ImageWatcher::Watch, this, left, top) {}

ImageWatcher::~ImageWatcher() {
    Stop();
}

void ImageWatcher::Watch(int left, int top) {
    while (!stop_) {
        const auto number = ReadBarCode(screen_, left, top);
        const auto now = Clock::now();
        if (number && *number != current_) {
            current_ = *number;
            seen_.push_back({*number, now});
        }
        std::this_thread::sleep_for(kLook);
    }
}

std::vector<SeenImage> ImageWatcher::Stop() {
    stop_ = true;
    if (thread_.joinable()) thread_.join();
    return seen_;
}

double Agreement::Median() const {
    return MedianOf(late_ms);
}

double Agreement::Worst() const {
    double worst = 0;
    for (const double late : late_ms) {
        worst = std::max(worst, std::fabs(late));
    }
    return worst;
}

double Agreement::ShareWithin(double ms) const {
    if (late_ms.empty()) return 0;
    const auto within =
        std::ranges::count_if(late_ms, [ms](double late) { return std::fabs(late) <= ms; });
    return static_cast<double>(within) / static_cast<double>(late_ms.size());
}

double Agreement::Drift() const {
    const auto fifth = static_cast<std::ptrdiff_t>(late_ms.size() / 5);
    return MedianOf({late_ms.end() - fifth, late_ms.end()}) -
           MedianOf({late_ms.begin(), late_ms.begin() + fifth});
}

std::string Agreement::Text() const {
    const auto [least, most] = std::ranges::minmax_element(late_ms);
    std::array<char, 200> text{};
    std::snprintf(text.data(), text.size(),
                  "median %+.1f ms, %+.1f to %+.1f ms, %.1f%% within 25 ms, drift %+.1f ms, "
                  "%zu images, %d missed, %d unmatched",
                  Median(), late_ms.empty() ? 0 : *least, late_ms.empty() ? 0 : *most,
                  100 * ShareWithin(25), Drift(), late_ms.size(), missed, unmatched);
    return text.data();
}

std::string Agreement::Outside(double ms) const {
    std::string text;
    for (std::size_t i = 0; i < late_ms.size(); ++i) {
        if (std::fabs(late_ms[i]) <= ms) continue;
        std::array<char, 40> one{};
        std::snprintf(one.data(), one.size(), " %d: %+.1f", images[i], late_ms[i]);
        text += one.data();
    }
    return text;
}

Agreement Compare(const CodedFilmPlan& plan, const std::vector<SeenImage>& seen,
                  const std::vector<HeardFrame>& heard) {
    Agreement agreement;
    int before = -1;
    for (const SeenImage& image : seen) {
        const int step = image.number - before;
        if (before >= 0 && step > 1 && step <= plan.images_per_second) agreement.missed += step - 1;
        // The image that is there when the watching begins stands still from the film's opening on.
        if (std::exchange(before, image.number) < 0) continue;
        const int code = plan.AudioFrameOf(image.number) % kFrameCodes;
        const double after_frame = plan.IndexInAudioFrame(image.number) * plan.PeriodMs();
        double nearest = kNearMs;
        for (const HeardFrame& frame : heard) {
            if (frame.code != code) continue;
            const double late =
                std::chrono::duration<double, std::milli>(image.at - frame.at).count() -
                after_frame;
            if (std::fabs(late) < std::fabs(nearest)) nearest = late;
        }
        if (nearest == kNearMs) {
            ++agreement.unmatched;
        } else {
            agreement.late_ms.push_back(nearest);
            agreement.images.push_back(image.number);
        }
    }
    return agreement;
}

} // namespace kelvo::test
