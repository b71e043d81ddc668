#include "tools/kelvotool/film/Linking.h"

#include "container/RewriteTarget.h"
#include "framework/base/ByteReader.h"
#include "framework/base/ProgressDisplay.h"

#include <fmt/format.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <vector>

namespace kelvo::tool {

std::optional<SyncLink> LinkFor(const TrackDescription& video, const TrackDescription& audio,
                                int offset, Reporter& reporter) {
    const int images = video.video ? std::max<int>(video.video->nImgAlSec, 1) : 0;
    const int frames =
        audio.audio ? static_cast<int>(std::min<std::uint32_t>(audio.audio->nFramesAlSec, INT_MAX))
                    : 0;
    const int count = static_cast<int>(std::min<std::uint32_t>(video.RecordCount(), INT_MAX));
    if (SyncLink::IsValid(images, frames, offset, count)) {
        return SyncLink::Of(images, frames, offset);
    }
    const bool rates_fit = SyncLink::IsValid(images, frames, 0, count);
    reporter.NotDone(
        rates_fit ? fmt::format("an offset of {} images is more than half of its {}", offset, count)
                  : fmt::format("{} images a second are no multiple of {} audio frames a second",
                                images, frames),
        ProblemCode::NotPossible);
    return std::nullopt;
}

std::uint32_t SyncNumberOf(const TrackReader& video) {
    return ByteReader{video.Side()}.ReadU32();
}

Error WriteLinked(RewriteTarget& target, TrackReader& video, const SyncLink& link,
                  Reporter& reporter) {
    ZFilekel& source = video.Container();
    Error error = target.BeginContainer(source.Header(), video.Track().user_header);
    if (error.fault != Fault::None) return error;
    const auto progress = ShowProgress({});
    const auto total = static_cast<std::int32_t>(std::min<std::uint32_t>(video.Count(), INT_MAX));
    std::vector<std::uint8_t> side;
    for (std::uint32_t n = 0; n < video.Count(); ++n) {
        std::uint32_t length = 0;
        const auto* const stored = source.ReadRawRecord(static_cast<int>(n), length);
        if (stored == nullptr) return source.LastError();
        if (const auto problem = video.RecordProblem(n)) reporter.Report(*problem);
        side.assign(source.SideBuffer().begin(), source.SideBuffer().end());
        const std::uint32_t number = link.NumberOf(static_cast<int>(n));
        for (std::size_t i = 0; i < std::min<std::size_t>(side.size(), 4); ++i)
            side[i] = static_cast<std::uint8_t>(number >> (8 * i));
        error = target.AppendStored({stored, length}, side);
        if (error.fault != Fault::None) return error;
        if (!progress->Update(static_cast<std::int32_t>(n), total)) return {Fault::Stopped, 0};
    }
    return target.EndContainer();
}

} // namespace kelvo::tool
