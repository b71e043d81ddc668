#include "container/RecordMap.h"

#include "container/RecordFrame.h"
#include "container/RecordProbe.h"
#include "platform/base/files.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace kelvo {

namespace {

constexpr std::uint32_t kProgressInterval = 16;
/// So many records behind each other are no accident.
constexpr int kChain = 3;
// What a search for the next record may cost: so many places are looked at more closely for each
// byte of the file, and so many of those decoded in vain.
constexpr std::uint64_t kChecksAtLeast = 4096;
constexpr std::uint64_t kBytesACheck = 64;
constexpr std::uint64_t kTrialsAtLeast = 32;
constexpr std::uint64_t kBytesATrial = 65536;
/// And the search goes on at the next byte, in reports of its progress so far apart.
constexpr std::uint32_t kSearchStep = 1U << 20U;

/// One record, or a hole that holds some.
struct Piece {
    std::uint32_t start = 0;
    std::uint32_t side = 0; ///< of a record
    std::uint32_t lost = 0; ///< records in a hole; 0: it is a record
    RecordVerdict verdict = {};
    bool is_proved = false; ///< its length is beyond doubt
    bool is_exact = false;  ///< of a hole: its records were counted, not estimated
};

class Walk {
public:
    Walk(HFILE file, const TrackWindow& window, const ContainerHeader& header,
         const RecordIndex* old_index, const MapProgress& progress)
        : window_(window), header_(header), old_index_(old_index), progress_(progress),
          probe_(file, window, header), numbers_(file, window), ahead_(file, window),
          checks_left_(kChecksAtLeast + window.Size() / kBytesACheck),
          trials_left_(kTrialsAtLeast + window.Size() / kBytesATrial),
          end_(static_cast<std::uint32_t>(header.FirstRecordOffset())) {}

    Error Run() {
        while (GoOn()) {
            if (pieces_.size() % kProgressInterval == 0 && !Tell(end_)) break;
        }
        if (stopped_) return {Fault::Stopped, window_.start + std::uint64_t{end_}};
        if (records_ == 0 && header_.RecordCount > 0 && HasRoomForRecords()) {
            return {Fault::BadValue, window_.start + std::uint64_t{end_}};
        }
        SettleHoles();
        return {};
    }

    /// The pieces as an index and its verdicts.
    bool Expand(RecordMap& map) const {
        if (!map.index.Start(static_cast<std::uint32_t>(header_.FirstRecordOffset()))) return false;
        map.verdicts.clear();
        for (std::size_t i = 0; i < pieces_.size(); ++i) {
            const Piece& piece = pieces_[i];
            const std::uint32_t end = i + 1 < pieces_.size() ? pieces_[i + 1].start : end_;
            const std::uint32_t parts = std::max(piece.lost, 1U);
            for (std::uint32_t part = 1; part <= parts; ++part) {
                const auto behind = static_cast<std::uint32_t>(
                    piece.start + std::uint64_t{end - piece.start} * part / parts);
                const std::uint32_t side =
                    piece.lost == 0 ? piece.side : behind - header_.SideLength;
                if (!map.index.Append(side, behind)) return false;
                map.verdicts.push_back(piece.verdict);
            }
        }
        const std::uint32_t count = map.index.Count();
        map.missing_at_end = header_.RecordCount > count ? header_.RecordCount - count : 0;
        map.never_closed = header_.RecordCount == 0 && count > 0;
        return true;
    }

    RecordProbe& Probe() { return probe_; }

private:
    bool Tell(std::uint32_t position) {
        stopped_ = stopped_ || (progress_ && !progress_(position));
        return !stopped_;
    }
    /// Whether a first record should have been found: to drop them all would mend nothing.
    bool HasRoomForRecords() {
        const std::uint64_t first = header_.FirstRecordOffset();
        const std::optional<std::uint32_t> said = numbers_.At(first);
        if (!said) return false;
        const std::uint64_t claimed = std::min<std::uint64_t>(*said, probe_.LongestStored());
        return first + kStoredLengthBytes + claimed + header_.SideLength <= window_.Size();
    }
    /// Where the records end if the file is whole.
    std::uint64_t RecordsEnd() const {
        return old_index_ != nullptr ? header_.IndexOffset : window_.Size();
    }
    std::uint32_t FrameEnd(std::uint64_t offset, std::uint32_t stored_length) const {
        return static_cast<std::uint32_t>(offset + kStoredLengthBytes + stored_length +
                                          header_.SideLength);
    }

