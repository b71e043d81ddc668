#include "tools/kelvotool/film/SideBlockCheck.h"

#include "framework/base/ByteReader.h"
#include "media/VideoHeader.h"
#include "platform/base/files.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>

#include <array>

namespace kelvo::tool {

namespace {

struct VideoSide {
    std::uint32_t sync = 0;
    std::uint32_t capture_time = 0;
};

constexpr std::size_t kUsedBytes = 12;

std::optional<VideoSide> SideOf(const ZFilekel& container, std::uint64_t start, std::uint32_t n) {
    std::array<std::uint8_t, kUsedBytes> bytes{};
    const std::uint64_t offset = start + container.Index().SidePosition(n);
    if (platform::ReadFileAt(container.Handle(), offset, bytes.data(), bytes.size()) !=
        std::int64_t{kUsedBytes}) {
        return std::nullopt;
    }
    ByteReader reader{bytes};
    VideoSide side;
    side.sync = reader.ReadU32();
    reader.ReadU32(); // of no meaning
    side.capture_time = reader.ReadU32() & kCaptureTimeMask;
    return side;
}

class SideBlocks {
public:
    SideBlocks(const TrackReader& reader, Reporter& reporter)
        : reader_(reader), reporter_(reporter),
          is_scanned_((reader.Track().video->VideoFlags & kScannedFlag) != 0) {}

    void Run(std::optional<std::uint32_t> audio_frames) {
        const ZFilekel& container = reader_.Container();
        const std::uint64_t start = reader_.Track().window.start;
        for (std::uint32_t n = 0; n < container.Index().Count() && !StopRequested(); ++n) {
            const auto side = SideOf(container, start, n);
            if (!side) continue; // the index was found to point elsewhere
            CheckSync(n, side->sync, audio_frames);
            if (is_scanned_) CheckCapture(n, side->capture_time);
        }
        Conclude();
    }

private:
    void CheckSync(std::uint32_t n, std::uint32_t sync, std::optional<std::uint32_t> audio_frames) {
        if (sync == kNeverLinked) {
            ++unlinked_;
            if (!first_unlinked_) first_unlinked_ = n;
            return;
        }
        if (linked_ > 0 && sync < last_sync_) {
            reporter_.Report(
                reader_.Make(ProblemCode::SyncDamaged,
                             fmt::format("it is tied to audio frame {}, the image before it to {}",
                                         sync, last_sync_),
                             n, OffsetOf(n)));
        }
        ++linked_;
        last_sync_ = sync;
        if (audio_frames && sync >= *audio_frames) {
            ++beyond_;
            if (!first_beyond_) first_beyond_ = n;
        }
    }

    void CheckCapture(std::uint32_t n, std::uint32_t capture_time) {
        if (capture_time < last_capture_ && !first_backward_) first_backward_ = n;
        last_capture_ = capture_time;
    }

    void Conclude() {
        if (linked_ > 0 && unlinked_ > 0) {
            reporter_.Report(reader_.Make(
                ProblemCode::SyncDamaged,
                fmt::format("{} of its images are tied to no sound, and the others are", unlinked_),
                first_unlinked_, OffsetOf(*first_unlinked_)));
        }
        if (beyond_ > 0) {
            reporter_.Report(reader_.Make(
                ProblemCode::SyncDamaged,
                fmt::format("{} of its images are tied to sound that is not there", beyond_),
                first_beyond_, OffsetOf(*first_beyond_), kAllWell));
        }
        if (first_backward_) {
            reporter_.Report(reader_.Make(ProblemCode::RecordDamaged,
                                          "its capture time is before that of the image before it",
                                          first_backward_, OffsetOf(*first_backward_), kAllWell));
        }
    }

    std::uint64_t OffsetOf(std::uint32_t n) const {
        return reader_.Container().RecordFileOffset(n);
    }

    const TrackReader& reader_;
    Reporter& reporter_;
    bool is_scanned_;
    std::uint32_t linked_ = 0;
    std::uint32_t unlinked_ = 0;
    std::uint32_t beyond_ = 0;
    std::uint32_t last_sync_ = 0;
    std::uint32_t last_capture_ = 0;
    std::optional<std::uint32_t> first_unlinked_;
    std::optional<std::uint32_t> first_beyond_;
    std::optional<std::uint32_t> first_backward_;
};

} // namespace

void CheckSideBlocks(const TrackReader& reader, std::optional<std::uint32_t> audio_frames,
                     Reporter& reporter) {
    const TrackDescription& track = reader.Track();
    if (reader.IsVorbis() || track.kind != TrackKind::Video || !track.video) return;
    if (reader.Container().SideLength() != kVideoSideLength) {
        reporter.Report(reader.Make(ProblemCode::HeaderDamaged,
                                    fmt::format("its side blocks have {} bytes, not {}",
                                                reader.Container().SideLength(), kVideoSideLength),
                                    {}, track.window.start + 8));
        return;
    }
    SideBlocks(reader, reporter).Run(audio_frames);
}

} // namespace kelvo::tool
