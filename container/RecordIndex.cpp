#include "container/RecordIndex.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <tuple>

namespace kelvo {

namespace {

constexpr std::int32_t kGrowthStep = 10000;
constexpr std::uint32_t kLargestCount = std::numeric_limits<std::int32_t>::max() - 2;

std::int32_t Signed(std::uint32_t number) {
    return static_cast<std::int32_t>(number);
}

/// Lets an array that has no room left grow by half of itself: every value is moved a few times in
/// all, however long the array becomes.
void RaiseStep(CArray<unsigned int>& array) {
    array.SetGrowthStep(std::max(kGrowthStep, array.Count() / 2));
}

} // namespace

void RecordIndex::Free() {
    offsets_.Clear();
    side_positions_.Clear();
    offsets_.SetGrowthStep(kGrowthStep);
    side_positions_.SetGrowthStep(kGrowthStep);
}

bool RecordIndex::Start(std::uint32_t first_record_offset) {
    Free();
    return offsets_.Add(first_record_offset) != 0;
}

bool RecordIndex::Size(std::uint32_t count) {
    if (count > kLargestCount) return false;
    return offsets_.ResizeForOverwrite(Signed(count + 1)) &&
           side_positions_.ResizeForOverwrite(Signed(count));
}

bool RecordIndex::CopyFrom(const RecordIndex& other) {
    if (!offsets_.ResizeForOverwrite(other.offsets_.Count())) return false;
    if (!side_positions_.ResizeForOverwrite(other.side_positions_.Count())) return false;
    std::ranges::copy(other.offsets_, offsets_.begin());
    std::ranges::copy(other.side_positions_, side_positions_.begin());
    return true;
}

std::uint32_t RecordIndex::End() const {
    return offsets_.IsEmpty() ? 0 : offsets_[offsets_.Count() - 1];
}

bool RecordIndex::Append(std::uint32_t side_position, std::uint32_t end) {
    assert(!offsets_.IsEmpty());
    RaiseStep(offsets_);
    RaiseStep(side_positions_);
    if (offsets_.Add(end) == 0) return false;
    if (side_positions_.Add(side_position) != 0) return true;
    offsets_.RemoveAt(offsets_.Count() - 1);
    return false;
}

void RecordIndex::MoveToEnd(std::uint32_t record, std::uint32_t side_position, std::uint32_t end) {
    assert(record < Count());
    offsets_[Signed(record)] = End();
    side_positions_[Signed(record)] = side_position;
    offsets_[offsets_.Count() - 1] = end;
}

void RecordIndex::InsertLastAt(std::uint32_t record) {
    assert(record < Count());
    const auto place_last = [record](std::span<std::uint32_t> values) {
        std::rotate(values.begin() + record, values.end() - 1, values.end());
    };
    place_last(Offsets().first(Count())); // the end of the records stays last
    place_last(SidePositions());
}

void RecordIndex::Delete(std::uint32_t first, std::uint32_t end) {
    assert(first < end && end <= Count());
    const auto close_gap = [first, end](CArray<unsigned int>& values) {
        std::copy(values.begin() + end, values.end(), values.begin() + first);
        return values.ResizeForOverwrite(values.Count() - Signed(end - first));
    };
    std::ignore = close_gap(offsets_) && close_gap(side_positions_); // fewer always fit
}

} // namespace kelvo