    bool GoOn() {
        const std::optional<std::uint32_t> said = numbers_.At(end_);
        if (said && LooksLikeIndex(end_, *said)) {
            reached_end_ = true;
            return false;
        }
        if (old_index_ != nullptr && end_ >= header_.IndexOffset) {
            reached_end_ = true;
            return false;
        }
        const bool counted = number_ < header_.RecordCount;
        if (said && (counted ? TakeCounted(*said) : TakeProved(*said))) return true;
        const bool all_found = !counted && header_.RecordCount > 0;
        reached_end_ = all_found || end_ == window_.Size();
        return !all_found && CrossHole();
    }

    /// An index begins with the offsets of the first two records, wherever it lies.
    bool LooksLikeIndex(std::uint64_t offset, std::uint32_t first) {
        if (first != header_.FirstRecordOffset()) return false;
        if (pieces_.empty()) return offset == first && offset + 4 == window_.Size();
        const std::uint32_t second = pieces_.size() > 1 ? pieces_[1].start : end_;
        return numbers_.At(offset + 4) == second;
    }

    /// What the old index says of a record, if its entry agrees with itself.
    std::optional<std::uint32_t> IndexedLength(std::uint32_t record, std::uint64_t offset) const {
        if (old_index_ == nullptr || record >= old_index_->Count() ||
            old_index_->RecordOffset(record) != offset) {
            return std::nullopt;
        }
        const std::uint64_t payload = offset + kStoredLengthBytes;
        const std::uint64_t side = old_index_->SidePosition(record);
        const std::uint64_t end = side + header_.SideLength;
        const bool sound = side >= payload && end <= header_.IndexOffset &&
                           end == old_index_->RecordOffset(record + 1);
        if (!sound) return std::nullopt;
        return static_cast<std::uint32_t>(side - payload);
    }

    void Push(std::uint32_t stored_length, RecordVerdict verdict, bool is_proved) {
        pieces_.push_back(
            {.start = end_,
             .side = end_ + static_cast<std::uint32_t>(kStoredLengthBytes) + stored_length,
             .verdict = verdict,
             .is_proved = is_proved});
        end_ = FrameEnd(end_, stored_length);
        ++number_;
        ++records_;
    }

    /// A record that the header counts is believed, as long as nothing speaks against it.
    bool TakeCounted(std::uint32_t said) {
        const bool plausible = probe_.IsPlausible(end_, said);
        const std::optional<std::uint32_t> indexed = IndexedLength(number_, end_);
        if (indexed && *indexed != said) {
            if (plausible && probe_.Decodes(end_, said)) {
                Push(said, {}, true);
            } else if (probe_.Decodes(end_, *indexed)) {
                Push(*indexed, {RecordState::Kept, RecordReason::LengthMended}, true);
            } else {
                Push(*indexed, {RecordState::Doubtful, RecordReason::NotDecoding}, true);
            }
            return true;
        }
        if (plausible) Push(said, {}, indexed.has_value() || end_ < proved_end_);
        return plausible;
    }

    bool TakeProved(std::uint32_t said) {
        if (!probe_.IsPlausible(end_, said) || !probe_.Decodes(end_, said)) return false;
        Push(said, {}, true);
        return true;
    }

    /// Takes the last piece back; it becomes part of the hole behind it.
    Piece Pop() {
        const Piece last = pieces_.back();
        pieces_.pop_back();
        end_ = last.start;
        number_ -= std::max(last.lost, 1U);
        records_ -= last.lost == 0 ? 1U : 0U;
        return last;
    }

    /// Nothing at the end of what was found can be the next record: goes on behind the hole.
    bool CrossHole() {
        // The length that led here may be the one that is wrong.
        std::optional<Piece> suspect;
        const std::uint32_t end = end_;
        if (!pieces_.empty() && pieces_.back().lost == 0 && !pieces_.back().is_proved &&
            probe_.CanProve()) {
            const Piece& last = pieces_.back();
            const auto stored =
                last.side - last.start - static_cast<std::uint32_t>(kStoredLengthBytes);
            if (!probe_.Decodes(last.start, stored)) suspect = Pop();
        }
        if (!pieces_.empty() && pieces_.back().lost > 0) Pop();
        std::uint32_t lost = 0;
        const std::optional<std::uint32_t> next = FindNext(lost);
        if (!next) {
            if (suspect) {
                suspect->verdict = {RecordState::Doubtful, RecordReason::NotDecoding};
                pieces_.push_back(*suspect);
                end_ = end;
                ++number_;
                ++records_;
            }
            return false;
        }
        Bridge(*next, lost);
        return !stopped_;
    }

