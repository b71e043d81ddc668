#pragma once
// When the images of a picture are shown, in a form that shows one image each period: which images
// are repeated and which are dropped so that the film keeps its time.

#include "tools/kelvotool/film/Ranges.h"
#include "tools/kelvotool/film/TrackReader.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::tool {

enum class TimingRule : std::uint8_t {
    Constant, ///< every image once
    Sync,     ///< with the audio frame that its SyncNumber names
    Capture,  ///< when it was scanned
};

struct ImageTiming {
    std::vector<std::uint32_t> repeats = {}; ///< of each image of the spans: 0 drops it
    std::uint64_t shown = 0;                 ///< sum of all repeats
    std::uint64_t repeated = 0;              ///< shown more often than once: how many times more
    std::uint64_t dropped = 0;
    std::string note = {}; ///< what a person should know of it; may be empty

    /// Every image once.
    static ImageTiming Constant(std::uint64_t count);
};

/// Takes the numbers and times from the side blocks, without decoding anything.
/// @param reader             an own one: its place is lost
/// @param frames_per_second  of the sound that SyncNumbers count, for Sync
/// @return nothing after it was reported why the film has no such timing
std::optional<ImageTiming> TimeImages(TrackReader& reader, const std::vector<Span>& spans,
                                      TimingRule rule, std::uint32_t frames_per_second,
                                      Reporter& reporter);

/// Where each image starts, in periods from the first; never falling.
/// @param numbers  SyncNumbers; those that share one are spread over its time
std::vector<std::uint64_t> SyncStarts(const std::vector<std::uint32_t>& numbers,
                                      std::uint32_t images_per_second,
                                      std::uint32_t frames_per_second);
/// @param times  CaptureTimes in milliseconds; the low 28 bits count, and may pass their largest
std::vector<std::uint64_t> CaptureStarts(const std::vector<std::uint32_t>& times,
                                         std::uint32_t images_per_second);
/// Each image lasts until the next one starts, the last one period.
ImageTiming TimingFrom(const std::vector<std::uint64_t>& starts);

} // namespace kelvo::tool
