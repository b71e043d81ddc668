#include "playback/CapturedFrames.h"

#include <algorithm>

namespace kelvo {

void CapturedFrames::Begin(AudioFilekel& track, int end) {
    track_ = &track;
    end_ = std::min(end, track.FrameCount());
    last_written_ = track.CurrentAudioFrame();
    frame_.assign(track.FrameBytes(), 0);
    old_frame_.assign(track.FrameBytes(), 0);
    filled_ = 0;
    // The first byte of such a frame ends a sample that is not recorded over.
    if (!IsAtEnd() && track.StartsInsideSample(last_written_) && ReadOldFrame(last_written_)) {
        frame_[0] = old_frame_[0];
        filled_ = 1;
    }
}

bool CapturedFrames::IsAtEnd() const {
    return track_ == nullptr || track_->CurrentAudioFrame() >= end_;
}

bool CapturedFrames::Take(ByteView recorded) {
    while (!IsAtEnd() && !recorded.empty()) {
        const std::size_t count = std::min(frame_.size() - filled_, recorded.size());
        std::ranges::copy(recorded.first(count), frame_.begin() + static_cast<long>(filled_));
        recorded = recorded.subspan(count);
        filled_ += count;
        if (filled_ == frame_.size() && !WriteFrame()) {
            track_ = nullptr;
            return false;
        }
    }
    return true;
}

bool CapturedFrames::Finish() {
    const bool has_rest = !IsAtEnd() && filled_ > 0;
    const bool kept = !has_rest || WriteFrame();
    track_ = nullptr;
    return kept;
}

// As it is stored, for a track that can be edited stores what it plays; and a damaged frame must
// not show its box here.
bool CapturedFrames::ReadOldFrame(int frame) {
    std::uint32_t length = 0;
    const std::uint8_t* stored = track_->ReadRawRecord(frame, length);
    if (stored != nullptr) {
        std::copy_n(stored, std::min<std::size_t>(length, old_frame_.size()), old_frame_.begin());
    }
    track_->GoToAudioFrame(frame);
    return stored != nullptr;
}

bool CapturedFrames::WriteFrame() {
    const int number = track_->CurrentAudioFrame();
    // Of a sample that the recording's end cuts in two, both halves stay the old ones.
    const bool ends_inside_sample =
        filled_ == frame_.size() && number + 1 >= end_ && track_->StartsInsideSample(number + 1);
    const std::size_t kept = ends_inside_sample ? filled_ - 1 : filled_;
    if (kept < frame_.size()) {
        if (!ReadOldFrame(number)) return false;
        std::ranges::copy(old_frame_.begin() + static_cast<long>(kept), old_frame_.end(),
                          frame_.begin() + static_cast<long>(kept));
    }
    filled_ = 0;
    if (!track_->ReplaceAudioFrame(number, frame_)) return false;
    last_written_ = number;
    return true;
}

} // namespace kelvo