    void Bridge(std::uint32_t next, std::uint32_t lost) {
        const std::uint32_t size = next - end_;
        const auto frame = static_cast<std::uint32_t>(kStoredLengthBytes) + header_.SideLength;
        if (lost <= 1 && probe_.Decodes(end_, size - frame)) {
            Push(size - frame, {RecordState::Kept, RecordReason::LengthMended}, true);
            return;
        }
        const bool exact = lost > 0;
        if (!exact) {
            // About as many as such bytes hold elsewhere.
            const std::uint64_t before = end_ - header_.FirstRecordOffset();
            const std::uint64_t mean =
                std::max<std::uint64_t>(records_ > 0 ? before / number_ : chain_mean_, frame);
            lost = static_cast<std::uint32_t>((size + mean / 2) / mean);
        }
        lost = std::clamp(lost, 1U, std::max(size / frame, 1U));
        pieces_.push_back({.start = end_,
                           .lost = lost,
                           .verdict = {RecordState::Lost, RecordReason::Destroyed},
                           .is_exact = exact});
        end_ = next;
        number_ += lost;
    }

    /// The next place where a record surely stands.
    /// @param lost  out: how many are lost before it; 0 where nobody knows
    std::optional<std::uint32_t> FindNext(std::uint32_t& lost) {
        const std::uint64_t first = std::uint64_t{end_} + kStoredLengthBytes + header_.SideLength;
        if (const auto next = FindByIndex(first, lost)) return next;
        lost = 0;
        return FindByBytes(first);
    }

    std::optional<std::uint32_t> FindByIndex(std::uint64_t first, std::uint32_t& lost) {
        if (old_index_ == nullptr) return std::nullopt;
        for (cursor_ = std::max(cursor_, number_ + 1); cursor_ < old_index_->Count(); ++cursor_) {
            const std::uint32_t offset = old_index_->RecordOffset(cursor_);
            if (offset < first) continue;
            const auto indexed = IndexedLength(cursor_, offset);
            if (!indexed || ahead_.At(offset) != *indexed) continue;
            if (!probe_.IsPlausible(offset, *indexed)) continue;
            lost = cursor_ - number_;
            return offset;
        }
        return std::nullopt;
    }

    std::optional<std::uint32_t> FindByBytes(std::uint64_t first) {
        if (!probe_.CanProve() || header_.RecordLength == 0) return std::nullopt;
        const std::uint64_t limit = std::min<std::uint64_t>(RecordsEnd(), window_.Size());
        for (std::uint64_t at = first; at + kStoredLengthBytes <= limit; ++at) {
            if (at % kSearchStep == 0 && !Tell(static_cast<std::uint32_t>(at))) return std::nullopt;
            const std::optional<std::uint32_t> said = numbers_.At(at);
            if (!said) return std::nullopt;
            if (!probe_.IsPlausible(at, *said)) continue;
            if (checks_left_ == 0 || trials_left_ == 0) return std::nullopt;
            --checks_left_;
            if (IsChain(at)) return static_cast<std::uint32_t>(at);
        }
        return std::nullopt;
    }

    /// Whether records follow each other from here on, or end where all of them end.
    bool IsChain(std::uint64_t start) {
        std::uint64_t places[kChain] = {};
        std::uint32_t lengths[kChain] = {};
        int count = 0;
        for (std::uint64_t at = start; count < kChain; ++count) {
            if (count > 0 && at == RecordsEnd()) break;
            const std::optional<std::uint32_t> said = ahead_.At(at);
            if (!said) return false;
            if (count > 0 && LooksLikeIndex(at, *said)) break;
            if (!probe_.IsPlausible(at, *said)) return false;
            places[count] = at;
            lengths[count] = *said;
            at = FrameEnd(at, *said);
        }
        for (int i = 0; i < count; ++i) {
            if (probe_.Decodes(places[i], lengths[i])) continue;
            if (trials_left_ > 0) --trials_left_;
            return false;
        }
        proved_end_ = FrameEnd(places[count - 1], lengths[count - 1]);
        chain_mean_ = (proved_end_ - start) / static_cast<std::uint64_t>(count);
        return true;
    }

    // How many records the holes held

    void SettleHoles() {
        std::size_t estimated = 0;
        std::size_t largest = 0;
        std::uint32_t largest_size = 0;
        for (std::size_t i = 0; i + 1 < pieces_.size(); ++i) {
            if (pieces_[i].lost == 0 || pieces_[i].is_exact) continue;
            ++estimated;
            const std::uint32_t size = pieces_[i + 1].start - pieces_[i].start;
            if (size <= largest_size) continue;
            largest = i;
            largest_size = size;
        }
        if (estimated == 0) return;
        const bool total_known = reached_end_ && header_.RecordCount > 0;
        const bool by_keys =
            probe_.IsDifferential() && header_.KeyInterval > 1 && header_.KeyInterval <= number_;
        if (by_keys && !(total_known && estimated == 1)) {
            SettleByKeys();
        } else if (total_known) {
            Resize(largest, std::int64_t{header_.RecordCount} - number_);
        }
    }

    void Resize(std::size_t hole, std::int64_t by) {
        const std::uint32_t size = pieces_[hole + 1].start - pieces_[hole].start;
        const std::uint32_t room = std::max(
            size / (static_cast<std::uint32_t>(kStoredLengthBytes) + header_.SideLength), 1U);
        const auto lost =
            static_cast<std::uint32_t>(std::clamp<std::int64_t>(pieces_[hole].lost + by, 1, room));
        number_ += lost - pieces_[hole].lost;
        pieces_[hole].lost = lost;
    }

    /// The first key record behind a hole has a number that divides by the interval.
    void SettleByKeys() {
        std::uint64_t number = 0;
        for (std::size_t i = 0; i < pieces_.size(); ++i) {
            if (pieces_[i].lost > 0 && !pieces_[i].is_exact) {
                const std::optional<std::uint64_t> distance = DistanceToKey(i + 1);
                if (distance) {
                    const auto interval = std::int64_t{header_.KeyInterval};
                    const auto over = static_cast<std::int64_t>(
                        (number + pieces_[i].lost + *distance) % header_.KeyInterval);
                    const bool down = over <= interval / 2 && pieces_[i].lost > over;
                    Resize(i, down ? -over : interval - over);
                }
            }
            number += std::max(pieces_[i].lost, 1U);
        }
    }

    std::optional<std::uint64_t> DistanceToKey(std::size_t first) {
        for (std::size_t i = first; i < pieces_.size() && pieces_[i].lost == 0; ++i) {
            if (i - first >= header_.KeyInterval) break;
            const auto stored =
                pieces_[i].side - pieces_[i].start - static_cast<std::uint32_t>(kStoredLengthBytes);
            if (probe_.IsKey(pieces_[i].start, stored)) return i - first;
        }
        return std::nullopt;
    }

    TrackWindow window_;
    const ContainerHeader& header_;
    const RecordIndex* old_index_;
    const MapProgress& progress_;
    RecordProbe probe_;
    NumberReader numbers_;
    NumberReader ahead_;
    std::vector<Piece> pieces_;
    std::uint64_t checks_left_;
    std::uint64_t trials_left_;
    std::uint64_t chain_mean_ = 0;
    std::uint32_t end_;
    std::uint32_t proved_end_ = 0;
    std::uint32_t number_ = 0;  ///< of the next record
    std::uint32_t records_ = 0; ///< found
    std::uint32_t cursor_ = 0;  ///< entries of the old index before it are of no more use
    bool reached_end_ = false;
    bool stopped_ = false;
};

/// Decodes everything, each record over the one before.
Error ProveContents(RecordProbe& probe, const TrackWindow& window, const MapProgress& progress,
                    RecordMap& map) {
    for (std::uint32_t n = 0; n < map.index.Count(); ++n) {
        if (n % kProgressInterval == 0 && progress && !progress(map.index.RecordOffset(n))) {
            return {Fault::Stopped, window.start + std::uint64_t{map.index.RecordOffset(n)}};
        }
        RecordVerdict& verdict = map.verdicts[n];
        if (verdict.state == RecordState::Lost) continue;
        const std::uint32_t stored = map.index.SidePosition(n) - map.index.RecordOffset(n) -
                                     static_cast<std::uint32_t>(kStoredLengthBytes);
        if (!probe.Decodes(map.index.RecordOffset(n), stored)) {
            verdict = {RecordState::Doubtful, RecordReason::NotDecoding};
        }
    }
    return {};
}

/// Of a differential type, whatever builds on a record that is not sound is not either.
void SpreadDoubt(const ContainerHeader& header, RecordMap& map) {
    bool sound = true;
    for (std::uint32_t n = 0; n < map.verdicts.size(); ++n) {
        RecordVerdict& verdict = map.verdicts[n];
        const bool stands_alone = verdict.state == RecordState::Kept && header.KeyRecordOf(n) == n;
        sound = stands_alone || (sound && verdict.state == RecordState::Kept);
        if (!sound && verdict.state == RecordState::Kept) {
            verdict = {RecordState::Doubtful, RecordReason::BuildsOnLost};
        }
    }
}

bool ReadNumbers(HFILE file, std::uint64_t offset, std::span<std::uint32_t> values) {
    return platform::ReadFileAt(file, offset, values.data(), values.size_bytes()) ==
           static_cast<std::int64_t>(values.size_bytes());
}

} // namespace

std::uint32_t RecordMap::Count(RecordState state) const {
    return static_cast<std::uint32_t>(std::ranges::count(verdicts, state, &RecordVerdict::state));
}

bool RecordMap::IsDamaged() const {
    return old_index != OldIndex::Sound || missing_at_end > 0 || never_closed ||
           std::ranges::any_of(verdicts, [](const RecordVerdict& verdict) {
               return verdict.reason != RecordReason::Sound;
           });
}

std::optional<RecordIndex> ReadOldIndex(HFILE file, const TrackWindow& window,
                                        const ContainerHeader& header) {
    if (CheckIndexFits(header, window.Size()).fault != Fault::None) return std::nullopt;
    RecordIndex index;
    const std::uint64_t place = std::uint64_t{window.start} + header.IndexOffset;
    if (!index.Size(header.RecordCount) || !ReadNumbers(file, place, index.Offsets()) ||
        !ReadNumbers(file, place + index.Offsets().size_bytes(), index.SidePositions())) {
        return std::nullopt;
    }
    return index;
}

bool IndexHangsTogether(const RecordIndex& index, const ContainerHeader& header) {
    std::uint64_t expected = header.FirstRecordOffset();
    for (std::uint32_t record = 0; record < index.Count(); ++record) {
        const std::uint64_t side = index.SidePosition(record);
        if (index.RecordOffset(record) != expected || side < expected + kStoredLengthBytes) {
            return false;
        }
        expected = side + header.SideLength;
    }
    return index.End() == expected && expected <= header.IndexOffset;
}

bool IndexAgreesWithRecords(HFILE file, const TrackWindow& window, const ContainerHeader& header,
                            const RecordIndex& index) {
    NumberReader numbers(file, window);
    for (std::uint32_t record = 0; record < index.Count(); ++record) {
        const std::uint64_t offset = index.RecordOffset(record);
        const std::optional<std::uint32_t> stored_length = numbers.At(offset);
        if (!stored_length) return false;
        const std::uint64_t side = offset + kStoredLengthBytes + *stored_length;
        if (index.SidePosition(record) != side) return false;
        if (side + header.SideLength > window.Size()) return false;
    }
    return true;
}

Error MapRecords(HFILE file, const TrackWindow& window, const ContainerHeader& header,
                 MapDepth depth, const MapProgress& progress, RecordMap& map) {
    const std::optional<RecordIndex> old_index = ReadOldIndex(file, window, header);
    Walk walk(file, window, header, old_index ? &*old_index : nullptr, progress);
    if (const Error error = walk.Run(); error.fault != Fault::None) return error;
    if (!walk.Expand(map)) return {Fault::TooLarge, window.start};
    if (depth == MapDepth::Content) {
        const Error error = ProveContents(walk.Probe(), window, progress, map);
        if (error.fault != Fault::None) return error;
    }
    if (walk.Probe().IsDifferential()) SpreadDoubt(header, map);
    map.old_index = !old_index                ? OldIndex::Missing
                    : *old_index == map.index ? OldIndex::Sound
                                              : OldIndex::Wrong;
    return {};
}

} // namespace kelvo
